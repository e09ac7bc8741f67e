#pragma once

#include "reports/detailoutput.h"

#include "model/tinytime.h"

#include <map>
#include <string>

namespace reports
{

// Time Detail: the time entries of the range, one per line, grouped by day, with
// the elapsed time (and billing amount) per day and in total.
class CTimeDetailOutput : public CDetailOutput
{
public:
    using CDetailOutput::CDetailOutput;

    void ExportHead(CExportFile& file, int format) override;
    void ExportRows(CExportFile& file, int format) override;
    void HtmlTable(CExportFile& file) override;

    // The running sums under a day key or "TOTAL"; zero when absent.
    CTinyElapsedTime GetTimeTotal(const std::string& key) const;
    double GetAmountTotal(const std::string& key) const;
    bool HasTotalsFor(const std::string& key) const { return m_timeTotals.count(key) != 0; }

protected:
    void Gather() override;
    void ClearTotals() override;
    std::vector<Column> PageColumns() const override;
    std::vector<std::string> PageCells(const Line& line) const override;
    std::vector<std::string> TextBlocks(const Line& line) const override;
    bool HasTotals() const override { return true; }
    std::string HtmlColumnTitle(const Column& column) const override;
    std::vector<std::string> TotalCells(const std::string& key) const override;

private:
    // Column count and leading count of the HTML table.
    int HtmlColumns() const;
    int HtmlLeading() const;
    // The activity's name, or "**Unassigned**" when the id resolves to nothing.
    std::string ActivityName(uint32_t id) const;

    std::map<std::string, CTinyElapsedTime> m_timeTotals;
    std::map<std::string, double> m_amountTotals;
    CTinyTime m_runningEnd;
};

} // namespace reports
