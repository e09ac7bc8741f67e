#pragma once

#include "model/datetime.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace interchange
{

// A moment on the local wall clock: seconds since 1970-01-01 00:00 local time, with no
// zone attached. Local days begin at the multiples of 86,400, which is what splitting
// an interval at midnight needs.
using LocalSeconds = int64_t;

// Input that cannot be read: says where (a line and column, or a record) and what is
// wrong. Nothing is imported from a source that raises it.
class CImportError : public std::runtime_error
{
public:
    CImportError(const std::string& where, const std::string& what)
        : std::runtime_error(where.empty() ? what : where + ": " + what)
    {
    }
};

// A stretch of time as a source gives it, on the local wall clock.
struct ImportedTime
{
    std::vector<std::string> taskPath; // below the task imported under; empty: that task
    LocalSeconds start = 0;
    std::optional<LocalSeconds> end; // none: still running in the source
    std::string note;
    std::string activity;
    std::string where; // "record 12", "line 40"
};

struct ImportedToDo
{
    std::vector<std::string> taskPath;
    std::string description;
    std::string note;
    std::string priority = "1";
    CDateTime due = CDateTime::Null();
    CDateTime completed = CDateTime::Null();
    std::string where;
};

// A task the source keeps, whether or not anything is recorded on it.
struct ImportedTask
{
    std::vector<std::string> path;
    std::string where;
};

// Something the source holds that is not imported, and why.
struct SkippedItem
{
    std::string where;
    std::string reason;
};

// Everything a reader took from one source, before it meets a document.
struct ImportSource
{
    std::string format; // "Timewarrior export", "iCalendar", "CSV"
    // Tasks to make even when nothing is recorded on them (a tracker's own task tree).
    std::vector<ImportedTask> tasks;
    std::vector<ImportedTime> times;
    std::vector<ImportedToDo> todos;
    std::vector<SkippedItem> skipped;
    // How the source was read, one line each (the column mapping of a CSV file).
    std::vector<std::string> details;
    // Task paths start at the top task and may name it first (our own calendar export).
    bool pathsFromTop = false;
};

} // namespace interchange
