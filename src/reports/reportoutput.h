#pragma once

#include "reports/canvas.h"
#include "reports/daterange.h"
#include "reports/exportfile.h"

#include <cstdint>
#include <string>
#include <vector>

class CDay;
class CReport;
class CTask;
class CTimeKeeperDoc;
class CTimeKeeperApp;

namespace platform
{
class Prompter;
}

namespace reports
{

// Page margins in device units.
struct DeviceMargins
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

// Geometry, fonts and pens of one print run, from BeginPrinting to EndPrinting.
struct PrintMetrics
{
    int left = 0;
    int top = 0;
    int pageWidth = 0;
    int pageHeight = 0;
    int lineHeight = 0;
    int averageCharWidth = 0;
    int maxCharWidth = 0;
    int cellVerticalPadding = 0;
    int cellHorizontalPadding = 0;
    int rowsPerPage = 0;
    FontRequest bodyFont;
    FontRequest titleFont;
    int lightPen = 0;
    int heavyPen = 0;

    // One table row: a line and its padding above and below.
    int RowHeight() const { return lineHeight + 2 * cellVerticalPadding; }
};

// True when an id filter (activities, expense types, payment methods) lets
// everything through: it holds exactly one 0.
bool IdFilterIsAll(const std::vector<uint32_t>& ids);
bool IdFilterHas(const std::vector<uint32_t>& ids, uint32_t id);

// Margins from the settings ("PageMarginLeft" ...), in thousandths of an inch for
// the U.S. measurement system and hundredths of a millimetre for the metric one,
// turned into device units of the given resolution.
DeviceMargins MarginsToDevice(int left, int top, int right, int bottom, int measurementSystem,
                              int dpiX, int dpiY);

// The output of one report definition: gathering its data, printing it page by
// page on a canvas and exporting it. Every kind derives from this frame and fills
// in the steps that depend on its rows and columns; the frame itself exports
// nothing ("Export Unavailable").
class CReportOutput
{
public:
    CReportOutput(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app);
    virtual ~CReportOutput();
    CReportOutput(const CReportOutput&) = delete;
    CReportOutput& operator=(const CReportOutput&) = delete;

    CReport& GetReport() const { return m_report; }
    CTimeKeeperDoc& GetDocument() const { return m_doc; }
    CTimeKeeperApp& GetApp() const { return m_app; }

    // Where the frame shows its messages; without one they are dropped.
    void SetPrompter(platform::Prompter* prompter) { m_prompter = prompter; }

    // Gathers the report data while holding the document lock.
    bool PrepareData();
    virtual bool PrepareReportData();
    virtual void ReleaseReportData();

    // A whole print run on `canvas`: orientation, metrics, every page, clean-up.
    // Returns the number of pages printed.
    int Print(Canvas& canvas);
    // The steps of a print run, for callers that drive pages themselves (preview).
    void PreparePrinting(Canvas& canvas);
    virtual void BeginPrinting(Canvas& canvas);
    virtual void Layout(Canvas& canvas);
    virtual int PageCount(Canvas& canvas);
    void PrintPage(Canvas& canvas, int page);
    virtual void PageHeader(Canvas& canvas, int page);
    virtual void PageBody(Canvas& canvas, int page);
    virtual void PageFooter(Canvas& canvas, int page);
    virtual void EndPrinting(Canvas& canvas);

    // A whole export in `format` (formatCsv, formatHtml, formatTab) into `file`:
    // prepares the data, writes the steps of the format, releases the data.
    void Export(int format, CExportFile& file);
    void Export(int format, std::string& out);
    virtual void ExportHead(CExportFile& file, int format);
    virtual void ExportRows(CExportFile& file, int format);
    virtual void ExportEnd(CExportFile& file, int format);
    virtual void HtmlHead(CExportFile& file);
    virtual void HtmlTable(CExportFile& file);
    virtual void HtmlEnd(CExportFile& file);

    const PrintMetrics& GetMetrics() const { return m_metrics; }
    const DateRange& GetRange() const { return m_range; }

protected:
    // The report's dates as of now; kinds call it when they gather.
    void ResolveRange();
    CellForm GetCellForm(int format) const;
    // The name of the root task's level: the first header cell of every export.
    std::string RootLevelName() const;
    std::string RootTaskName() const;
    // The report name on the left and "Page %d" on the right of the top line.
    void DrawTitleLine(Canvas& canvas, int page);
    // The top of the column titles, one line and two paddings below the top margin.
    int ColumnTitleTop() const;
    void ShowMessage(const std::string& text);
    // The task of an id, from an index made when the data were prepared.
    const CTask* FindTask(uint32_t id) const;
    // The day record of a date at 00:00, looked up by its day key (the lock is held).
    const CDay* FindDay(const CDateTime& day) const;

    CReport& m_report;
    CTimeKeeperDoc& m_doc;
    CTimeKeeperApp& m_app;
    platform::Prompter* m_prompter = nullptr;
    PrintMetrics m_metrics;
    DateRange m_range;
    std::vector<const CTask*> m_taskIndex;
    int m_savedOrientation = orientationDefault;
    bool m_orientationChanged = false;
};

} // namespace reports
