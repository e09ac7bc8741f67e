#pragma once

#include "model/tinytime.h"

#include <string>
#include <vector>

class CTask;
class CTimeKeeperApp;

namespace reports
{

// What every summary row keeps: whether anything was seen for it and the task it
// stands for (none for the TOTAL and the grouping rows).
class CSummaryRow
{
public:
    // Rates met that differ are kept as this sentinel and shown as "various".
    static constexpr double kVariousRate = 0.00001;

    virtual ~CSummaryRow() = default;
    // Appends a zero cell for one more period.
    virtual void AddPeriod() = 0;
    // Appends zero cells for `count` periods at once.
    virtual void AddPeriods(size_t count) = 0;

    // Unchanged when equal, taken when none was set, else "various".
    void SetRate(double rate);
    bool IsVariousRate() const { return m_rate == kVariousRate; }
    // "various", or the rate as money.
    std::string GetRateText(const CTimeKeeperApp& app) const;

    bool m_empty = true;
    double m_rate = 0.0;
    const CTask* m_task = nullptr;
};

// A row of the Time Summary: elapsed time per period.
class CSummary : public CSummaryRow
{
public:
    void AddPeriod() override { m_cells.emplace_back(); }
    void AddPeriods(size_t count) override { m_cells.resize(m_cells.size() + count); }
    void AddTime(size_t period, const CTinyElapsedTime& elapsed);

    std::vector<CTinyElapsedTime> m_cells;
};

// A row of the Expense Summary: the sum of the expense amounts per period.
class CExpenseSummary : public CSummaryRow
{
public:
    void AddPeriod() override { m_cells.push_back(0.0); }
    void AddPeriods(size_t count) override { m_cells.resize(m_cells.size() + count, 0.0); }
    void AddAmount(size_t period, double amount);

    std::vector<double> m_cells;
};

// A row of the Time and Expense Summary, the Billing Summary and the invoice:
// elapsed time, its cost and amounts per period, and the rate of each period.
class CTimeExpenseSummary : public CSummaryRow
{
public:
    // The period rate of a period whose time entries had different rates.
    static constexpr double kMixedPeriodRate = -1.0;

    void AddPeriod() override;
    void AddPeriods(size_t count) override;
    // Nothing for a zero time; else time, cost (rate times hours) and period rate.
    void AddTime(size_t period, const CTinyElapsedTime& elapsed, double rate);
    void AddAmount(size_t period, double amount);

    std::vector<CTinyElapsedTime> m_timeCells;
    std::vector<double> m_costCells;
    std::vector<double> m_amountCells;
    std::vector<double> m_periodRates;

private:
    void Extend(size_t period);
};

} // namespace reports
