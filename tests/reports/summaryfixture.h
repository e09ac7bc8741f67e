#pragma once

#include "reportfixture.h"

#include "reports/exportfile.h"

// The entries of March 2024 that the summary and invoice cases share: five time
// entries (Website at $50 and, once, at a custom $60), four expenses.
class SummaryReportTest : public SampleReportTest
{
protected:
    SummaryReportTest()
    {
        AddTime(Date(2024, 3, 4), m_website, 9, 0, 10, 30, 1);
        AddTime(Date(2024, 3, 4), m_support, 11, 0, 11, 45, 2);
        AddTime(Date(2024, 3, 5), m_globex, 13, 0, 15, 15, 1);
        CTimeEntry* custom = AddTime(Date(2024, 3, 11), m_website, 9, 0, 10, 0, 1);
        custom->m_customBilling = true;
        custom->m_billable = true;
        custom->m_rate = 60.0;
        AddTime(Date(2024, 3, 13), m_acme, 14, 0, 14, 30, 0);
        AddExpense(Date(2024, 3, 4), m_website, 420.50, 1, 2);
        CExpenseEntry* mileage = AddExpense(Date(2024, 3, 4), m_support, 66.00, CExpenseType::kMileageId, 1, false);
        mileage->m_distance = 120.0f;
        AddExpense(Date(2024, 3, 12), m_globex, 18.25, 8, 1);
        AddExpense(Date(2024, 3, 13), m_website, 12.00, 8, uint32_t(-1));
        m_acme->m_hoursEstimate = 600;
        m_acme->m_costEstimate = 2000;
        m_website->m_costEstimate = 1500;
    }

    CReport* Summary(CReport::Kind kind, const std::string& name, const CTask* task, const CDateTime& from,
                     const CDateTime& to, int32_t level, uint32_t frame, uint32_t fields, bool totals,
                     bool rollup, bool emptyRows = false)
    {
        CReport* report = AddReport(kind, name, task, from, to, fields);
        report->m_summarizeLevel = level;
        report->m_timeFrame = frame;
        report->m_showTotals = totals;
        report->m_rollup = rollup;
        report->m_showEmptyRows = emptyRows;
        return report;
    }

    const CDateTime m_first = Date(2024, 3, 1);
    const CDateTime m_last = Date(2024, 3, 31);
};

