#pragma once

#include "interchange/importsource.h"
#include "model/datetime.h"

#include <string_view>

namespace interchange
{

struct ICalOptions
{
    // A calendar's event goes to the task its first category names (else its summary).
    bool taskFromCategories = false;
    // Recurring events are imported up to this moment (local time).
    CDateTime now;
};

// An iCalendar file (RFC 5545). A time tracker's file (KTimeTracker's) keeps its tasks
// as VTODOs whose RELATED-TO names the parent, and its stretches of time as VEVENTs
// related to their task: the tree is kept. In any other calendar a VEVENT goes to the
// task its summary (or category) names, with its description as the note, and a VTODO
// becomes a to-do (due date, priority, completion). Our own export reads back as it was
// written: the summary is the task path and the category the activity.
ImportSource ReadICalendar(std::string_view bytes, const ICalOptions& options);

} // namespace interchange
