#include "summaryfixture.h"

#include "reports/bucket.h"
#include "reports/fixedmetricscanvas.h"
#include "reports/reportrunner.h"
#include "reports/summaryrows.h"
#include "reports/timesummaryoutput.h"

using reports::FixedMetricsCanvas;

TEST_F(SummaryReportTest, TimeSummaryGoldenFiles)
{
    ExpectGolden(Summary(CReport::timeSummary, "Weekly", m_root, Date(2024, 3, 3), Date(2024, 3, 16), 1,
                         CReport::frameWeek, 0x111, true, false),
                 "ts_level_week");
    ExpectGolden(Summary(CReport::timeSummary, "By Activity", m_root, m_first, m_last, CReport::groupActivity,
                         CReport::frameMonth, 0x11, true, true),
                 "ts_activity_month");
    ExpectGolden(Summary(CReport::timeSummary, "By Task ID", m_acme, m_first, m_last, CReport::groupTaskId,
                         CReport::frameTotal, 0x1, true, false),
                 "ts_taskid_total");
}

TEST_F(SummaryReportTest, ExpenseSummaryGoldenFiles)
{
    ExpectGolden(Summary(CReport::expenseSummary, "Expenses by Week", m_root, Date(2024, 3, 3), Date(2024, 3, 16),
                         2, CReport::frameWeek, 0x101, true, false),
                 "es_level_week");
    ExpectGolden(Summary(CReport::expenseSummary, "By Type", m_root, m_first, m_last, CReport::groupExpenseType,
                         CReport::frameTotal, 0, false, false),
                 "es_type_total");
    ExpectGolden(Summary(CReport::expenseSummary, "By Method", m_acme, m_first, m_last, CReport::groupPaymentMethod,
                         CReport::frameTotal, 0x1, true, true),
                 "es_method_total");
    ExpectGolden(Summary(CReport::expenseSummary, "Expense IDs", m_root, m_first, m_last, CReport::groupTaskId,
                         CReport::frameTotal, 0x1, false, false),
                 "es_taskid_total");
}

TEST_F(SummaryReportTest, TimeAndExpenseSummaryGoldenFiles)
{
    ExpectGolden(Summary(CReport::timeExpenseSummary, "Time and Expenses", m_root, Date(2024, 3, 3),
                         Date(2024, 3, 16), 1, CReport::frameWeek, 0x111, true, true),
                 "te_level_week");
    ExpectGolden(Summary(CReport::timeExpenseSummary, "T&E IDs", m_root, m_first, m_last, CReport::groupTaskId,
                         CReport::frameTotal, 0x1, false, false),
                 "te_taskid_total");
}

TEST_F(SummaryReportTest, BillingSummaryGoldenFiles)
{
    ExpectGolden(Summary(CReport::billingSummary, "Acme Billing", m_acme, m_first, m_last, 2, CReport::frameMonth,
                         0x110, false, false, true),
                 "bs_level_month");
    ExpectGolden(Summary(CReport::billingSummary, "Billing by Activity", m_root, m_first, m_last,
                         CReport::groupActivity, CReport::frameTotal, 0x10, true, false),
                 "bs_activity_total");
    ExpectGolden(Summary(CReport::billingSummary, "Billing IDs", m_acme, m_first, m_last, CReport::groupTaskId,
                         CReport::frameTotal, 0x1, false, false),
                 "bs_taskid_total");
}

TEST_F(SummaryReportTest, RollupDecidesWhetherParentsCountTheirDescendants)
{
    CTask* layout = AddTask(m_website, "Layout"); // level 3, below the summarize level
    AddTime(Date(2024, 3, 6), layout, 9, 0, 10, 0);
    CReport* report = Summary(CReport::timeSummary, "R", m_acme, m_first, m_last, 2, CReport::frameTotal, 0,
                              false, false);
    reports::CTimeSummaryOutput output(*report, m_doc, *m_app);
    auto cell = [&](const CTask* task) {
        return static_cast<const reports::CSummary*>(output.GetRow(task->m_id))->m_cells.at(0);
    };

    output.PrepareData();
    EXPECT_EQ(cell(m_acme), CTinyElapsedTime(0, 30));    // its own entry only
    EXPECT_EQ(cell(m_website), CTinyElapsedTime(3, 30)); // its own and Layout's
    EXPECT_EQ(cell(m_support), CTinyElapsedTime(0, 45));

    report->m_rollup = true;
    output.PrepareData();
    EXPECT_EQ(cell(m_acme), CTinyElapsedTime(4, 45));
    EXPECT_EQ(cell(m_website), CTinyElapsedTime(3, 30));
}

TEST_F(SummaryReportTest, SelectedTaskBelowTheLevelIsSummarizedInItsAncestor)
{
    CReport* report = Summary(CReport::timeSummary, "R", m_website, m_first, m_last, 1, CReport::frameTotal, 0,
                              false, false);
    reports::CTimeSummaryOutput output(*report, m_doc, *m_app);
    output.PrepareData();
    ASSERT_EQ(output.RowOrder(), (std::vector<int64_t>{m_acme->m_id}));
    // Only the selected task's entries count, not those of Acme itself or Support.
    EXPECT_EQ(static_cast<const reports::CSummary*>(output.GetRow(m_acme->m_id))->m_cells.at(0),
              CTinyElapsedTime(2, 30));
}

TEST_F(SummaryReportTest, EmptyRowsAreDroppedUnlessAsked)
{
    CTask* idle = AddTask(m_acme, "Idle");
    CReport* report = Summary(CReport::timeSummary, "R", m_acme, m_first, m_last, 2, CReport::frameTotal, 0,
                              false, false);
    reports::CTimeSummaryOutput output(*report, m_doc, *m_app);
    output.PrepareData();
    EXPECT_EQ(output.RowOrder(), (std::vector<int64_t>{m_acme->m_id, m_support->m_id, m_website->m_id}));
    report->m_showEmptyRows = true;
    output.PrepareData();
    EXPECT_EQ(output.RowOrder(),
              (std::vector<int64_t>{m_acme->m_id, idle->m_id, m_support->m_id, m_website->m_id}));
}

TEST_F(SummaryReportTest, TotalColumnOnlyForPeriodsOtherThanTotalAndNotForASingleDay)
{
    CReport* report = Summary(CReport::timeSummary, "R", m_root, m_first, m_last, 1, CReport::frameTotal, 0,
                              true, false);
    reports::CTimeSummaryOutput output(*report, m_doc, *m_app);
    output.PrepareData();
    EXPECT_FALSE(output.HasTotalPeriod());
    EXPECT_EQ(output.Periods().size(), 1u);
    EXPECT_EQ(output.RowOrder().back(), 0);

    report->m_timeFrame = CReport::frameDay;
    report->m_preset = CReport::yesterday;
    output.PrepareData();
    EXPECT_FALSE(output.HasTotalPeriod());
    EXPECT_EQ(output.RowOrder().back(), 0);

    report->m_preset = CReport::currentWeek;
    output.PrepareData();
    EXPECT_TRUE(output.HasTotalPeriod());
    EXPECT_EQ(output.Periods().size(), 8u);
}

TEST_F(SummaryReportTest, PagesRunDownTheRowsFirstThenAcrossThePeriods)
{
    CReport* report = Summary(CReport::timeSummary, "Daily", m_root, m_first, Date(2024, 3, 14), 1,
                              CReport::frameDay, 0, false, false, true);
    FixedMetricsCanvas::Options shortPage;
    shortPage.deviceHeight = 250; // two rows per page
    reports::CTimeSummaryOutput output(*report, m_doc, *m_app);
    FixedMetricsCanvas canvas(shortPage);
    // The name column is 154 wide ("**Unassigned**"), a day column 64: 8 days per page.
    EXPECT_EQ(output.Print(canvas), 4);
    EXPECT_EQ(output.PeriodsPerPage(), 8);
    EXPECT_EQ(output.RowPages(), 2);
    EXPECT_EQ(output.ColumnPages(), 2);
    auto pageHas = [&](size_t page, const std::string& text) {
        for (const std::string& line : canvas.PageText(page))
            if (line.find(text) != std::string::npos)
                return true;
        return false;
    };
    EXPECT_TRUE(pageHas(0, "Acme"));
    EXPECT_TRUE(pageHas(0, "03/08"));
    EXPECT_FALSE(pageHas(0, "03/09"));
    EXPECT_TRUE(pageHas(1, "Globex"));
    EXPECT_FALSE(pageHas(1, "Acme"));
    EXPECT_TRUE(pageHas(2, "Pat Doe"));
    EXPECT_TRUE(pageHas(2, "03/09"));
    EXPECT_FALSE(pageHas(2, "03/08"));
    EXPECT_TRUE(pageHas(3, "Globex"));
    EXPECT_TRUE(pageHas(3, "03/14"));
}

TEST_F(SummaryReportTest, PrintedTableOfATaskIdSummary)
{
    CReport* report = Summary(CReport::timeSummary, "By Task ID", m_acme, m_first, m_last, CReport::groupTaskId,
                              CReport::frameTotal, 0x1, true, false);
    const auto pages = reports::RenderTextPages(*report, m_doc, *m_app);
    ASSERT_EQ(pages.size(), 1u);
    const std::vector<std::string> expected = {
        Cols({{7, "By Task ID"}, {71, "Page 1"}}),
        Dashes(7, 36),
        Cols({{9, "Task"}, {31, "Total"}}),
        Dashes(7, 36),
        // The first selected task's row takes no entries: empty, it is left out.
        Cols({{8, "AC"}, {17, "Acme"}, {32, "1:15"}}),
        Cols({{8, "AC-WEB"}, {17, "Website"}, {32, "2:30"}}),
        Cols({{15, "TOTAL"}, {32, "3:45"}}),
        Dashes(7, 36),
    };
    EXPECT_EQ(pages[0], expected);
}

class PeriodTest : public ReportTest
{
protected:
    std::vector<std::string> Ends(uint32_t frame, const CDateTime& from, const CDateTime& to, int weekStart)
    {
        m_app->SetWeekStart(weekStart);
        CReport* report = AddReport(CReport::timeSummary, "P", m_root, from, to);
        report->m_timeFrame = frame;
        reports::CTimeSummaryOutput output(*report, m_doc, *m_app);
        output.PrepareData();
        std::vector<std::string> ends;
        for (const reports::CBucket& b : output.Periods())
            ends.push_back(b.GetStart().Format("%m/%d") + "-" + b.GetEnd().Format("%m/%d"));
        return ends;
    }
};

TEST_F(PeriodTest, WeeksEndOnTheDayBeforeTheWeekStart)
{
    EXPECT_EQ(Ends(CReport::frameWeek, Date(2024, 3, 6), Date(2024, 3, 15), 2),
              (std::vector<std::string>{"03/06-03/10", "03/11-03/15"}));
    EXPECT_EQ(Ends(CReport::frameWeek, Date(2024, 3, 6), Date(2024, 3, 15), 1),
              (std::vector<std::string>{"03/06-03/09", "03/10-03/15"}));
}

TEST_F(PeriodTest, MonthsAndYearsStopAtTheReportEnd)
{
    EXPECT_EQ(Ends(CReport::frameMonth, Date(2024, 1, 15), Date(2024, 3, 10), 1),
              (std::vector<std::string>{"01/15-01/31", "02/01-02/29", "03/01-03/10"}));
    EXPECT_EQ(Ends(CReport::frameYear, Date(2023, 11, 1), Date(2024, 2, 10), 1),
              (std::vector<std::string>{"11/01-12/31", "01/01-02/10"}));
    EXPECT_EQ(Ends(CReport::frameDay, Date(2024, 2, 28), Date(2024, 3, 1), 1),
              (std::vector<std::string>{"02/28-02/28", "02/29-02/29", "03/01-03/01"}));
    EXPECT_EQ(Ends(CReport::frameTotal, Date(2024, 2, 28), Date(2024, 3, 1), 1),
              (std::vector<std::string>{"02/28-03/01"}));
    EXPECT_TRUE(reports::CBucket().IsTotal());
}

TEST(SummaryRowTest, RatesThatDifferReadAsVarious)
{
    reports::CSummary row;
    row.SetRate(0.0);
    row.SetRate(50.0);
    EXPECT_DOUBLE_EQ(row.m_rate, 50.0);
    row.SetRate(50.0);
    EXPECT_FALSE(row.IsVariousRate());
    row.SetRate(60.0);
    EXPECT_TRUE(row.IsVariousRate());

    reports::CTimeExpenseSummary te;
    te.AddTime(1, CTinyElapsedTime(), 50.0);
    EXPECT_TRUE(te.m_empty); // a zero time changes nothing
    te.AddTime(1, CTinyElapsedTime(1, 30), 50.0);
    te.AddTime(1, CTinyElapsedTime(0, 30), -1.0); // a negative rate leaves the period rate alone
    EXPECT_DOUBLE_EQ(te.m_periodRates[1], 50.0);
    te.AddTime(1, CTinyElapsedTime(1, 0), 60.0);
    EXPECT_DOUBLE_EQ(te.m_periodRates[1], -1.0);
    EXPECT_EQ(te.m_timeCells[1], CTinyElapsedTime(3, 0));
    EXPECT_DOUBLE_EQ(te.m_costCells[1], 75.0 - 0.5 + 60.0);
    EXPECT_FALSE(te.m_empty);
}

TEST_F(SummaryReportTest, RunningEntryCountsUpToNowInEveryRun)
{
    SetClock(2024, 3, 20, 11, 0);
    AddTime(Date(2024, 3, 20), m_globex, 10, 0, -1, -1);
    CReport* report = Summary(CReport::timeSummary, "R", m_globex, Date(2024, 3, 20), Date(2024, 3, 20), 1,
                              CReport::frameTotal, 0, false, false);
    reports::CTimeSummaryOutput output(*report, m_doc, *m_app);
    auto globex = [&] {
        return static_cast<const reports::CSummary*>(output.GetRow(m_globex->m_id))->m_cells.at(0);
    };
    output.PrepareData();
    EXPECT_EQ(globex(), CTinyElapsedTime(1, 0));
    SetClock(2024, 3, 20, 11, 45);
    output.PrepareData();
    EXPECT_EQ(globex(), CTinyElapsedTime(1, 45));
}

TEST_F(SummaryReportTest, FiltersOfTheSummaryKinds)
{
    // Billable only: the non-billable mileage of Support drops out.
    CReport* expenses = Summary(CReport::expenseSummary, "E", m_acme, m_first, m_last, 1, CReport::frameTotal, 0,
                                false, false);
    expenses->m_includeNonBillable = false;
    EXPECT_NE(Export(expenses, reports::formatTab).find("Acme\t432.50\t"), std::string::npos)
        << Export(expenses, reports::formatTab);
    // Only lunches paid in cash: none for Acme, whose row stays only when asked.
    expenses->m_includeNonBillable = true;
    expenses->m_showEmptyRows = true;
    expenses->m_selectedExpenseTypes = {8};
    expenses->m_selectedPaymentMethods = {1};
    EXPECT_NE(Export(expenses, reports::formatTab).find("Acme\t0.00\t"), std::string::npos);
    expenses->m_selectedTasks = {m_root->m_id};
    EXPECT_NE(Export(expenses, reports::formatTab).find("Globex\t18.25\t"), std::string::npos);

    // Only meetings; and a billing filter that lets nothing through.
    CReport* time = Summary(CReport::billingSummary, "B", m_acme, m_first, m_last, 1, CReport::frameTotal, 0,
                            false, false, true);
    time->m_selectedActivities = {2};
    EXPECT_NE(Export(time, reports::formatTab).find("Acme\t30.00\t"), std::string::npos);
    time->m_includeBillable = false;
    EXPECT_NE(Export(time, reports::formatTab).find("Acme\t0.00\t"), std::string::npos);
}

TEST_F(SummaryReportTest, GroupingsLeaveTheFirstSelectedTaskRowEmpty)
{
    // Every grouping, with rollup on and empty rows shown: the row of the first
    // selected task stays, with nothing in it.
    struct Grouping
    {
        CReport::Kind kind;
        int32_t level;
    };
    const Grouping groupings[] = {{CReport::timeSummary, CReport::groupActivity},
                                  {CReport::timeSummary, CReport::groupTaskId},
                                  {CReport::expenseSummary, CReport::groupExpenseType},
                                  {CReport::expenseSummary, CReport::groupPaymentMethod},
                                  {CReport::billingSummary, CReport::groupActivity},
                                  {CReport::timeExpenseSummary, CReport::groupTaskId}};
    for (const Grouping& g : groupings)
    {
        SCOPED_TRACE(std::to_string(g.kind) + " " + std::to_string(g.level));
        CReport* report = Summary(g.kind, "G", m_acme, m_first, m_last, g.level, CReport::frameTotal, 0x1111,
                                  true, true, true);
        const std::string csv = Export(report, reports::formatCsv);
        // The first data line is Acme's, and every value in it is zero.
        const size_t start = csv.find("\r\n") + 2;
        const std::string line = csv.substr(start, csv.find("\r\n", start) - start);
        EXPECT_NE(line.find(",2,\"Acme\""), std::string::npos) << line;
        EXPECT_TRUE(line.find("\"0\"") != std::string::npos || line.find("\"0.00\"") != std::string::npos) << line;
        for (const char* value : {"1:15", "2:30", "3:45", "66.00", "432.50", "498.50", "55.00", "135.00"})
            EXPECT_EQ(line.find(value), std::string::npos) << value << " in " << line;
    }
}

TEST_F(SummaryReportTest, TaskIdTextRowsHaveNoTask)
{
    CReport* report = Summary(CReport::timeSummary, "I", m_root, m_first, m_last, CReport::groupTaskId,
                              CReport::frameTotal, 0x111, false, false);
    m_website->m_hoursEstimate = 90;
    const std::string tab = Export(report, reports::formatTab);
    // Task ID text, no internal id, the representative's name, no rate or
    // estimate, the time, no parent id.
    EXPECT_NE(tab.find("\tAC-WEB\t\tWebsite\t\t\t2:30\t\r\n"), std::string::npos) << tab;
    const std::string html = Export(report, reports::formatHtml);
    EXPECT_NE(html.find("<TD NOWRAP>AC-WEB</TD><TD NOWRAP>&nbsp&nbsp Website</TD><TD NOWRAP>&nbsp</TD>"
                        "<TD NOWRAP>&nbsp</TD>"),
              std::string::npos)
        << html;
}
