#pragma once

#include "model/datetime.h"

#include <cstdint>
#include <string>

class CReport;
class CTimeKeeperDoc;
class CTimeKeeperApp;

namespace reports
{

// Which entries a report kind reads; "All Dates" looks for days holding them.
enum class EntryCategory
{
    time,
    expense,
    todo,
    timeAndExpense,
};

EntryCategory CategoryOfKind(uint32_t kind);

// One calendar day back or forward of a date at 00:00. The steps go 23 hours back
// or 25 hours forward and truncate, so that a day of 23 or 25 hours still moves
// exactly one date.
CDateTime StepDayBack(const CDateTime& day);
CDateTime StepDayForward(const CDateTime& day);

// The last day of the working week that starts on `weekStart` (1 Sunday ... 7 Saturday).
int WeekLastDay(int weekStart);

struct DateRange
{
    CDateTime start;
    CDateTime end;
};

// The first and last day (at 00:00) that a report covers, for "today" at 00:00 and
// the "WeekStart" setting. A preset outside the known ones covers all dates.
// Reads the document's days for "All Dates": the caller holds the document lock.
CDateTime ResolveStartDate(const CReport& report, const CTimeKeeperDoc& doc,
                           const CDateTime& today, int weekStart);
CDateTime ResolveEndDate(const CReport& report, const CTimeKeeperDoc& doc,
                         const CDateTime& today, int weekStart);
DateRange ResolveDateRange(const CReport& report, const CTimeKeeperDoc& doc,
                           const CDateTime& today, int weekStart);
// The same with the application's today and "WeekStart".
DateRange ResolveDateRange(const CReport& report, const CTimeKeeperDoc& doc,
                           const CTimeKeeperApp& app);

// The earliest (or latest) of `today` and every day holding an entry of the category.
CDateTime EarliestEntryDay(const CTimeKeeperDoc& doc, EntryCategory category,
                           const CDateTime& today);
CDateTime LatestEntryDay(const CTimeKeeperDoc& doc, EntryCategory category,
                         const CDateTime& today);

// The display name of a preset ("Current Week"); "Custom Dates" for 0, empty for
// an unknown code.
std::string PresetName(uint32_t preset);

// What the report list shows for the range: the two short dates joined by "-" for
// custom dates, else the preset's name (empty for an unknown code).
std::string DateRangeText(const CReport& report, const CTimeKeeperDoc& doc,
                          const CTimeKeeperApp& app, const CDateTime& today);
std::string DateRangeText(const CReport& report, const CTimeKeeperDoc& doc,
                          const CTimeKeeperApp& app);

} // namespace reports
