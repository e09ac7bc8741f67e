#pragma once

#include "reports/summaryoutput.h"

namespace reports
{

// Time and Expense Summary: per row and period the elapsed time of the time entries
// and the sum of the expense amounts; the rows also add up the cost of the time.
// The invoice is built on its gathering.
class CTimeExpenseSummaryOutput : public CSummaryOutput
{
public:
    using CSummaryOutput::CSummaryOutput;

protected:
    std::unique_ptr<CSummaryRow> NewRow() const override { return std::make_unique<CTimeExpenseSummary>(); }
    void GatherDay(const CDay& day, size_t period) override;
    std::vector<std::string> ValueTitles() const override { return {"Time", "Expense"}; }
    std::vector<std::string> PeriodSubTitles() const override { return {"Time", "Expense"}; }
    void GetCellTexts(const CSummaryRow& row, size_t period, TextUse use,
                      std::vector<std::string>& texts) const override;
    std::string RateText(const CSummaryRow& row, TextUse use) const override;
    std::vector<std::string> EstimateTitles() const override { return {"TimeEstimate", "CostEstimate"}; }
    std::vector<std::string> EstimateTexts(const CTask& task, TextUse use) const override;
    void WriteHtmlHeaderRows(CExportFile& file) override;
    // Every value after the name is right-aligned in the HTML.
    std::string HtmlValueCell() const override { return "<TD ALIGN=RIGHT>"; }
};

} // namespace reports
