#include "reports/timesummaryoutput.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"

namespace reports
{

void CTimeSummaryOutput::GatherDay(const CDay& day, size_t period)
{
    for (const auto& owned : day.TimeEntries())
    {
        const CTimeEntry& entry = *owned;
        const CTask* task = AcceptedTask(entry);
        if (!task)
            continue;
        const CTinyElapsedTime elapsed = entry.GetElapsed(m_runningEnd);
        const double rate = entry.GetEffectiveRate(*task);
        for (const Target& target : FindTargets(task, GroupRowKey(task, entry.m_activityId)))
        {
            CSummary& summary = static_cast<CSummary&>(*target.row);
            summary.AddTime(period, elapsed);
            if (HasTotalPeriod())
                summary.AddTime(TotalPeriod(), elapsed);
            if (target.setRate)
                summary.SetRate(rate);
        }
    }
}

void CTimeSummaryOutput::GetCellTexts(const CSummaryRow& row, size_t period, TextUse use,
                                      std::vector<std::string>& texts) const
{
    const CSummary& summary = static_cast<const CSummary&>(row);
    const CTinyElapsedTime elapsed = period < summary.m_cells.size() ? summary.m_cells[period] : CTinyElapsedTime();
    texts.resize(1);
    texts[0] = elapsed.IsZero() ? std::string() : m_app.GetElapsedText(elapsed);
    if (texts[0].empty() && use == TextUse::exportText)
        texts[0] = "0";
}

} // namespace reports
