#pragma once

#include "reports/detailoutput.h"

#include "model/datetime.h"

class CToDoEntry;

namespace reports
{

// To Do Detail: the outstanding to-dos first, then the completed ones by the day
// of their completion, each group in the order of the shown sort fields.
class CToDoDetailOutput : public CDetailOutput
{
public:
    using CDetailOutput::CDetailOutput;

    void ExportHead(CExportFile& file, int format) override;
    void ExportRows(CExportFile& file, int format) override;
    void HtmlTable(CExportFile& file) override;

protected:
    void Gather() override;
    std::vector<Column> PageColumns() const override;
    std::vector<std::string> PageCells(const Line& line) const override;
    std::vector<std::string> TextBlocks(const Line& line) const override;
    bool HasTotals() const override { return false; }

private:
    bool Accepts(const CToDoEntry& todo, const CTask* task) const;
    // True when `n` sorts before `e` within a group.
    bool SortsBefore(const Line& n, const Line& e) const;
    void InsertSorted(std::vector<Line>& group, Line line) const;
    CDateTime CompleteDate(const Line& line) const;
    std::string DateText(const CDateTime& date) const;

    CDateTime m_today;
};

} // namespace reports
