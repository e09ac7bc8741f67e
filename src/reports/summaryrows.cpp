#include "reports/summaryrows.h"

#include "app/timekeeperapp.h"

namespace reports
{

void CSummaryRow::SetRate(double rate)
{
    if (rate == m_rate)
        return;
    m_rate = m_rate == 0.0 ? rate : kVariousRate;
}

std::string CSummaryRow::GetRateText(const CTimeKeeperApp& app) const
{
    return IsVariousRate() ? std::string("various") : app.FormatCurrency(m_rate);
}

void CSummary::AddTime(size_t period, const CTinyElapsedTime& elapsed)
{
    if (m_cells.size() <= period)
        m_cells.resize(period + 1);
    m_cells[period] += elapsed;
    m_empty = false;
}

void CExpenseSummary::AddAmount(size_t period, double amount)
{
    if (m_cells.size() <= period)
        m_cells.resize(period + 1, 0.0);
    m_cells[period] += amount;
    m_empty = false;
}

void CTimeExpenseSummary::AddPeriod()
{
    m_timeCells.emplace_back();
    m_costCells.push_back(0.0);
    m_amountCells.push_back(0.0);
    m_periodRates.push_back(0.0);
}

void CTimeExpenseSummary::AddPeriods(size_t count)
{
    const size_t size = m_timeCells.size() + count;
    m_timeCells.resize(size);
    m_costCells.resize(size, 0.0);
    m_amountCells.resize(size, 0.0);
    m_periodRates.resize(size, 0.0);
}

void CTimeExpenseSummary::Extend(size_t period)
{
    while (m_timeCells.size() <= period)
        AddPeriod();
}

void CTimeExpenseSummary::AddTime(size_t period, const CTinyElapsedTime& elapsed, double rate)
{
    if (elapsed.IsZero())
        return;
    Extend(period);
    m_timeCells[period] += elapsed;
    m_costCells[period] += rate * (elapsed.GetHours() + elapsed.GetMinutes() / 60.0);
    double& periodRate = m_periodRates[period];
    if (rate >= 0.0 && rate != periodRate)
        periodRate = periodRate == 0.0 ? rate : kMixedPeriodRate;
    m_empty = false;
}

void CTimeExpenseSummary::AddAmount(size_t period, double amount)
{
    Extend(period);
    m_amountCells[period] += amount;
    m_empty = false;
}

} // namespace reports
