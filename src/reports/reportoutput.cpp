#include "reports/reportoutput.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "platform/prompter.h"

#include <algorithm>
#include <cmath>
#include <mutex>

namespace reports
{

namespace
{
// OLE day 0 (30 December 1899) is 25569 days before 1 January 1970.
constexpr int64_t kOleEpochOffset = 25569;

int MarginToDevice(int margin, int measurementSystem, int dpi)
{
    if (measurementSystem == 1)
        return dpi * margin / 1000;
    const int pixelsPerMillimetre = static_cast<int>(dpi / 25.4);
    return pixelsPerMillimetre * margin / 100;
}
} // namespace

bool IdFilterIsAll(const std::vector<uint32_t>& ids) { return ids.size() == 1 && ids[0] == 0; }

bool IdFilterHas(const std::vector<uint32_t>& ids, uint32_t id)
{
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

DeviceMargins MarginsToDevice(int left, int top, int right, int bottom, int measurementSystem,
                              int dpiX, int dpiY)
{
    return DeviceMargins{MarginToDevice(left, measurementSystem, dpiX),
                         MarginToDevice(top, measurementSystem, dpiY),
                         MarginToDevice(right, measurementSystem, dpiX),
                         MarginToDevice(bottom, measurementSystem, dpiY)};
}

CReportOutput::CReportOutput(CReport& report, CTimeKeeperDoc& doc, CTimeKeeperApp& app)
    : m_report(report), m_doc(doc), m_app(app)
{
}

CReportOutput::~CReportOutput() = default;

bool CReportOutput::PrepareData()
{
    std::lock_guard<std::recursive_mutex> lock(m_doc.GetLock());
    // Gathering looks a task up for every entry: a flat index by id is cheaper
    // than the document's map and its lock each time.
    m_taskIndex.assign(m_doc.m_lastTaskId + 1, nullptr);
    for (const auto& [id, task] : m_doc.m_tasks)
    {
        if (id >= m_taskIndex.size())
            m_taskIndex.resize(id + 1, nullptr);
        m_taskIndex[id] = task.get();
    }
    return PrepareReportData();
}

const CDay* CReportOutput::FindDay(const CDateTime& day) const
{
    // The day key "%Y%m%d", made without the general date formatting: reports
    // look up every day of their range.
    int year = 0, month = 0, dayOfMonth = 0;
    CivilFromDays(static_cast<int64_t>(std::floor(day.GetValue())) - kOleEpochOffset, year, month, dayOfMonth);
    if (year < 0 || year > 9999)
        return nullptr;
    char key[9];
    const int parts[] = {year / 1000, year / 100 % 10, year / 10 % 10, year % 10,
                         month / 10,  month % 10,      dayOfMonth / 10, dayOfMonth % 10};
    for (int i = 0; i < 8; ++i)
        key[i] = static_cast<char>('0' + parts[i]);
    key[8] = '\0';
    const auto it = m_doc.m_days.find(std::string(key, 8));
    return it == m_doc.m_days.end() ? nullptr : it->second.get();
}

const CTask* CReportOutput::FindTask(uint32_t id) const
{
    return id < m_taskIndex.size() ? m_taskIndex[id] : nullptr;
}

bool CReportOutput::PrepareReportData() { return true; }

void CReportOutput::ReleaseReportData() {}

void CReportOutput::ResolveRange() { m_range = ResolveDateRange(m_report, m_doc, m_app); }

int CReportOutput::Print(Canvas& canvas)
{
    PreparePrinting(canvas);
    BeginPrinting(canvas);
    const int pages = PageCount(canvas);
    for (int page = 1; page <= pages; ++page)
    {
        canvas.StartPage();
        PrintPage(canvas, page);
        canvas.EndPage();
    }
    EndPrinting(canvas);
    return pages;
}

void CReportOutput::PreparePrinting(Canvas& canvas)
{
    m_orientationChanged = false;
    if (m_report.m_orientation == orientationDefault)
        return;
    // A printer that cannot tell its orientation keeps it.
    const int current = canvas.GetOrientation();
    if (current == orientationDefault)
        return;
    m_savedOrientation = current;
    canvas.SetOrientation(static_cast<int>(m_report.m_orientation));
    m_orientationChanged = true;
}

void CReportOutput::BeginPrinting(Canvas& canvas)
{
    PrepareData();

    int marginLeft = 0, marginTop = 0, marginRight = 0, marginBottom = 0;
    m_app.GetPageMargins(marginLeft, marginTop, marginRight, marginBottom);
    const DeviceMargins margins =
        MarginsToDevice(marginLeft, marginTop, marginRight, marginBottom, m_app.GetMeasurementSystem(),
                        canvas.DpiX(), canvas.DpiY());
    PrintMetrics& m = m_metrics;
    m = PrintMetrics{};
    m.left = margins.left - canvas.PhysicalOffsetX();
    m.top = margins.top - canvas.PhysicalOffsetY();
    m.pageWidth = canvas.DeviceWidth() + canvas.PhysicalOffsetX() - margins.right - m.left;
    m.pageHeight = canvas.DeviceHeight() + canvas.PhysicalOffsetY() - margins.bottom - m.top;

    const ReportFont& font = m_report.m_font;
    m.bodyFont.face = font.faceName;
    m.bodyFont.pointSize = font.PointSize();
    m.bodyFont.weight = font.weight;
    m.bodyFont.italic = font.italic != 0;
    m.titleFont = m.bodyFont;
    m.titleFont.weight = 700;
    m.lightPen = ((canvas.DpiY() + canvas.DpiX()) / 2) / 300;
    m.heavyPen = 5 * m.lightPen;

    canvas.SelectFont(m.bodyFont);
    const FontMetrics fm = canvas.GetFontMetrics();
    m.lineHeight = fm.height + fm.externalLeading;
    m.averageCharWidth = fm.averageCharWidth;
    m.maxCharWidth = fm.maxCharWidth;
    m.cellVerticalPadding = static_cast<int>(m.lineHeight * 0.15);
    m.cellHorizontalPadding = static_cast<int>(m.maxCharWidth * 0.35);

    Layout(canvas);
    const int row = m.lineHeight + 2 * m.cellVerticalPadding;
    m.rowsPerPage = row > 0 ? (m.pageHeight - 2 * (m.cellVerticalPadding + m.lineHeight)) / row : 0;
}

void CReportOutput::Layout(Canvas&) {}

int CReportOutput::PageCount(Canvas&) { return 0; }

void CReportOutput::PrintPage(Canvas& canvas, int page)
{
    PageHeader(canvas, page);
    PageBody(canvas, page);
    PageFooter(canvas, page);
}

void CReportOutput::PageHeader(Canvas&, int) {}

void CReportOutput::PageBody(Canvas&, int) {}

void CReportOutput::PageFooter(Canvas&, int) {}

void CReportOutput::EndPrinting(Canvas& canvas)
{
    if (m_orientationChanged)
        canvas.SetOrientation(m_savedOrientation);
    m_orientationChanged = false;
    ReleaseReportData();
}

void CReportOutput::Export(int format, std::string& out)
{
    CExportFile file;
    Export(format, file);
    out = file.Take();
}

void CReportOutput::Export(int format, CExportFile& file)
{
    PrepareData();
    if (format == formatHtml)
    {
        HtmlHead(file);
        HtmlTable(file);
        HtmlEnd(file);
    }
    else
    {
        ExportHead(file, format);
        ExportRows(file, format);
        ExportEnd(file, format);
    }
    ReleaseReportData();
    file.Flush();
}

void CReportOutput::ExportHead(CExportFile&, int) {}

void CReportOutput::ExportRows(CExportFile&, int) { ShowMessage("Export Unavailable"); }

void CReportOutput::ExportEnd(CExportFile&, int) {}

void CReportOutput::HtmlHead(CExportFile& file)
{
    file.WriteString("<!DOCTYPE HTML PUBLIC \"-//IETF//DTD HTML 3.2//EN\">");
    file.WriteString("\n");
    file.WriteString("<HTML>");
    file.WriteString("<HEAD>");
    file.WriteString("<meta name=\"GENERATOR\" content=\"Halvery Quorvane Time & Expense 1.30\">");
    file.WriteString("\n");
    // The texts are UTF-8; a browser must not guess another encoding.
    file.WriteString("<META HTTP-EQUIV=\"Content-Type\" CONTENT=\"text/html; charset=UTF-8\">");
    file.WriteString("\n");
    const std::string name = HtmlEscape(m_report.m_name);
    file.WriteString("<TITLE> " + name + "</TITLE>");
    file.WriteString("\n");
    file.WriteString("</HEAD><BODY>");
    file.WriteString("\n");
    file.WriteString("<H2>" + name + "</H2><BR>");
}

void CReportOutput::HtmlTable(CExportFile& file)
{
    file.WriteString("<H2>");
    file.WriteString("Export Unavailable");
    file.WriteString("</H2>");
}

void CReportOutput::HtmlEnd(CExportFile& file) { file.WriteString("</BODY></HTML>"); }

CellForm CReportOutput::GetCellForm(int format) const
{
    return MakeCellForm(format, m_app.GetListSeparator());
}

std::string CReportOutput::RootLevelName() const
{
    const CTask* root = m_doc.GetRootTask();
    return m_doc.GetLevelName(root ? root->m_level : 0);
}

std::string CReportOutput::RootTaskName() const
{
    const CTask* root = m_doc.GetRootTask();
    return root ? root->m_name : std::string();
}

void CReportOutput::DrawTitleLine(Canvas& canvas, int page)
{
    const PrintMetrics& m = m_metrics;
    canvas.SelectFont(m.titleFont);
    canvas.DrawText(m.left, m.top, m_report.m_name);
    const std::string pageText = "Page " + std::to_string(page);
    canvas.DrawText(m.left + m.pageWidth - canvas.TextWidth(pageText), m.top, pageText);
}

int CReportOutput::ColumnTitleTop() const
{
    return m_metrics.top + m_metrics.lineHeight + 2 * m_metrics.cellVerticalPadding;
}

void CReportOutput::ShowMessage(const std::string& text)
{
    if (m_prompter)
        m_prompter->ShowMessage(text, platform::Icon::information);
}

} // namespace reports
