#pragma once

#include "reports/detailoutput.h"

#include <map>
#include <string>

class CExpenseEntry;

namespace reports
{

// Expense Detail: the expense entries of the range, one per line, grouped by day,
// with the amount per day and in total.
class CExpenseDetailOutput : public CDetailOutput
{
public:
    using CDetailOutput::CDetailOutput;

    void ExportHead(CExportFile& file, int format) override;
    void ExportRows(CExportFile& file, int format) override;
    void HtmlTable(CExportFile& file) override;

    // The sum under a day key or "TOTAL"; zero when absent.
    double GetAmountTotal(const std::string& key) const;

protected:
    void Gather() override;
    void ClearTotals() override { m_amountTotals.clear(); }
    std::vector<Column> PageColumns() const override;
    std::vector<std::string> PageCells(const Line& line) const override;
    std::vector<std::string> TextBlocks(const Line& line) const override;
    bool HasTotals() const override { return true; }
    std::vector<std::string> TotalCells(const std::string& key) const override;

private:
    int HtmlColumns() const;
    // The record's name, or "**Unassigned**" when the id resolves to nothing.
    std::string ExpenseTypeName(const CExpenseEntry& entry) const;
    std::string PaymentMethodName(const CExpenseEntry& entry) const;
    // The distance and the rate per distance unit of a mileage expense, as plain
    // numbers or money; empty for other expenses.
    std::string DistanceText(const CExpenseEntry& entry) const;
    std::string MileageRateText(const CExpenseEntry& entry, bool money) const;

    std::map<std::string, double> m_amountTotals;
};

} // namespace reports
