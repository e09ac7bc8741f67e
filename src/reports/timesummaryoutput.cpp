#include "reports/timesummaryoutput.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"

namespace reports
{

void CTimeSummaryOutput::GatherDay(const CDay& day, size_t period)
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
        const CTinyElapsedTime elapsed = entry.GetElapsed(m_runningEnd);
        const double rate = entry.GetEffectiveRate(*task);
        Distribute(task, GroupRowKey(task, entry.m_activityId), period,
                   [&](CSummaryRow& row, size_t p, bool setRate) {
                       CSummary& summary = static_cast<CSummary&>(row);
                       summary.AddTime(p, elapsed);
                       if (setRate)
                           summary.SetRate(rate);
                   });
    }
}

std::vector<std::string> CTimeSummaryOutput::CellTexts(const CSummaryRow& row, size_t period, TextUse use) const
{
    const CSummary& summary = static_cast<const CSummary&>(row);
    const CTinyElapsedTime elapsed = period < summary.m_cells.size() ? summary.m_cells[period] : CTinyElapsedTime();
    std::string text = m_app.GetElapsedText(elapsed);
    if (text.empty() && use == TextUse::exportText)
        text = "0";
    return {text};
}

} // namespace reports
