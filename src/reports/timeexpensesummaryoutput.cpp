#include "reports/timeexpensesummaryoutput.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"

namespace reports
{

void CTimeExpenseSummaryOutput::GatherDay(const CDay& day, size_t period)
{
    for (const auto& owned : day.TimeEntries())
    {
        const CTimeEntry& entry = *owned;
        const CTask* task = AcceptedTask(entry);
        if (!task)
            continue;
        const CTinyElapsedTime elapsed = entry.GetElapsed(m_runningEnd);
        const double rate = entry.GetEffectiveRate(*task);
        for (const Target& target : FindTargets(task, GroupRowKey(task, 0)))
        {
            CTimeExpenseSummary& summary = static_cast<CTimeExpenseSummary&>(*target.row);
            summary.AddTime(period, elapsed, rate);
            if (HasTotalPeriod())
                summary.AddTime(TotalPeriod(), elapsed, rate);
            if (target.setRate)
                summary.SetRate(rate);
        }
    }
    for (const auto& owned : day.ExpenseEntries())
    {
        const CExpenseEntry& entry = *owned;
        const CTask* task = AcceptedTask(entry);
        if (!task)
            continue;
        for (const Target& target : FindTargets(task, GroupRowKey(task, 0)))
        {
            CTimeExpenseSummary& summary = static_cast<CTimeExpenseSummary&>(*target.row);
            summary.AddAmount(period, entry.m_amount);
            if (HasTotalPeriod())
                summary.AddAmount(TotalPeriod(), entry.m_amount);
        }
    }
}

void CTimeExpenseSummaryOutput::GetCellTexts(const CSummaryRow& row, size_t period, TextUse use,
                                             std::vector<std::string>& texts) const
{
    const CTimeExpenseSummary& summary = static_cast<const CTimeExpenseSummary&>(row);
    const bool has = period < summary.m_timeCells.size();
    const CTinyElapsedTime elapsed = has ? summary.m_timeCells[period] : CTinyElapsedTime();
    const double amount = has ? summary.m_amountCells[period] : 0.0;
    texts.resize(2);
    texts[0] = elapsed.IsZero() ? std::string() : m_app.GetElapsedText(elapsed);
    if (use == TextUse::exportText)
    {
        if (texts[0].empty())
            texts[0] = "0";
        texts[1] = m_app.FormatNumber(amount);
    }
    else if (use == TextUse::html)
        texts[1] = m_app.FormatCurrency(amount); // zero included
    else
        texts[1] = amount == 0.0 ? std::string() : m_app.FormatCurrency(amount);
}

std::string CTimeExpenseSummaryOutput::RateText(const CSummaryRow& row, TextUse use) const
{
    // The HTML shows the rate as a plain number here; the page as money.
    if (use == TextUse::print)
        return row.GetRateText(m_app);
    return row.IsVariousRate() ? std::string("various") : m_app.FormatNumber(row.m_rate);
}

std::vector<std::string> CTimeExpenseSummaryOutput::EstimateTexts(const CTask& task, TextUse use) const
{
    // The exports write the cost estimate as a plain number, the page as money.
    std::string cost;
    if (use != TextUse::print)
        cost = m_app.FormatNumber(task.m_costEstimate);
    else if (task.m_costEstimate != 0.0)
        cost = m_app.FormatCurrency(task.m_costEstimate);
    return {EstimateHours(task), cost};
}

void CTimeExpenseSummaryOutput::WriteHtmlHeaderRows(CExportFile& file)
{
    if (Shown(0x1))
        file.WriteString("<TH NOWRAP>&nbsp</TH>");
    file.WriteString(std::string("<TH NOWRAP COLSPAN=") + (Shown(0x10) ? "2" : "1") + ">");
    file.WriteString(TimeFrameTitle());
    file.WriteString("</TH>");
    if (Shown(0x100))
        file.WriteString("<TH NOWRAP COLSPAN=2 ALIGN=CENTER>Estimate</TH>");
    for (size_t p = 0; p < m_periods.size(); ++p)
        file.WriteString("<TH NOWRAP COLSPAN=2 ALIGN=CENTER>" + PeriodTitle(p, TextUse::html) + "</TH>");
    file.WriteString("</TR>");

    file.WriteString("<TR>");
    if (Shown(0x1))
        file.WriteString("<TH NOWRAP>Task</TH>");
    file.WriteString("<TH NOWRAP>&nbsp</TH>");
    if (Shown(0x10))
        file.WriteString("<TH NOWRAP>Rate</TH>");
    if (Shown(0x100))
        file.WriteString("<TH NOWRAP>Time</TH><TH NOWRAP>Cost</TH>");
    for (size_t p = 0; p < m_periods.size(); ++p)
        file.WriteString("<TH NOWRAP>Time</TH><TH NOWRAP>Expense</TH>");
    file.WriteString("</TR>");
    file.WriteString("\n");
}

} // namespace reports
