#pragma once

#include "reports/summaryoutput.h"

namespace reports
{

// Time Summary: the elapsed time of the time entries per row and period.
class CTimeSummaryOutput : public CSummaryOutput
{
public:
    using CSummaryOutput::CSummaryOutput;

protected:
    std::unique_ptr<CSummaryRow> NewRow() const override { return std::make_unique<CSummary>(); }
    void GatherDay(const CDay& day, size_t period) override;
    std::vector<std::string> ValueTitles() const override { return {"Time"}; }
    void GetCellTexts(const CSummaryRow& row, size_t period, TextUse use,
                      std::vector<std::string>& texts) const override;
};

} // namespace reports
