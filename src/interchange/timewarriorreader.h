#pragma once

#include "interchange/importsource.h"

#include <string_view>

namespace interchange
{

struct TimewarriorOptions
{
    // All tags, in the export's order, make the task path; otherwise the first tag alone.
    bool tagsAsPath = false;
};

// The JSON that `timew export` writes: an array of intervals, each with "start", an
// optional "end" (none: still running), "tags" and "annotation". Times are UTC
// ("20240610T070000Z") and become local times; the annotation becomes the note.
ImportSource ReadTimewarrior(std::string_view bytes, const TimewarriorOptions& options);

} // namespace interchange
