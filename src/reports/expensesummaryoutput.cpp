#include "reports/expensesummaryoutput.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"

namespace reports
{

void CExpenseSummaryOutput::GatherDay(const CDay& day, size_t period)
{
    const bool byMethod = m_report.m_summarizeLevel == CReport::groupPaymentMethod;
    for (const auto& owned : day.ExpenseEntries())
    {
        const CExpenseEntry& entry = *owned;
        const CTask* task = AcceptedTask(entry);
        if (!task)
            continue;
        const uint32_t catalogId = byMethod ? entry.m_paymentMethodId : entry.m_expenseTypeId;
        for (const Target& target : FindTargets(task, GroupRowKey(task, catalogId)))
        {
            CExpenseSummary& summary = static_cast<CExpenseSummary&>(*target.row);
            summary.AddAmount(period, entry.m_amount);
            if (HasTotalPeriod())
                summary.AddAmount(TotalPeriod(), entry.m_amount);
        }
    }
}

void CExpenseSummaryOutput::GetCellTexts(const CSummaryRow& row, size_t period, TextUse use,
                                         std::vector<std::string>& texts) const
{
    const CExpenseSummary& summary = static_cast<const CExpenseSummary&>(row);
    const double amount = period < summary.m_cells.size() ? summary.m_cells[period] : 0.0;
    texts.resize(1);
    // An empty cell stays blank on the page and in HTML, as an empty time does.
    texts[0] = amount == 0.0 && use != TextUse::exportText ? std::string() : m_app.FormatNumber(amount);
}

std::vector<std::string> CExpenseSummaryOutput::EstimateTexts(const CTask& task, TextUse use) const
{
    if (task.m_costEstimate == 0.0 && use != TextUse::exportText)
        return {std::string()};
    return {m_app.FormatNumber(task.m_costEstimate)};
}

} // namespace reports
