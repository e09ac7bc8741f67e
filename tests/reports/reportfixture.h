#pragma once

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/settingsstore.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>

// A line of page text with the given pieces starting at the given columns, and a
// rule from one column up to (not including) another.
std::string Cols(std::initializer_list<std::pair<size_t, std::string>> pieces);
std::string Dashes(size_t from, size_t to);

// A U.S. application with an in-memory settings store and a clock standing at
// 20 March 2024, noon, and a document for "Pat Doe" that tests fill in.
class ReportTest : public ::testing::Test
{
protected:
    ReportTest();

    CTask* AddTask(CTask* parent, const std::string& name, const std::string& taskId = std::string());
    // Gives the task billing of its own.
    static void SetBilling(CTask* task, double rate, bool billable = true);

    static CDateTime Date(int y, int m, int d) { return CDateTime::FromDate(y, m, d); }
    CTimeEntry* AddTime(const CDateTime& day, const CTask* task, int h1, int m1, int h2, int m2,
                        uint32_t activity = 0, const std::string& note = std::string());
    CExpenseEntry* AddExpense(const CDateTime& day, const CTask* task, double amount, uint32_t type,
                              uint32_t method, bool billable = true, const std::string& note = std::string());
    CToDoEntry* AddOutstanding(const CTask* task, const std::string& text, const std::string& priority,
                               const CDateTime& due = CDateTime::Null());
    CToDoEntry* AddCompleted(const CDateTime& day, const CTask* task, const std::string& text,
                             const std::string& priority, const CDateTime& due = CDateTime::Null());

    // A definition over custom dates with one selected task.
    CReport* AddReport(CReport::Kind kind, const std::string& name, const CTask* task,
                       const CDateTime& from, const CDateTime& to, uint32_t fields = 0);

    std::string Export(CReport* report, int format);
    // The expected file of a golden case, as bytes.
    static std::string ReadExpected(const std::string& caseName, const std::string& fileName);
    // The export against the case's expected file. With QV_WRITE_EXPECTED set in the
    // environment a differing file is rewritten (review the change before committing).
    static ::testing::AssertionResult MatchesExpected(const std::string& caseName, const std::string& fileName,
                                                      const std::string& actual);
    // Compares the three export formats with the case's expected files.
    void ExpectGolden(CReport* report, const std::string& caseName);
    // Compares byte for byte and says where the first difference is.
    static ::testing::AssertionResult SameBytes(const std::string& expected, const std::string& actual);

    void SetClock(int y, int m, int d, int hour = 12, int minute = 0);

    platform::SettingsStore m_store;
    platform::FixedClock m_clock;
    std::unique_ptr<CTimeKeeperApp> m_app;
    CTimeKeeperDoc m_doc;
    CTask* m_root = nullptr;
};

// The document most report tests share:
//   Pat Doe
//     Acme (AC, $50/h)        Support ($40/h, task ID inherited), Website (AC-WEB)
//     Globex (GX, $60/h)
// activities Design (1) and Meetings (2), payment methods Cash (1) and Visa (2).
class SampleReportTest : public ReportTest
{
protected:
    SampleReportTest();

    CTask* m_acme = nullptr;
    CTask* m_website = nullptr;
    CTask* m_support = nullptr;
    CTask* m_globex = nullptr;
};
