#pragma once

#include "reports/summaryoutput.h"

namespace reports
{

// Billing Summary: the billing amounts of the time entries per row and period.
class CBillingSummaryOutput : public CSummaryOutput
{
public:
    using CSummaryOutput::CSummaryOutput;

protected:
    std::unique_ptr<CSummaryRow> NewRow() const override { return std::make_unique<CTimeExpenseSummary>(); }
    void GatherDay(const CDay& day, size_t period) override;
    std::vector<std::string> ValueTitles() const override { return {"Billing"}; }
    void GetCellTexts(const CSummaryRow& row, size_t period, TextUse use,
                      std::vector<std::string>& texts) const override;
};

} // namespace reports
