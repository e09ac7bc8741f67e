#pragma once

#include "model/reportdef.h"
#include "reports/bucket.h"
#include "reports/reportoutput.h"
#include "reports/summaryrows.h"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class CDay;
class CExpenseEntry;
class CTask;
class CTimeEntry;

namespace reports
{

// What the four summary kinds share: rows (tasks of a level, or groupings by
// activity, expense type, payment method or task ID text) by period columns,
// gathered day by day through the day index, exported one line per period and
// row, written as an HTML table and printed in pages of rows and period columns.
//
// Rates and amounts go into the delimited export as plain numbers (two decimals,
// the locale's decimal separator, no grouping); a rate elsewhere is money or
// "various". Rows without a task (TOTAL and the groupings) show no rate or estimate.
class CSummaryOutput : public CReportOutput
{
public:
    using CReportOutput::CReportOutput;

    bool PrepareReportData() override;
    void ReleaseReportData() override;
    void BeginPrinting(Canvas& canvas) override;
    void Layout(Canvas& canvas) override;
    int PageCount(Canvas& canvas) override;
    void PageHeader(Canvas& canvas, int page) override;
    void PageBody(Canvas& canvas, int page) override;
    void ExportHead(CExportFile& file, int format) override;
    void ExportRows(CExportFile& file, int format) override;
    void HtmlHead(CExportFile& file) override;
    void HtmlTable(CExportFile& file) override;
    void HtmlEnd(CExportFile& file) override;

    static constexpr int64_t kTotalKey = 0;

    const std::vector<CBucket>& Periods() const { return m_periods; }
    bool HasTotalPeriod() const { return m_hasTotalPeriod; }
    // Row keys in display order: task ids, 0 for TOTAL, negative for groupings.
    const std::vector<int64_t>& RowOrder() const { return m_order; }
    const CSummaryRow* GetRow(int64_t key) const;
    // "TOTAL", the task's name, the grouping's name or "**Unassigned**".
    std::string RowName(int64_t key) const;
    // The task ID text of a task row or of a task ID text row.
    std::string RowTaskIdText(int64_t key) const;
    // A row of the task ID grouping that stands for one text (it has no task).
    bool IsTaskIdTextRow(int64_t key) const;
    int GetTopDepth() const { return m_topDepth; }
    // The task ID texts of the task ID grouping and their rows' names, in row order.
    const std::vector<std::string>& TaskIdTexts() const { return m_taskIdTexts; }
    const std::vector<std::string>& TaskIdNames() const { return m_taskIdNames; }

    // Print geometry of the last BeginPrinting.
    int PeriodsPerPage() const { return m_periodsPerPage; }
    int RowPages() const { return m_rowPages; }
    int ColumnPages() const { return m_columnPages; }

protected:
    enum class TextUse
    {
        exportText,
        html,
        print,
    };

    virtual std::unique_ptr<CSummaryRow> NewRow() const = 0;
    // Called once before the days are gathered; takes the end of a running entry.
    virtual void BeginGather();
    // Adds the day's entries to the rows; `period` is the day's period index.
    virtual void GatherDay(const CDay& day, size_t period) = 0;
    // Titles of the values each period holds, in the delimited export.
    virtual std::vector<std::string> ValueTitles() const = 0;
    // Sub-column titles of a period on the printed page (none when a period has one value).
    virtual std::vector<std::string> PeriodSubTitles() const { return {}; }
    // The values of a row in a period, as the export, the HTML or the page shows them.
    virtual void GetCellTexts(const CSummaryRow& row, size_t period, TextUse use,
                              std::vector<std::string>& texts) const = 0;
    std::vector<std::string> CellTexts(const CSummaryRow& row, size_t period, TextUse use) const;
    virtual bool HasRateColumn() const { return true; }
    virtual std::string RateText(const CSummaryRow& row, TextUse use) const;
    // Export titles of the estimate columns, and the estimates of a task.
    virtual std::vector<std::string> EstimateTitles() const { return {"Estimate"}; }
    virtual std::vector<std::string> EstimateTexts(const CTask& task, TextUse use) const;
    // The opening tag of the HTML rate and estimate cells.
    virtual std::string HtmlValueCell() const { return "<TD NOWRAP>"; }
    // The HTML header row(s), after the table start.
    virtual void WriteHtmlHeaderRows(CExportFile& file);
    virtual bool Rollup() const { return m_report.m_rollup; }
    virtual bool ShowTotals() const { return m_report.m_showTotals; }
    virtual bool ShowEmptyRows() const { return m_report.m_showEmptyRows; }

    bool Shown(uint32_t mask) const { return m_report.TestField(mask); }
    bool IsGrouping() const { return m_report.m_summarizeLevel < 0; }
    // The task is one of the selected tasks or below one.
    bool IsCovered(const CTask* task) const;
    // The billing filter applies unless both billable and non-billable are included.
    bool BillingFilterActive() const;
    bool PassesBillingFilter(bool billable) const;
    bool PassesIdFilter(const std::vector<uint32_t>& ids, uint32_t id) const;
    // The entry's task when the entry passes the billing filter and the catalog
    // filters of its kind; none otherwise.
    const CTask* AcceptedTask(const CTimeEntry& entry) const;
    const CTask* AcceptedTask(const CExpenseEntry& entry) const;
    // The grouping row that an entry of `task` with the catalog record `catalogId`
    // (activity, expense type or payment method) joins.
    int64_t GroupRowKey(const CTask* task, uint32_t catalogId) const;
    // The rows that count one entry: the grouping row, or the rows met walking up
    // from its task (all of them with rollup, else the first), and TOTAL. Each row
    // adds the entry to the period's cell and to the total column's; only `setRate`
    // rows take the entry's rate. Rows met on the walk are marked not empty here.
    struct Target
    {
        CSummaryRow* row;
        bool setRate;
    };
    const std::vector<Target>& FindTargets(const CTask* task, int64_t groupKey);
    // The index of the total column; meaningful when HasTotalPeriod().
    size_t TotalPeriod() const { return m_periods.size() - 1; }

    // The task of a row, if it has one (task rows and task ID text rows).
    const CTask* RowTask(int64_t key) const;
    std::string TimeFrameTitle() const;
    std::string PeriodTitle(size_t period, TextUse use) const;
    std::string HtmlRowName(int64_t key) const;
    std::string EstimateHours(const CTask& task) const;

    std::unordered_map<int64_t, std::unique_ptr<CSummaryRow>> m_rows;
    std::vector<int64_t> m_order;
    std::vector<CBucket> m_periods;
    bool m_hasTotalPeriod = false;
    CTinyTime m_runningEnd;

private:
    void BuildTaskRows();
    void BuildCatalogRows();
    void BuildTaskIdRows();
    void AddSelectedTaskRow();
    CSummaryRow* CreateRow(int64_t key, const CTask* task);
    void BuildPeriods();
    void Gather();
    void BuildTreeOrder();
    void RemoveEmptyRows();
    void ComputeTopDepth();
    int NameIndent(int64_t key) const;
    bool IsBoldRow(int64_t key) const;

    std::unordered_map<uint32_t, int> m_inclusion;
    // While gathering: inclusion and row of each task, indexed by task id.
    std::vector<int8_t> m_taskInclusion;
    std::vector<CSummaryRow*> m_taskRows;
    CSummaryRow* m_totalRow = nullptr;
    std::vector<Target> m_targets;
    std::unordered_map<int64_t, std::string> m_groupNames;
    std::unordered_map<std::string, int64_t> m_textKeys; // lower-case task ID text to row key
    std::vector<std::string> m_taskIdTexts;
    std::vector<std::string> m_taskIdNames;
    std::vector<const CTask*> m_selected;
    int64_t m_unassignedKey = 0;
    int m_topDepth = 0;

    // Print layout.
    struct PrintColumn
    {
        enum Kind
        {
            taskId,
            name,
            rate,
            estimate,
        } kind;
        int width = 0;
    };
    std::vector<PrintColumn> m_fixedColumns;
    int m_subColumnWidth = 0;
    int m_periodsPerPage = 1;
    int m_rowPages = 1;
    int m_columnPages = 1;
    int m_headerRows = 1;
    int m_estimateSubWidth = 0;
};

} // namespace reports
