#include "reportfixture.h"

#include "reports/exportfile.h"
#include "reports/reportrunner.h"
#include "support/testsupport.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

std::string Cols(std::initializer_list<std::pair<size_t, std::string>> pieces)
{
    std::string line;
    for (const auto& [column, text] : pieces)
    {
        line.resize(column, ' ');
        line += text;
    }
    return line;
}

std::string Dashes(size_t from, size_t to) { return std::string(from, ' ') + std::string(to - from, '-'); }

ReportTest::ReportTest() : m_clock(platform::LocalTime{2024, 3, 20, 12, 0, 0})
{
    m_app = std::make_unique<CTimeKeeperApp>(m_store, m_clock, platform::LocaleInfo::UnitedStates());
    m_app->SetWeekStart(1);
    m_doc.NewDocument("Pat Doe");
    m_doc.m_roundedNow = [this] { return m_app->RoundTime(m_app->Now()); };
    m_root = m_doc.GetRootTask();
}

void ReportTest::ExpectGolden(CReport* report, const std::string& caseName)
{
    const std::pair<int, const char*> formats[] = {
        {reports::formatCsv, "expected.csv"}, {reports::formatTab, "expected.tab"}, {reports::formatHtml, "expected.htm"}};
    for (const auto& [format, file] : formats)
        EXPECT_TRUE(MatchesExpected(caseName, file, Export(report, format))) << caseName << "/" << file;
}

void ReportTest::SetClock(int y, int m, int d, int hour, int minute)
{
    m_clock.Set(platform::LocalTime{y, m, d, hour, minute, 0});
}

CTask* ReportTest::AddTask(CTask* parent, const std::string& name, const std::string& taskId)
{
    CTask* task = m_doc.AddTask(parent, static_cast<uint16_t>(parent->m_level + 1));
    m_doc.RenameTask(task, name);
    if (!taskId.empty())
    {
        task->m_useParentTaskId = false;
        task->m_taskId = taskId;
    }
    return task;
}

void ReportTest::SetBilling(CTask* task, double rate, bool billable)
{
    task->m_useParentBilling = false;
    task->m_regularRate = rate;
    task->m_billable = billable;
}

CTimeEntry* ReportTest::AddTime(const CDateTime& day, const CTask* task, int h1, int m1, int h2, int m2,
                                uint32_t activity, const std::string& note)
{
    CTimeEntry* entry = qvtest::AddTime(m_doc, task, day, h1, m1, h2, m2, note);
    entry->m_activityId = activity;
    return entry;
}

CExpenseEntry* ReportTest::AddExpense(const CDateTime& day, const CTask* task, double amount, uint32_t type,
                                      uint32_t method, bool billable, const std::string& note)
{
    CExpenseEntry* entry = qvtest::AddExpense(m_doc, task, day, amount, type, note);
    entry->m_paymentMethodId = method;
    entry->m_billable = billable;
    return entry;
}

CToDoEntry* ReportTest::AddOutstanding(const CTask* task, const std::string& text, const std::string& priority,
                                       const CDateTime& due)
{
    CToDoEntry* entry = qvtest::AddToDo(m_doc, task, text, due);
    entry->m_priority = priority;
    return entry;
}

CToDoEntry* ReportTest::AddCompleted(const CDateTime& day, const CTask* task, const std::string& text,
                                     const std::string& priority, const CDateTime& due)
{
    CToDoEntry* entry = qvtest::AddCompletedToDo(m_doc, task, text, day);
    entry->m_priority = priority;
    entry->m_dueDate = due;
    return entry;
}

CReport* ReportTest::AddReport(CReport::Kind kind, const std::string& name, const CTask* task,
                               const CDateTime& from, const CDateTime& to, uint32_t fields)
{
    CReport* report = m_doc.AddReport(kind);
    report->m_name = name;
    report->m_preset = CReport::customDates;
    report->m_startDate = from;
    report->m_endDate = to;
    report->m_selectedTasks = {task->m_id};
    report->m_fieldFlags = fields;
    return report;
}

std::string ReportTest::Export(CReport* report, int format)
{
    return reports::ExportReport(*report, m_doc, *m_app, format);
}

std::string ReportTest::ReadExpected(const std::string& caseName, const std::string& fileName)
{
    const std::string path = std::string(QV_TEST_DATA_DIR) + "/" + caseName + "/" + fileName;
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in.good()) << "missing expected file " << path;
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

::testing::AssertionResult ReportTest::MatchesExpected(const std::string& caseName,
                                                      const std::string& fileName, const std::string& actual)
{
    const std::string expected = ReadExpected(caseName, fileName);
    if (expected != actual && std::getenv("QV_WRITE_EXPECTED"))
    {
        std::ofstream out(std::string(QV_TEST_DATA_DIR) + "/" + caseName + "/" + fileName, std::ios::binary);
        out << actual;
    }
    return SameBytes(expected, actual);
}

::testing::AssertionResult ReportTest::SameBytes(const std::string& expected, const std::string& actual)
{
    if (expected == actual)
        return ::testing::AssertionSuccess();
    size_t at = 0;
    while (at < expected.size() && at < actual.size() && expected[at] == actual[at])
        ++at;
    auto around = [at](const std::string& s) {
        const size_t from = at > 40 ? at - 40 : 0;
        std::string piece = s.substr(from, 80);
        std::string shown;
        for (char c : piece)
            shown += c == '\r' ? std::string("\\r") : c == '\n' ? std::string("\\n") : c == '\t' ? std::string("\\t") : std::string(1, c);
        return shown;
    };
    return ::testing::AssertionFailure() << "first difference at byte " << at << " (sizes " << expected.size()
                                         << " and " << actual.size() << ")\n  expected: ..." << around(expected)
                                         << "\n  actual:   ..." << around(actual);
}

SampleReportTest::SampleReportTest()
{
    m_acme = AddTask(m_root, "Acme", "AC");
    SetBilling(m_acme, 50.0);
    m_website = AddTask(m_acme, "Website", "AC-WEB");
    m_support = AddTask(m_acme, "Support");
    SetBilling(m_support, 40.0);
    m_globex = AddTask(m_root, "Globex", "GX");
    SetBilling(m_globex, 60.0);
    m_doc.AddActivity("Design");
    m_doc.AddActivity("Meetings");
    m_doc.AddPaymentMethod("Cash");
    m_doc.AddPaymentMethod("Visa");
}
