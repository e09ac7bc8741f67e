#include "reportfixture.h"

#include "platform/prompter.h"
#include "reports/detailoutput.h"
#include "reports/reportrunner.h"
#include "reports/timedetailoutput.h"

using reports::formatCsv;
using reports::formatHtml;
using reports::formatTab;

namespace
{
constexpr uint32_t kAllTimeFields = 0x1 | 0x10 | 0x100 | 0x1000 | 0x10000 | 0x100000 | 0x1000000;
constexpr uint32_t kAllExpenseFields = 0x1 | 0x10 | 0x100 | 0x1000 | 0x10000 | 0x100000;
constexpr uint32_t kAllToDoFields = 0x1 | 0x10 | 0x100 | 0x1000 | 0x10000 | 0x100000;
} // namespace

class DetailReportTest : public SampleReportTest
{
protected:
    void AddTimeEntries()
    {
        AddTime(Date(2024, 3, 4), m_website, 9, 0, 10, 30, 1, "Home page");
        AddTime(Date(2024, 3, 4), m_support, 11, 0, 11, 45, 2);
        AddTime(Date(2024, 3, 5), m_globex, 13, 0, 15, 15, 1, "Kickoff");
        CTimeEntry* free = AddTime(Date(2024, 3, 6), m_website, 8, 0, 8, 20, 1, "Fixed typo\r\nin footer");
        free->m_customBilling = true;
        free->m_billable = false;
        free->m_rate = 0.0;
    }
};

TEST_F(DetailReportTest, TimeDetailWithEveryFieldMatchesTheExpectedFiles)
{
    AddTimeEntries();
    CReport* report = AddReport(CReport::timeDetail, "Acme/March", m_acme, Date(2024, 3, 1),
                                Date(2024, 3, 31), kAllTimeFields);
    ExpectGolden(report, "time_detail_all");
}

TEST_F(DetailReportTest, TimeDetailWithoutOptionalFieldsMatchesTheExpectedFiles)
{
    AddTimeEntries();
    CReport* report = AddReport(CReport::timeDetail, "Billable <Time>", m_root, Date(2024, 3, 1),
                                Date(2024, 3, 31));
    report->m_includeNonBillable = false;
    ExpectGolden(report, "time_detail_plain");
}

TEST_F(DetailReportTest, ExpenseDetailMatchesTheExpectedFiles)
{
    AddExpense(Date(2024, 3, 4), m_website, 420.50, 1, 2, true, "Flight to client");
    CExpenseEntry* mileage = AddExpense(Date(2024, 3, 4), m_support, 66.00, CExpenseType::kMileageId, 1, false);
    mileage->m_distance = 120.0f;
    AddExpense(Date(2024, 3, 7), m_globex, 18.25, 8, 1);
    AddExpense(Date(2024, 4, 1), m_globex, 99.0, 8, 1); // outside the range
    CReport* report = AddReport(CReport::expenseDetail, "Expenses", m_root, Date(2024, 3, 1),
                                Date(2024, 3, 31), kAllExpenseFields);
    ExpectGolden(report, "expense_detail");
}

TEST_F(DetailReportTest, ToDoDetailMatchesTheExpectedFiles)
{
    AddOutstanding(m_website, "Write copy", "2", Date(2024, 3, 25));
    AddOutstanding(m_support, "Call back", "1");
    AddOutstanding(m_globex, "Send quote", "2", Date(2024, 3, 18));
    AddCompleted(Date(2024, 3, 5), m_website, "Pick colors", "3", Date(2024, 3, 6));
    CToDoEntry* nda = AddCompleted(Date(2024, 3, 5), m_globex, "Sign NDA", "1");
    nda->m_note = "Scanned copy";
    CReport* report = AddReport(CReport::todoDetail, "To Do", m_root, Date(2024, 3, 1), Date(2024, 3, 31),
                                kAllToDoFields);
    ExpectGolden(report, "todo_detail");
}

TEST_F(DetailReportTest, FiltersDecideWhichTimeEntriesAreListed)
{
    AddTimeEntries();
    CReport* report = AddReport(CReport::timeDetail, "T", m_acme, Date(2024, 3, 1), Date(2024, 3, 31));
    reports::CTimeDetailOutput output(*report, m_doc, *m_app);

    output.PrepareData();
    EXPECT_EQ(output.EntryCount(), 3u);

    // Selected tasks only: the entries of Acme's sub-tasks no longer match.
    report->m_selectedTasksOnly = true;
    output.PrepareData();
    EXPECT_EQ(output.EntryCount(), 0u);
    report->m_selectedTasks = {m_acme->m_id, m_website->m_id};
    output.PrepareData();
    EXPECT_EQ(output.EntryCount(), 2u);
    report->m_selectedTasksOnly = false;

    report->m_selectedActivities = {2};
    output.PrepareData();
    ASSERT_EQ(output.EntryCount(), 1u);
    EXPECT_EQ(output.EntryAt(0)->m_taskId, m_support->m_id);

    // The single 0 lets activities through that were added after the report was made.
    report->m_selectedActivities = {0};
    m_doc.AddActivity("Travel");
    AddTime(Date(2024, 3, 8), m_support, 9, 0, 9, 30, 3);
    output.PrepareData();
    EXPECT_EQ(output.EntryCount(), 4u);

    report->m_includeBillable = false;
    output.PrepareData();
    EXPECT_EQ(output.EntryCount(), 1u); // the custom non-billable entry
    report->m_includeNonBillable = false;
    output.PrepareData();
    EXPECT_EQ(output.EntryCount(), 0u);
}

TEST_F(DetailReportTest, TotalsCountARunningEntryUpToNow)
{
    SetClock(2024, 3, 20, 12, 10);
    AddTime(Date(2024, 3, 20), m_website, 8, 0, 9, 0);
    AddTime(Date(2024, 3, 20), m_website, 10, 0, -1, -1); // the timer runs
    CReport* report = AddReport(CReport::timeDetail, "T", m_root, Date(2024, 3, 20), Date(2024, 3, 20),
                                0x1000000);
    reports::CTimeDetailOutput output(*report, m_doc, *m_app);
    output.PrepareData();
    EXPECT_EQ(output.GetTimeTotal("TOTAL"), CTinyElapsedTime(3, 10));
    EXPECT_EQ(output.GetTimeTotal("20240320"), CTinyElapsedTime(3, 10));
    EXPECT_DOUBLE_EQ(output.GetAmountTotal("TOTAL"), 50.0 * (3 + 10 / 60.0));
}

TEST_F(DetailReportTest, AnEmptyRangeWritesHeadersOnly)
{
    AddTimeEntries();
    CReport* report = AddReport(CReport::timeDetail, "Empty", m_root, Date(2024, 5, 1), Date(2024, 5, 31));
    reports::CTimeDetailOutput output(*report, m_doc, *m_app);
    output.PrepareData();
    EXPECT_FALSE(output.HasTotalsFor("TOTAL"));

    EXPECT_EQ(Export(report, formatCsv),
              "\"Employee\",\"Date\",\"QuorvaneTaskID\",\"TaskDescription\",\"Time\"\r\n");
    const std::string html = Export(report, formatHtml);
    EXPECT_NE(html.find("<TH NOWRAP>Description</TH><TH NOWRAP>Time</TH></TR>\r\n</BODY></HTML>"),
              std::string::npos)
        << html;
    EXPECT_EQ(html.find("TOTAL"), std::string::npos);
}

TEST_F(DetailReportTest, CommaDelimitedUsesTheLocaleListSeparator)
{
    platform::LocaleInfo locale = platform::LocaleInfo::UnitedStates();
    locale.decimalSeparator = ",";
    m_app->SetLocale(locale);
    AddTime(Date(2024, 3, 4), m_support, 11, 0, 11, 45, 2);
    CReport* report = AddReport(CReport::timeDetail, "T", m_root, Date(2024, 3, 4), Date(2024, 3, 4), 0x10);
    const std::string csv = Export(report, formatCsv);
    EXPECT_NE(csv.find("\"Employee\";\"Date\";\"QuorvaneTaskID\";\"TaskDescription\";\"BillingRate\";\"Time\"\r\n"),
              std::string::npos)
        << csv;
    EXPECT_NE(csv.find(";\"40,00\";\"0:45\"\r\n"), std::string::npos) << csv;
}

TEST_F(DetailReportTest, ToDoOrderPutsItemsWithoutDueDateLast)
{
    // Due dates decide even when the Due Date column is not shown.
    AddOutstanding(m_website, "b no due", "");
    AddOutstanding(m_website, "c due later", "", Date(2024, 4, 2));
    AddOutstanding(m_website, "a due soon", "", Date(2024, 3, 22));
    AddOutstanding(m_website, "d no due", "");
    CReport* report = AddReport(CReport::todoDetail, "T", m_root, Date(2024, 3, 1), Date(2024, 3, 31));
    report->m_includeNonBillable = false;
    const std::string csv = Export(report, formatCsv);
    const size_t c = csv.find("c due later"), a = csv.find("a due soon"), b = csv.find("b no due"),
                 d = csv.find("d no due");
    ASSERT_NE(d, std::string::npos);
    // Without the Due Date column the dates do not order the dated items: their texts do.
    EXPECT_LT(a, c);
    EXPECT_LT(c, b);
    EXPECT_LT(b, d);

    report->m_fieldFlags = 0x10;
    const std::string shown = Export(report, formatCsv);
    EXPECT_LT(shown.find("a due soon"), shown.find("c due later"));
    EXPECT_LT(shown.find("c due later"), shown.find("b no due"));
}

TEST_F(DetailReportTest, ToDoStateFilterSelectsOutstandingOrCompleted)
{
    AddOutstanding(m_website, "open item", "1");
    AddCompleted(Date(2024, 3, 5), m_website, "done item", "1");
    CReport* report = AddReport(CReport::todoDetail, "T", m_root, Date(2024, 3, 1), Date(2024, 3, 31));
    report->m_includeBillable = false; // outstanding off
    std::string csv = Export(report, formatCsv);
    EXPECT_EQ(csv.find("open item"), std::string::npos);
    EXPECT_NE(csv.find("done item"), std::string::npos);
    report->m_includeBillable = true;
    report->m_includeNonBillable = false; // completed off
    csv = Export(report, formatCsv);
    EXPECT_NE(csv.find("open item"), std::string::npos);
    EXPECT_EQ(csv.find("done item"), std::string::npos);
}

TEST(WrapTextTest, BreaksAtBlanksHyphensAndLineBreaks)
{
    auto width = [](std::string_view s) { return static_cast<int>(s.size()); };
    EXPECT_EQ(reports::WrapText("one two three", 8, width), (std::vector<std::string>{"one two ", "three"}));
    EXPECT_EQ(reports::WrapText("well-known fact", 6, width), (std::vector<std::string>{"well-", "known ", "fact"}));
    EXPECT_EQ(reports::WrapText("  lead\r\n  next", 20, width), (std::vector<std::string>{"lead", "next"}));
    EXPECT_EQ(reports::WrapText("abcdefghij xy", 4, width),
              (std::vector<std::string>{"abcd", "efgh", "ij ", "xy"}));
    EXPECT_TRUE(reports::WrapText("   ", 4, width).empty());
}

TEST_F(DetailReportTest, ExportOfAKindWithoutExportSaysSo)
{
    CReport* report = AddReport(CReport::timeDetail, "Odd", m_root, Date(2024, 3, 1), Date(2024, 3, 31));
    report->m_kind = 99;
    platform::ScriptedPrompter prompter;
    EXPECT_EQ(reports::ExportReport(*report, m_doc, *m_app, formatCsv, &prompter), "");
    EXPECT_EQ(prompter.Messages(), std::vector<std::string>{"Export Unavailable"});
    const std::string html = reports::ExportReport(*report, m_doc, *m_app, formatHtml, &prompter);
    EXPECT_NE(html.find("<H2>Odd</H2><BR><H2>Export Unavailable</H2></BODY></HTML>"), std::string::npos) << html;
}

TEST_F(DetailReportTest, IdsThatResolveToNothingShowAsUnassigned)
{
    // An expense type and a payment method deleted after the entry was made, and an
    // activity that never existed.
    AddExpense(Date(2024, 3, 4), m_website, 10.0, 4242, 4343);
    AddTime(Date(2024, 3, 4), m_website, 9, 0, 10, 0, 4444);
    CReport* expenses = AddReport(CReport::expenseDetail, "E", m_root, Date(2024, 3, 4), Date(2024, 3, 4),
                                  0x1000 | 0x10000);
    CReport* times = AddReport(CReport::timeDetail, "T", m_root, Date(2024, 3, 4), Date(2024, 3, 4), 0x10000);

    const std::string html = Export(expenses, formatHtml);
    EXPECT_NE(html.find("<TD NOWRAP>**Unassigned**</TD><TD NOWRAP>**Unassigned**</TD>"), std::string::npos)
        << html;
    EXPECT_NE(Export(expenses, formatCsv).find("\"**Unassigned**\",\"**Unassigned**\","), std::string::npos);
    const auto pages = reports::RenderTextPages(*expenses, m_doc, *m_app);
    ASSERT_EQ(pages.size(), 1u);
    size_t found = 0;
    for (const std::string& line : pages[0])
        for (size_t at = line.find("**Unassigned**"); at != std::string::npos;
             at = line.find("**Unassigned**", at + 1))
            ++found;
    EXPECT_EQ(found, 2u) << "Type and Method on the page";

    EXPECT_NE(Export(times, formatHtml).find("<TD NOWRAP>**Unassigned**</TD>"), std::string::npos);
}
