#include "reports/billingsummaryoutput.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"

namespace reports
{

void CBillingSummaryOutput::GatherDay(const CDay& day, size_t period)
{
    if (!m_runningEndKnown)
    {
        m_runningEnd = m_doc.RunningEnd();
        m_runningEndKnown = true;
    }
    for (const auto& owned : day.TimeEntries())
    {
        const CTimeEntry& entry = *owned;
        const CTask* task = m_doc.GetTask(entry.m_taskId);
        if (!task || !PassesBillingFilter(entry.IsEffectiveBillable(*task)) ||
            !PassesIdFilter(m_report.m_selectedActivities, entry.m_activityId))
            continue;
        const double billing = entry.GetBillingAmount(*task, m_runningEnd);
        const double rate = entry.GetEffectiveRate(*task);
        Distribute(task, GroupRowKey(task, entry.m_activityId), period,
                   [&](CSummaryRow& row, size_t p, bool setRate) {
                       CTimeExpenseSummary& summary = static_cast<CTimeExpenseSummary&>(row);
                       summary.AddAmount(p, billing);
                       if (setRate)
                           summary.SetRate(rate);
                   });
    }
}

std::vector<std::string> CBillingSummaryOutput::CellTexts(const CSummaryRow& row, size_t period,
                                                          TextUse use) const
{
    const CTimeExpenseSummary& summary = static_cast<const CTimeExpenseSummary&>(row);
    const double amount = period < summary.m_amountCells.size() ? summary.m_amountCells[period] : 0.0;
    if (use == TextUse::exportText)
        return {m_app.FormatNumber(amount)};
    return {amount == 0.0 ? std::string() : m_app.FormatCurrency(amount)};
}

} // namespace reports
