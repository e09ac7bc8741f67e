#include "reportfixture.h"

#include "reports/exportfile.h"

#include <nlohmann/json.hpp>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace
{
// Texts that break a naive export: separators, quotes, tabs, line breaks and markup.
const std::string kRootName = "Pat \"Boss\" Doe, <i>Jr</i>; & co";
const std::string kTaskName = "Acme;\t\"Inc\", <script>alert(1)</script> & Sons";
const std::string kTaskId = "AC\"1,<x>";
const std::string kActivity = "Design, \"UX\" <b>bold</b>";
const std::string kExpenseType = "Meals; \"team\" <i>it</i>";
const std::string kPaymentMethod = "Card, \"corp\" <u>u</u>";
const std::string kNote = "line one\r\nline \"two\", <script>evil()</script>\tend";
const std::string kToDo = "Call \"Bob\", <script>x()</script>\r\nthen write";
const std::string kReportName = "R&D <b>\"Q1\"</b>, costs";
const std::string kRecipientLines[] = {"Globex \"West\" <script>r()</script>", "1 Main St, Suite <9>"};
const std::string kAddressLines[] = {"Pat <Doe>", "\"Consulting\" & more"};
const std::string kTerms = "Net 30 <b>now</b>";

// A note on one line, as the detail exports write it.
std::string Flattened(const std::string& note)
{
    std::string out;
    for (size_t i = 0; i < note.size(); ++i)
    {
        if (note[i] == '\r' || note[i] == '\n')
        {
            out += ' ';
            if (note[i] == '\r' && i + 1 < note.size())
                ++i;
        }
        else
            out += note[i];
    }
    return out;
}

// A value as a tab-delimited cell can hold it.
std::string ForTab(std::string value)
{
    for (char& c : value)
        if (c == '\t' || c == '\r' || c == '\n')
            c = ' ';
    return value;
}

} // namespace

class ExportReadBackTest : public ReportTest
{
protected:
    ExportReadBackTest()
    {
        m_doc.RenameTask(m_root, kRootName);
        m_task = AddTask(m_root, kTaskName, kTaskId);
        SetBilling(m_task, 50.0);
        const uint32_t activity = m_doc.AddActivity(kActivity)->m_id;
        const uint32_t type = m_doc.AddExpenseType(kExpenseType)->m_id;
        const uint32_t method = m_doc.AddPaymentMethod(kPaymentMethod)->m_id;
        AddTime(Date(2024, 3, 4), m_task, 9, 0, 10, 30, activity, kNote);
        AddExpense(Date(2024, 3, 5), m_task, 12.345, type, method, true, kNote);
        AddOutstanding(m_task, kToDo, "1")->m_note = kNote;
        m_app->SetInvoiceAddress(kAddressLines[0] + "\r\n" + kAddressLines[1]);
    }

    CReport* Define(CReport::Kind kind, uint32_t fields, int32_t level = 1)
    {
        CReport* report = AddReport(kind, kReportName, m_root, Date(2024, 3, 1), Date(2024, 3, 31), fields);
        report->m_summarizeLevel = level;
        report->m_timeFrame = CReport::frameTotal;
        report->m_showTotals = true;
        return report;
    }

    CTask* m_task = nullptr;
};

TEST_F(ExportReadBackTest, EveryKindReadsBackInACsvReaderAndABrowserParser)
{
    struct Case
    {
        CReport* report;
        std::vector<std::string> cells; // whole cells of the delimited exports
        std::vector<std::string> texts; // texts the HTML shows
    };
    const uint32_t all = 0x1111111;
    const std::string note = Flattened(kNote);
    CReport* invoice = Define(CReport::invoice, 0x11);
    invoice->m_recipient = kRecipientLines[0] + "\r\n" + kRecipientLines[1];
    invoice->m_terms = kTerms;
    invoice->m_showTerms = true;
    invoice->m_addTax = true;
    invoice->m_taxRate = 8.25;
    const std::vector<Case> cases = {
        {Define(CReport::timeDetail, all), {kTaskName, kTaskId, kActivity, note}, {kTaskName, kTaskId, kActivity, kNote}},
        {Define(CReport::expenseDetail, all),
         {kTaskName, kTaskId, kExpenseType, kPaymentMethod, note},
         {kTaskName, kTaskId, kExpenseType, kPaymentMethod, kNote}},
        {Define(CReport::todoDetail, all), {kTaskName, kTaskId, kToDo, note}, {kTaskName, kTaskId, kToDo, kNote}},
        {Define(CReport::timeSummary, 0x111), {kTaskName, kTaskId}, {kTaskName, kTaskId}},
        {Define(CReport::expenseSummary, 0x111), {kTaskName, kTaskId}, {kTaskName, kTaskId}},
        {Define(CReport::timeExpenseSummary, 0x111, CReport::groupTaskId), {kTaskName, kTaskId}, {kTaskName, kTaskId}},
        {Define(CReport::billingSummary, 0x111, CReport::groupActivity), {kActivity}, {kActivity}},
        {invoice,
         {kTaskName, kTaskId},
         {kTaskName, kTaskId, kRecipientLines[0], kRecipientLines[1], kAddressLines[0], kAddressLines[1], kTerms}},
    };

    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() / ("qv-export-readback-" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    nlohmann::json manifest = nlohmann::json::array();
    for (size_t i = 0; i < cases.size(); ++i)
    {
        const Case& c = cases[i];
        std::vector<std::string> tabCells;
        for (const std::string& cell : c.cells)
            tabCells.push_back(ForTab(cell));
        std::vector<std::string> delimited = c.cells;
        delimited.push_back(kRootName);
        tabCells.push_back(ForTab(kRootName));
        const std::vector<std::string> texts = [&] {
            std::vector<std::string> t = c.texts;
            t.push_back(kReportName);
            return t;
        }();
        const struct
        {
            int format;
            const char* name;
            const char* extension;
            const std::vector<std::string>& cells;
        } formats[] = {{reports::formatCsv, "csv", "csv", delimited},
                       {reports::formatTab, "tab", "tab", tabCells},
                       {reports::formatHtml, "html", "htm", delimited}};
        for (const auto& f : formats)
        {
            const std::string file = std::to_string(i) + "-" + c.report->GetClassName() + "." + f.extension;
            std::ofstream(dir / file, std::ios::binary) << Export(c.report, f.format);
            manifest.push_back({{"file", file}, {"format", f.name}, {"cells", f.cells}, {"texts", texts}});
        }
    }
    std::ofstream(dir / "manifest.json", std::ios::binary) << manifest.dump(1);

    const std::string script = std::string(QV_TEST_DATA_DIR) + "/../check_exports.py";
    const std::string log = (dir / "check.log").string();
    // The system's Python is the one the distribution's html5lib package serves.
    const std::string python = std::filesystem::exists("/usr/bin/python3") ? "/usr/bin/python3" : "python3";
    const int status = std::system((python + " '" + script + "' '" + dir.string() + "' > '" + log + "' 2>&1").c_str());
    std::ifstream in(log);
    std::stringstream output;
    output << in.rdbuf();
    EXPECT_EQ(status, 0) << "python3 with html5lib (scripts/install-deps) reads the exports in " << dir << ":\n"
                         << output.str();
    if (status == 0)
        std::filesystem::remove_all(dir);
}
