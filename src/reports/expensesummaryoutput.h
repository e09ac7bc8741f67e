#pragma once

#include "reports/summaryoutput.h"

namespace reports
{

// Expense Summary: the sum of the expense amounts per row and period, shown as
// plain numbers; no rate column, and the cost estimate as the estimate.
class CExpenseSummaryOutput : public CSummaryOutput
{
public:
    using CSummaryOutput::CSummaryOutput;

protected:
    std::unique_ptr<CSummaryRow> NewRow() const override { return std::make_unique<CExpenseSummary>(); }
    void GatherDay(const CDay& day, size_t period) override;
    std::vector<std::string> ValueTitles() const override { return {"Amount"}; }
    void GetCellTexts(const CSummaryRow& row, size_t period, TextUse use,
                      std::vector<std::string>& texts) const override;
    bool HasRateColumn() const override { return false; }
    std::vector<std::string> EstimateTexts(const CTask& task, TextUse use) const override;
};

} // namespace reports
