#include "reportfixture.h"

#include "reports/reportoptions.h"

TEST(ReportOptionsTest, KindsAndPresetsByKeywordOrLabel)
{
    EXPECT_EQ(reports::ParseKind("time-detail"), CReport::timeDetail);
    EXPECT_EQ(reports::ParseKind("Billing Summary"), CReport::billingSummary);
    EXPECT_EQ(reports::ParseKind("TIME-EXPENSE-SUMMARY"), CReport::timeExpenseSummary);
    EXPECT_FALSE(reports::ParseKind("weekly"));
    EXPECT_EQ(reports::KindLabel(CReport::timeExpenseSummary), "Time & Expense Summary");
    EXPECT_EQ(reports::ParsePreset("previous-half-month"), CReport::previousHalfMonth);
    EXPECT_EQ(reports::ParsePreset("All Dates"), CReport::allDates);
    EXPECT_FALSE(reports::ParsePreset("next-week"));
    EXPECT_NE(reports::AcceptedPresets().find("current-half-month"), std::string::npos);
    EXPECT_EQ(reports::ParseTimeFrame("week"), CReport::frameWeek);
}

TEST(ReportOptionsTest, FieldListsFollowTheKindsFamily)
{
    uint32_t flags = 0;
    std::string error;
    ASSERT_TRUE(reports::ParseFieldList(CReport::timeDetail, "task-id, Billing Amount,note", flags, error));
    EXPECT_EQ(flags, 0x1u | 0x1000000u | 0x100000u);
    ASSERT_TRUE(reports::ParseFieldList(CReport::expenseDetail, "mileage,expense-type", flags, error));
    EXPECT_EQ(flags, 0x10u | 0x1000u);
    ASSERT_TRUE(reports::ParseFieldList(CReport::todoDetail, "all", flags, error));
    EXPECT_EQ(flags, 0x1u | 0x10u | 0x100u | 0x1000u | 0x10000u | 0x100000u);
    ASSERT_TRUE(reports::ParseFieldList(CReport::invoice, "", flags, error));
    EXPECT_EQ(flags, 0u);

    flags = 7;
    EXPECT_FALSE(reports::ParseFieldList(CReport::expenseSummary, "task-id,billing-rate", flags, error));
    EXPECT_EQ(flags, 7u);
    EXPECT_EQ(error, "Unknown field \"billing-rate\" for Expense Summary reports; accepted: task-id, estimates, all");
}

class ReportOptionsDocTest : public ReportTest
{
};

TEST_F(ReportOptionsDocTest, SummarizeTakesLevelsAndTheKindsGroupings)
{
    int32_t level = 0;
    std::string error;
    ASSERT_TRUE(reports::ParseSummarize(CReport::timeSummary, "2", m_doc, level, error));
    EXPECT_EQ(level, 2);
    ASSERT_TRUE(reports::ParseSummarize(CReport::timeSummary, "project", m_doc, level, error));
    EXPECT_EQ(level, 2);
    ASSERT_TRUE(reports::ParseSummarize(CReport::timeSummary, "activity", m_doc, level, error));
    EXPECT_EQ(level, CReport::groupActivity);
    ASSERT_TRUE(reports::ParseSummarize(CReport::expenseSummary, "Payment Method", m_doc, level, error));
    EXPECT_EQ(level, CReport::groupPaymentMethod);
    EXPECT_FALSE(reports::ParseSummarize(CReport::invoice, "activity", m_doc, level, error));
    EXPECT_EQ(error, "Cannot summarize Invoice reports by \"activity\"; accepted: a task level number or "
                     "name, task-id");
}

TEST_F(ReportOptionsDocTest, CheckReportGivesTheWizardsMessages)
{
    CReport* report = m_doc.AddReport(CReport::timeDetail);
    report->m_preset = CReport::customDates;
    EXPECT_EQ(reports::CheckReport(*report), "Enter a name for this report.");
    report->m_name = "R";
    EXPECT_EQ(reports::CheckReport(*report), "Enter a start date.");
    report->m_startDate = Date(2024, 3, 10);
    EXPECT_EQ(reports::CheckReport(*report), "Enter an end date.");
    report->m_endDate = Date(2024, 3, 9);
    EXPECT_EQ(reports::CheckReport(*report), "Start date must be on or before end date.");
    report->m_endDate = Date(2024, 3, 10);
    EXPECT_EQ(reports::CheckReport(*report), "");
}

TEST_F(ReportOptionsDocTest, ListReportsShowEveryColumnOfTheirFamily)
{
    CReport* time = m_doc.AddReport(CReport::timeDetail);
    reports::InitListReport(*time);
    EXPECT_EQ(time->m_name, "Time Detail Report");
    EXPECT_EQ(time->m_fieldFlags, 0x1111111u);
    CReport* todo = m_doc.AddReport(CReport::todoDetail);
    reports::InitListReport(*todo);
    EXPECT_EQ(todo->m_name, "To Do Detail Report");
    EXPECT_EQ(todo->m_fieldFlags, 0x111111u);
}
