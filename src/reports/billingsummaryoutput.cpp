#include "reports/billingsummaryoutput.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"

namespace reports
{

void CBillingSummaryOutput::GatherDay(const CDay& day, size_t period)
{
    for (const auto& owned : day.TimeEntries())
    {
        const CTimeEntry& entry = *owned;
        const CTask* task = AcceptedTask(entry);
        if (!task)
            continue;
        const double billing = entry.GetBillingAmount(*task, m_runningEnd);
        const double rate = entry.GetEffectiveRate(*task);
        for (const Target& target : FindTargets(task, GroupRowKey(task, entry.m_activityId)))
        {
            CTimeExpenseSummary& summary = static_cast<CTimeExpenseSummary&>(*target.row);
            summary.AddAmount(period, billing);
            if (HasTotalPeriod())
                summary.AddAmount(TotalPeriod(), billing);
            if (target.setRate)
                summary.SetRate(rate);
        }
    }
}

void CBillingSummaryOutput::GetCellTexts(const CSummaryRow& row, size_t period, TextUse use,
                                         std::vector<std::string>& texts) const
{
    const CTimeExpenseSummary& summary = static_cast<const CTimeExpenseSummary&>(row);
    const double amount = period < summary.m_amountCells.size() ? summary.m_amountCells[period] : 0.0;
    texts.resize(1);
    if (use == TextUse::exportText)
        texts[0] = m_app.FormatNumber(amount);
    else
        texts[0] = amount == 0.0 ? std::string() : m_app.FormatCurrency(amount);
}

} // namespace reports
