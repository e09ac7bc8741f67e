#include "summaryfixture.h"

#include "platform/prompter.h"
#include "reports/fixedmetricscanvas.h"
#include "reports/invoiceoutput.h"
#include "reports/reportrunner.h"

class InvoiceTest : public SummaryReportTest
{
protected:
    InvoiceTest() { m_app->SetInvoiceAddress("Pat Doe\nConsulting"); }

    CReport* Invoice(const std::string& name, const CTask* task, const CDateTime& from, const CDateTime& to,
                     int32_t level, uint32_t frame, uint32_t fields)
    {
        return Summary(CReport::invoice, name, task, from, to, level, frame, fields, false, false);
    }

    static bool PageHas(const std::vector<std::string>& page, const std::string& text)
    {
        for (const std::string& line : page)
            if (line.find(text) != std::string::npos)
                return true;
        return false;
    }
};

TEST_F(InvoiceTest, WeeklyInvoiceWithTaxAndHeadingLines)
{
    CReport* report = Invoice("Acme Invoice", m_acme, Date(2024, 3, 3), Date(2024, 3, 16), 2, CReport::frameWeek,
                              0x11);
    report->m_addTax = true;
    report->m_taxRate = 10.0;
    report->m_showTerms = true;
    report->m_terms = "Net 30";
    report->m_recipient = "Acme Corp\r\n1 Main St";
    report->m_numberMode = 1;
    report->m_invoiceNumber = 1001;
    // An invoice has no rollup and no total column, whatever the members hold.
    report->m_rollup = true;
    report->m_showTotals = true;
    ExpectGolden(report, "invoice_week_tax");

    reports::CInvoiceOutput output(*report, m_doc, *m_app);
    output.PrepareData();
    EXPECT_DOUBLE_EQ(output.GetTaxAmount(), 19.0);
    EXPECT_DOUBLE_EQ(output.GetAmountDue(), 190.0 + 498.50 + 19.0);
    EXPECT_EQ(output.GetNumberText(), "1001");
}

TEST_F(InvoiceTest, TotalInvoiceWithoutTaxShowsVariousRates)
{
    CReport* report = Invoice("Acme March", m_acme, m_first, m_last, 2, CReport::frameTotal, 0x10);
    ExpectGolden(report, "invoice_total");

    reports::CInvoiceOutput output(*report, m_doc, *m_app);
    output.PrepareData();
    EXPECT_DOUBLE_EQ(output.GetTaxAmount(), 0.0);
    EXPECT_DOUBLE_EQ(output.GetAmountDue(), 190.0 + 498.50);
    ASSERT_EQ(output.Items().size(), 4u);
    EXPECT_LT(output.Items()[2].rate, 0.0); // Website: $50 and $60 in one period
    EXPECT_DOUBLE_EQ(output.Items()[2].billing, 135.0);
    EXPECT_TRUE(output.Items().back().IsTotal());
}

TEST_F(InvoiceTest, MonthlyInvoiceByTaskIdText)
{
    AddTime(Date(2024, 2, 20), m_website, 9, 0, 11, 0, 1);
    CReport* report = Invoice("Invoice by ID", m_root, Date(2024, 2, 1), m_last, CReport::groupTaskId,
                              CReport::frameMonth, 0x11);
    report->m_showTerms = true;
    report->m_terms = "Due on receipt";
    report->m_recipient = "Globex Inc";
    ExpectGolden(report, "invoice_taskid_month");
}

TEST_F(InvoiceTest, EntriesWithoutTaskIdTextBillAsUnassigned)
{
    AddTime(Date(2024, 3, 20), m_root, 9, 0, 10, 0);
    CReport* report = Invoice("I", m_root, Date(2024, 3, 20), Date(2024, 3, 20), CReport::groupTaskId,
                              CReport::frameTotal, 0);
    const std::string csv = Export(report, reports::formatCsv);
    EXPECT_NE(csv.find("\"0\",\"**Unassigned**\",\"1:00\""), std::string::npos) << csv;
}

TEST_F(InvoiceTest, NumberingTakesTheNextNumberOnlyWhenAskedTo)
{
    CReport* report = Invoice("I", m_acme, m_first, m_last, 2, CReport::frameTotal, 0);
    m_app->SetInvoiceNumber(7);
    m_doc.SetModifiedFlag(false);

    // Use next number, none yet: taken without a question.
    platform::ScriptedPrompter silent;
    EXPECT_EQ(reports::NumberInvoice(*report, m_doc, *m_app, silent), "7");
    EXPECT_EQ(report->m_invoiceNumber, 7);
    EXPECT_EQ(m_app->GetInvoiceNumber(), 8);
    EXPECT_TRUE(m_doc.IsModified());
    EXPECT_TRUE(silent.Questions().empty());

    // Already numbered: 41037, and No keeps the number.
    m_doc.SetModifiedFlag(false);
    platform::ScriptedPrompter no({platform::Answer::no});
    EXPECT_EQ(reports::NumberInvoice(*report, m_doc, *m_app, no), "7");
    ASSERT_EQ(no.Questions().size(), 1u);
    EXPECT_EQ(no.Questions()[0], "This invoice is set to use the next invoice number, but it already has one.  "
                                 "Would you like to replace the current invoice number with the next invoice "
                                 "number?");
    EXPECT_EQ(m_app->GetInvoiceNumber(), 8);
    EXPECT_FALSE(m_doc.IsModified());

    platform::ScriptedPrompter yes({platform::Answer::yes});
    EXPECT_EQ(reports::NumberInvoice(*report, m_doc, *m_app, yes), "8");
    EXPECT_EQ(m_app->GetInvoiceNumber(), 9);

    // Use this number: nothing changes.
    report->m_numberMode = 1;
    report->m_invoiceNumber = 4242;
    platform::ScriptedPrompter none;
    EXPECT_EQ(reports::NumberInvoice(*report, m_doc, *m_app, none), "4242");
    EXPECT_EQ(report->m_invoiceNumber, 4242);
    EXPECT_EQ(m_app->GetInvoiceNumber(), 9);
    EXPECT_TRUE(none.Questions().empty());
}

TEST_F(InvoiceTest, PrintedHeaderBlockAndColumns)
{
    CReport* report = Invoice("Acme Invoice", m_acme, Date(2024, 3, 3), Date(2024, 3, 16), 2, CReport::frameWeek,
                              0x11);
    report->m_addTax = true;
    report->m_taxRate = 7.5;
    report->m_showTerms = true;
    report->m_terms = "Net 30";
    report->m_recipient = "Acme Corp";
    report->m_numberMode = 1;
    report->m_invoiceNumber = 1001;
    const auto pages = reports::RenderTextPages(*report, m_doc, *m_app);
    ASSERT_EQ(pages.size(), 1u);
    const std::vector<std::string>& page = pages[0];
    EXPECT_TRUE(PageHas(page, "Invoice: 1001"));
    EXPECT_TRUE(PageHas(page, "Date: 03/20/2024"));
    EXPECT_TRUE(PageHas(page, "Due: $702.75")); // 190.00 + 498.50 + 7.5% of 190.00
    EXPECT_TRUE(PageHas(page, "Terms: Net 30"));
    EXPECT_TRUE(PageHas(page, "Consulting"));
    EXPECT_TRUE(PageHas(page, "Acme Corp"));
    EXPECT_TRUE(PageHas(page, "Ending"));
    EXPECT_TRUE(PageHas(page, "7.5%"));
    EXPECT_TRUE(PageHas(page, "$14.25"));
    EXPECT_TRUE(PageHas(page, "TOTAL"));
    // The right-hand values share one column, placed so that the widest (the date)
    // ends at the right margin; each label stands just before its value.
    int valuesFound = 0;
    for (const std::string& line : page)
    {
        for (const char* value : {"1001", "03/20/2024", "$702.75", "Net 30"})
        {
            const size_t at = line.find(value);
            if (at != std::string::npos && line.size() == at + std::string(value).size() && at > 40)
            {
                EXPECT_EQ(at, 67u) << line;
                ++valuesFound;
            }
        }
    }
    EXPECT_EQ(valuesFound, 4);
    EXPECT_EQ(page[1], Cols({{7, "Pat Doe"}, {58, "Invoice: 1001"}}));
    EXPECT_EQ(page[2], Cols({{7, "Consulting"}, {61, "Date: 03/20/2024"}}));

    report->m_timeFrame = CReport::frameTotal;
    report->m_addTax = false;
    const auto total = reports::RenderTextPages(*report, m_doc, *m_app);
    EXPECT_FALSE(PageHas(total[0], "Ending"));
    EXPECT_FALSE(PageHas(total[0], "Tax"));
}

TEST_F(InvoiceTest, LinesTaxAndDueAddUpToTheCent)
{
    // 0:20 at $10.01 costs 3.3366..., half an hour at $10.01 5.005: each line shows
    // its figure rounded, and the total, the tax and the amount due add up those.
    CTask* job = AddTask(m_globex, "Job");
    SetBilling(job, 10.01);
    CTask* other = AddTask(m_globex, "Other");
    SetBilling(other, 10.01);
    AddTime(Date(2024, 3, 18), job, 9, 0, 9, 20);
    AddTime(Date(2024, 3, 18), other, 9, 0, 9, 30);
    AddExpense(Date(2024, 3, 18), job, 2.675, 8, 1);
    AddExpense(Date(2024, 3, 18), other, 0.125, 8, 1);
    CReport* report = Invoice("Cents", m_globex, Date(2024, 3, 18), Date(2024, 3, 18), 2, CReport::frameTotal, 0x10);
    report->m_addTax = true;
    report->m_taxRate = 8.25;

    reports::CInvoiceOutput output(*report, m_doc, *m_app);
    output.PrepareData();
    double billing = 0.0, expenses = 0.0;
    std::vector<double> lineBillings;
    for (const reports::CInvoiceItem& item : output.Items())
        if (!item.IsTotal())
        {
            lineBillings.push_back(item.billing);
            billing += item.billing;
            expenses += item.expenses;
        }
    EXPECT_EQ(lineBillings, (std::vector<double>{0.0, 3.34, 5.01})) << "Globex heading, Job, Other";
    EXPECT_DOUBLE_EQ(output.Items().back().billing, 8.35);
    EXPECT_DOUBLE_EQ(output.Items().back().billing, billing);
    EXPECT_DOUBLE_EQ(output.Items().back().expenses, 2.81) << "2.68 + 0.13, each half away from zero";
    EXPECT_DOUBLE_EQ(output.Items().back().expenses, expenses);
    EXPECT_DOUBLE_EQ(output.GetTaxAmount(), 0.69);
    EXPECT_DOUBLE_EQ(output.GetAmountDue(), 11.85);

    // Every format shows the same rounded figures.
    const std::string csv = Export(report, reports::formatCsv);
    EXPECT_NE(csv.find("\"TOTAL\",\"\",\"0:50\",\"8.35\",\"2.81\""), std::string::npos) << csv;
    const std::string html = Export(report, reports::formatHtml);
    EXPECT_NE(html.find("Due: $11.85"), std::string::npos) << html;
    EXPECT_NE(html.find("<TD ALIGN=RIGHT>$0.69</TD>"), std::string::npos) << html;
    const auto pages = reports::RenderTextPages(*report, m_doc, *m_app);
    ASSERT_FALSE(pages.empty());
    EXPECT_TRUE(PageHas(pages[0], "$3.34"));
    EXPECT_TRUE(PageHas(pages[0], "$11.85"));
}

TEST(RoundToCents, HalvesGoAwayFromZero)
{
    EXPECT_DOUBLE_EQ(reports::RoundToCents(2.675), 2.68);
    EXPECT_DOUBLE_EQ(reports::RoundToCents(-2.675), -2.68);
    EXPECT_DOUBLE_EQ(reports::RoundToCents(1.005), 1.01);
    EXPECT_DOUBLE_EQ(reports::RoundToCents(0.125), 0.13);
    EXPECT_DOUBLE_EQ(reports::RoundToCents(0.00499), 0.0);
    EXPECT_DOUBLE_EQ(reports::RoundToCents(1234567.894), 1234567.89);
    EXPECT_DOUBLE_EQ(reports::RoundToCents(10.01 * 20 / 60), 3.34);
}

TEST_F(InvoiceTest, HtmlHeaderShowsTheNumberAfterTheDateOnlyWhenThereIsOne)
{
    CReport* report = Invoice("N", m_acme, m_first, m_last, 2, CReport::frameTotal, 0);
    report->m_showTerms = true;
    report->m_terms = "Net 15";
    report->m_numberMode = 1;
    report->m_invoiceNumber = 0;
    std::string html = Export(report, reports::formatHtml);
    EXPECT_EQ(html.find("Invoice: "), std::string::npos) << html;
    EXPECT_NE(html.find("<BR>Terms: Net 15</H4>"), std::string::npos) << html;
    report->m_invoiceNumber = 57;
    html = Export(report, reports::formatHtml);
    EXPECT_NE(html.find("<H4>Date: 03/20/2024<BR>Invoice: 57<BR><BR>Pat Doe<BR>"), std::string::npos) << html;
}
