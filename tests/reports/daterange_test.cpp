#include "reportfixture.h"

#include "reports/daterange.h"

using reports::DateRange;

namespace
{
std::string Text(const CDateTime& d) { return d.Format("%Y-%m-%d"); }
} // namespace

class DateRangeTest : public ReportTest
{
protected:
    DateRangeTest() { m_report = m_doc.AddReport(CReport::timeDetail); }

    // The resolved range as "start..end" for a preset on a given day.
    std::string Range(uint32_t preset, const CDateTime& today, int weekStart = 1)
    {
        m_report->m_preset = preset;
        const DateRange r = reports::ResolveDateRange(*m_report, m_doc, today, weekStart);
        EXPECT_EQ(r.start.GetHour() + r.start.GetMinute(), 0);
        EXPECT_EQ(r.end.GetHour() + r.end.GetMinute(), 0);
        return Text(r.start) + ".." + Text(r.end);
    }

    CReport* m_report = nullptr;
};

TEST_F(DateRangeTest, WeeksFollowTheWeekStart)
{
    const CDateTime monday = Date(2024, 3, 18);
    EXPECT_EQ(Range(CReport::currentWeek, monday, 2), "2024-03-18..2024-03-24");
    EXPECT_EQ(Range(CReport::previousWeek, monday, 2), "2024-03-11..2024-03-17");

    // Sunday starts: the week ends on Saturday.
    const CDateTime wednesday = Date(2024, 3, 20);
    EXPECT_EQ(Range(CReport::currentWeek, wednesday, 1), "2024-03-17..2024-03-23");
    EXPECT_EQ(Range(CReport::previousWeek, wednesday, 1), "2024-03-10..2024-03-16");
    const CDateTime sunday = Date(2024, 3, 17);
    EXPECT_EQ(Range(CReport::currentWeek, sunday, 1), "2024-03-17..2024-03-23");
    EXPECT_EQ(Range(CReport::previousWeek, sunday, 1), "2024-03-10..2024-03-16");
    // A Saturday start, and a week across the turn of the year.
    EXPECT_EQ(Range(CReport::currentWeek, Date(2024, 1, 2), 7), "2023-12-30..2024-01-05");
}

TEST_F(DateRangeTest, HalfMonthsSplitAfterTheFifteenth)
{
    EXPECT_EQ(Range(CReport::currentHalfMonth, Date(2024, 3, 15)), "2024-03-01..2024-03-15");
    EXPECT_EQ(Range(CReport::previousHalfMonth, Date(2024, 3, 15)), "2024-02-16..2024-02-29");
    EXPECT_EQ(Range(CReport::currentHalfMonth, Date(2024, 3, 16)), "2024-03-16..2024-03-31");
    EXPECT_EQ(Range(CReport::previousHalfMonth, Date(2024, 3, 16)), "2024-03-01..2024-03-15");
    EXPECT_EQ(Range(CReport::previousHalfMonth, Date(2024, 1, 10)), "2023-12-16..2023-12-31");
}

TEST_F(DateRangeTest, MonthsAndYearsTurnOverInJanuary)
{
    const CDateTime january = Date(2024, 1, 10);
    EXPECT_EQ(Range(CReport::currentMonth, january), "2024-01-01..2024-01-31");
    EXPECT_EQ(Range(CReport::previousMonth, january), "2023-12-01..2023-12-31");
    EXPECT_EQ(Range(CReport::currentYear, january), "2024-01-01..2024-12-31");
    EXPECT_EQ(Range(CReport::previousYear, january), "2023-01-01..2023-12-31");
    EXPECT_EQ(Range(CReport::currentMonth, Date(2023, 2, 14)), "2023-02-01..2023-02-28");
    EXPECT_EQ(Range(CReport::previousMonth, Date(2024, 3, 31)), "2024-02-01..2024-02-29");
}

TEST_F(DateRangeTest, DaysAroundALeapDay)
{
    const CDateTime first = Date(2024, 3, 1);
    EXPECT_EQ(Range(CReport::today, first), "2024-03-01..2024-03-01");
    EXPECT_EQ(Range(CReport::yesterday, first), "2024-02-29..2024-02-29");
    // Today given with a time of day still resolves to whole days.
    EXPECT_EQ(Range(CReport::today, CDateTime::FromDate(2024, 3, 1, 17, 45)), "2024-03-01..2024-03-01");
}

TEST_F(DateRangeTest, CustomDatesAreTruncatedToTheDay)
{
    m_report->m_startDate = CDateTime::FromDate(2024, 2, 3, 14, 30);
    m_report->m_endDate = CDateTime::FromDate(2024, 2, 9, 8, 0);
    EXPECT_EQ(Range(CReport::customDates, Date(2024, 3, 20)), "2024-02-03..2024-02-09");
}

TEST_F(DateRangeTest, AllDatesSpansTheDaysOfTheReportsEntryCategory)
{
    const CDateTime today = Date(2024, 3, 20);
    EXPECT_EQ(Range(CReport::allDates, today), "2024-03-20..2024-03-20");

    CTask* task = AddTask(m_root, "Work");
    AddTime(Date(2024, 1, 5), task, 9, 0, 10, 0);
    AddTime(Date(2024, 2, 1), task, 9, 0, 10, 0);
    AddExpense(Date(2023, 11, 30), task, 5.0, 1, uint32_t(-1));
    AddExpense(Date(2024, 4, 2), task, 5.0, 1, uint32_t(-1));
    AddCompleted(Date(2024, 3, 1), task, "done", "1");

    EXPECT_EQ(Range(CReport::allDates, today), "2024-01-05..2024-03-20");
    m_report->m_kind = CReport::expenseSummary;
    EXPECT_EQ(Range(CReport::allDates, today), "2023-11-30..2024-04-02");
    m_report->m_kind = CReport::todoDetail;
    EXPECT_EQ(Range(CReport::allDates, today), "2024-03-01..2024-03-20");
    m_report->m_kind = CReport::invoice;
    EXPECT_EQ(Range(CReport::allDates, today), "2023-11-30..2024-04-02");
    m_report->m_kind = CReport::timeSummary;
    // An unknown preset covers all dates as well.
    EXPECT_EQ(Range(42, today), "2024-01-05..2024-03-20");
}

TEST_F(DateRangeTest, RangeTextNamesThePresetOrShowsTheDates)
{
    m_report->m_preset = CReport::customDates;
    m_report->m_startDate = Date(2024, 3, 1);
    m_report->m_endDate = Date(2024, 3, 31);
    EXPECT_EQ(reports::DateRangeText(*m_report, m_doc, *m_app), "03/01/2024-03/31/2024");
    m_report->m_preset = CReport::previousHalfMonth;
    EXPECT_EQ(reports::DateRangeText(*m_report, m_doc, *m_app), "Previous Half Month");
    m_report->m_preset = CReport::allDates;
    EXPECT_EQ(reports::DateRangeText(*m_report, m_doc, *m_app), "All Dates");
    m_report->m_preset = 12;
    EXPECT_EQ(reports::DateRangeText(*m_report, m_doc, *m_app), "");
}
