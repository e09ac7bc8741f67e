#pragma once

#include "model/datetime.h"

#include <cstdint>
#include <string>

class CTimeKeeperDoc;

namespace interchange
{

// The PRODID of our calendars, by which the reader knows them again.
inline constexpr char kOwnProductId[] = "-//Halvery//Quorvane Time & Expense//EN";

struct ICalExportOptions
{
    CDateTime from = CDateTime::Null(); // null: from the first day
    CDateTime to = CDateTime::Null();   // null: to the last day
    uint32_t taskId = 1;                // this task and those below it
    CDateTime now;                      // the DTSTAMP of every item
};

struct ICalExport
{
    std::string text;
    size_t events = 0;
    size_t todos = 0;
    size_t runningSkipped = 0; // the running entry has no end yet
    size_t emptySkipped = 0;   // entries of no length show nowhere
};

// Time entries of some length as VEVENTs (summary: the task path; description: the note; category: the
// activity; times in UTC) and to-dos as VTODOs (category: the task path): outstanding
// ones, and those completed in the date range. Each item's UID stays the same from one
// export to the next (a time entry's day and start, a to-do's task and description), so
// that a calendar that reads a later export updates the items instead of adding them again.
ICalExport WriteICalendar(const CTimeKeeperDoc& doc, const ICalExportOptions& options);

} // namespace interchange
