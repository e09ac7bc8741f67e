#include "reports/daterange.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"

#include <cmath>

namespace reports
{

namespace
{
CDateTime FirstOfMonth(int year, int month) { return CDateTime::FromDate(year, month, 1); }

CDateTime FirstOfNextMonth(const CDateTime& d)
{
    return d.GetMonth() == 12 ? FirstOfMonth(d.GetYear() + 1, 1)
                              : FirstOfMonth(d.GetYear(), d.GetMonth() + 1);
}

bool DayCounts(const CDay& day, EntryCategory category)
{
    switch (category)
    {
    case EntryCategory::time: return !day.TimeEntries().empty();
    case EntryCategory::expense: return !day.ExpenseEntries().empty();
    case EntryCategory::todo: return !day.ToDoEntries().empty();
    case EntryCategory::timeAndExpense:
        return !day.TimeEntries().empty() || !day.ExpenseEntries().empty();
    }
    return false;
}

bool IsKnownPreset(uint32_t preset) { return preset <= CReport::previousHalfMonth; }
} // namespace

EntryCategory CategoryOfKind(uint32_t kind)
{
    switch (kind)
    {
    case CReport::timeDetail:
    case CReport::timeSummary: return EntryCategory::time;
    case CReport::expenseDetail:
    case CReport::expenseSummary: return EntryCategory::expense;
    case CReport::todoDetail: return EntryCategory::todo;
    default: return EntryCategory::timeAndExpense;
    }
}

CDateTime StepDayBack(const CDateTime& day)
{
    // A date at 00:00 is a whole number of days: one back is one less.
    if (day.GetValue() == std::floor(day.GetValue()))
        return day.AddDays(-1);
    return day.AddSeconds(-23L * 3600).DatePart();
}

CDateTime StepDayForward(const CDateTime& day)
{
    if (day.GetValue() == std::floor(day.GetValue()))
        return day.AddDays(1);
    return day.AddSeconds(25L * 3600).DatePart();
}

int WeekLastDay(int weekStart) { return weekStart <= 1 ? 7 : weekStart - 1; }

CDateTime EarliestEntryDay(const CTimeKeeperDoc& doc, EntryCategory category, const CDateTime& today)
{
    // Day keys sort as their dates do, so the first counting day is the earliest.
    for (const auto& [key, day] : doc.m_days)
    {
        if (!DayCounts(*day, category))
            continue;
        const CDateTime date = CDateTime::FromDayKey(key);
        if (date.IsValid() && date < today)
            return date;
        break;
    }
    return today;
}

CDateTime LatestEntryDay(const CTimeKeeperDoc& doc, EntryCategory category, const CDateTime& today)
{
    for (auto it = doc.m_days.rbegin(); it != doc.m_days.rend(); ++it)
    {
        if (!DayCounts(*it->second, category))
            continue;
        const CDateTime date = CDateTime::FromDayKey(it->first);
        if (date.IsValid() && date > today)
            return date;
        break;
    }
    return today;
}

CDateTime ResolveStartDate(const CReport& report, const CTimeKeeperDoc& doc, const CDateTime& todayIn,
                           int weekStart)
{
    const CDateTime today = todayIn.DatePart();
    const int year = today.GetYear();
    const int month = today.GetMonth();
    const uint32_t preset = IsKnownPreset(report.m_preset) ? report.m_preset : CReport::allDates;
    switch (preset)
    {
    case CReport::customDates: return report.m_startDate.DatePart();
    case CReport::currentWeek:
    {
        CDateTime d = today;
        while (d.GetDayOfWeek() != weekStart)
            d = StepDayBack(d);
        return d;
    }
    case CReport::previousWeek:
    {
        CDateTime d = today.AddSeconds(-(6L * 86400 + 23L * 3600)).DatePart();
        while (d.GetDayOfWeek() != weekStart)
            d = StepDayBack(d);
        return d;
    }
    case CReport::currentMonth: return FirstOfMonth(year, month);
    case CReport::previousMonth:
        return month == 1 ? FirstOfMonth(year - 1, 12) : FirstOfMonth(year, month - 1);
    case CReport::currentYear: return FirstOfMonth(year, 1);
    case CReport::previousYear: return FirstOfMonth(year - 1, 1);
    case CReport::today: return today;
    case CReport::yesterday: return StepDayBack(today);
    case CReport::currentHalfMonth:
        return CDateTime::FromDate(year, month, today.GetDay() < 16 ? 1 : 16);
    case CReport::previousHalfMonth:
        if (today.GetDay() < 16)
        {
            const CDateTime last = StepDayBack(FirstOfMonth(year, month));
            return CDateTime::FromDate(last.GetYear(), last.GetMonth(), 16);
        }
        return FirstOfMonth(year, month);
    default: return EarliestEntryDay(doc, CategoryOfKind(report.m_kind), today);
    }
}

CDateTime ResolveEndDate(const CReport& report, const CTimeKeeperDoc& doc, const CDateTime& todayIn,
                         int weekStart)
{
    const CDateTime today = todayIn.DatePart();
    const int year = today.GetYear();
    const int month = today.GetMonth();
    const int lastDay = WeekLastDay(weekStart);
    const uint32_t preset = IsKnownPreset(report.m_preset) ? report.m_preset : CReport::allDates;
    switch (preset)
    {
    case CReport::customDates: return report.m_endDate.DatePart();
    case CReport::currentWeek:
    {
        CDateTime d = today;
        while (d.GetDayOfWeek() != lastDay)
            d = StepDayForward(d);
        return d;
    }
    case CReport::previousWeek:
    {
        CDateTime d = StepDayBack(today);
        while (d.GetDayOfWeek() != lastDay)
            d = StepDayBack(d);
        return d;
    }
    case CReport::currentMonth: return StepDayBack(FirstOfNextMonth(today));
    case CReport::previousMonth: return StepDayBack(FirstOfMonth(year, month));
    case CReport::currentYear: return StepDayBack(FirstOfMonth(year + 1, 1));
    case CReport::previousYear: return StepDayBack(FirstOfMonth(year, 1));
    case CReport::today: return today;
    case CReport::yesterday: return StepDayBack(today);
    case CReport::currentHalfMonth:
        return today.GetDay() < 16 ? CDateTime::FromDate(year, month, 15)
                                   : StepDayBack(FirstOfNextMonth(today));
    case CReport::previousHalfMonth:
        return today.GetDay() < 16 ? StepDayBack(FirstOfMonth(year, month))
                                   : CDateTime::FromDate(year, month, 15);
    default: return LatestEntryDay(doc, CategoryOfKind(report.m_kind), today);
    }
}

DateRange ResolveDateRange(const CReport& report, const CTimeKeeperDoc& doc, const CDateTime& today,
                           int weekStart)
{
    return DateRange{ResolveStartDate(report, doc, today, weekStart),
                     ResolveEndDate(report, doc, today, weekStart)};
}

DateRange ResolveDateRange(const CReport& report, const CTimeKeeperDoc& doc, const CTimeKeeperApp& app)
{
    return ResolveDateRange(report, doc, app.Today(), app.GetWeekStart());
}

std::string PresetName(uint32_t preset)
{
    static const char* const names[] = {
        "Custom Dates",   "Current Week", "Previous Week", "Current Month",
        "Previous Month", "Current Year", "Previous Year", "All Dates",
        "Today",          "Yesterday",    "Current Half Month", "Previous Half Month",
    };
    return IsKnownPreset(preset) ? names[preset] : "";
}

std::string DateRangeText(const CReport& report, const CTimeKeeperDoc& doc, const CTimeKeeperApp& app,
                          const CDateTime& today)
{
    if (report.m_preset == CReport::customDates)
    {
        const DateRange range = ResolveDateRange(report, doc, today, app.GetWeekStart());
        return app.FormatShortDate(range.start) + "-" + app.FormatShortDate(range.end);
    }
    return PresetName(report.m_preset);
}

std::string DateRangeText(const CReport& report, const CTimeKeeperDoc& doc, const CTimeKeeperApp& app)
{
    return DateRangeText(report, doc, app, app.Today());
}

} // namespace reports
