#include "reports/detailoutput.h"

#include "model/timekeeperdoc.h"

#include <algorithm>

namespace reports
{

namespace
{
bool IsLineBreak(char c) { return c == '\r' || c == '\n'; }

// Length of the UTF-8 character that starts at `pos`.
size_t CharLength(std::string_view text, size_t pos)
{
    size_t n = 1;
    while (pos + n < text.size() && (static_cast<unsigned char>(text[pos + n]) & 0xC0) == 0x80)
        ++n;
    return n;
}

// Cuts the text, character by character from its end, until it and "..." fit.
std::string ShortenToFit(const Canvas& canvas, const std::string& text, int width)
{
    if (canvas.TextWidth(text) <= width)
        return text;
    std::string cut = text;
    while (!cut.empty() && canvas.TextWidth(cut + "...") > width)
    {
        size_t start = cut.size() - 1;
        while (start > 0 && (static_cast<unsigned char>(cut[start]) & 0xC0) == 0x80)
            --start;
        cut.erase(start);
    }
    return cut + "...";
}
} // namespace

std::vector<std::string> WrapText(std::string_view text, int width,
                                  const std::function<int(std::string_view)>& measure)
{
    std::vector<std::string> lines;
    size_t pos = 0;
    const size_t n = text.size();
    while (pos < n)
    {
        while (pos < n && text[pos] == ' ')
            ++pos;
        if (pos >= n)
            break;
        std::string line;
        while (pos < n)
        {
            if (IsLineBreak(text[pos]))
            {
                if (text[pos] == '\r' && pos + 1 < n && text[pos + 1] == '\n')
                    ++pos;
                ++pos;
                break;
            }
            size_t end = pos;
            while (end < n && text[end] != ' ' && text[end] != '-' && !IsLineBreak(text[end]))
                ++end;
            if (end < n && (text[end] == ' ' || text[end] == '-'))
                ++end;
            const std::string_view word = text.substr(pos, end - pos);
            if (measure(line + std::string(word)) <= width)
            {
                line += word;
                pos = end;
                continue;
            }
            if (line.empty())
            {
                // Not even one word fits: fill the line character by character,
                // at least one so that the text always moves on.
                do
                {
                    const size_t len = CharLength(text, pos);
                    line += text.substr(pos, len);
                    pos += len;
                } while (pos < n && !IsLineBreak(text[pos]) &&
                         measure(line + std::string(text.substr(pos, CharLength(text, pos)))) <= width);
            }
            break;
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

bool CDetailOutput::PrepareReportData()
{
    ReleaseReportData();
    ResolveRange();
    Gather();
    return true;
}

void CDetailOutput::ReleaseReportData()
{
    m_lines.clear();
    m_blocks.clear();
    m_pageStarts.clear();
    m_totalOnOwnPage = false;
    ClearTotals();
}

bool CDetailOutput::Shown(uint32_t mask) const { return m_report.TestField(mask); }

bool CDetailOutput::OpensGroup(size_t i) const
{
    return i == 0 || m_lines[i].groupKey != m_lines[i - 1].groupKey;
}

bool CDetailOutput::ClosesGroup(size_t i) const
{
    return i + 1 == m_lines.size() || m_lines[i].groupKey != m_lines[i + 1].groupKey;
}

bool CDetailOutput::TaskMatches(const CTask* task) const
{
    if (!task)
        return false;
    for (uint32_t id : m_report.m_selectedTasks)
    {
        if (task->m_id == id)
            return true;
        if (!m_report.m_selectedTasksOnly)
        {
            const CTask* selected = FindTask(id);
            if (selected && task->IsSelfOrDescendantOf(selected))
                return true;
        }
    }
    return false;
}

std::string CDetailOutput::TaskDescription(const CTask* task) const
{
    return task ? m_doc.GetTaskPath(task) : std::string();
}

std::string CDetailOutput::HtmlValue(const std::string& value)
{
    return value.empty() ? std::string("&nbsp") : value;
}

std::string CDetailOutput::FlattenNote(const std::string& note)
{
    std::string out;
    out.reserve(note.size());
    for (size_t i = 0; i < note.size(); ++i)
    {
        if (note[i] == '\r')
        {
            out += ' ';
            if (i + 1 < note.size())
                ++i;
        }
        else if (note[i] == '\n')
            out += ' ';
        else
            out += note[i];
    }
    return out;
}

void CDetailOutput::WriteHtmlHeading(CExportFile& file, int columns, const std::string& heading)
{
    file.WriteString("<TR>");
    file.WriteString("<TD ALIGN=LEFT COLSPAN=" + std::to_string(columns) + ">");
    file.WriteString(HtmlEscape(heading));
    file.WriteString("</TD>");
    file.WriteString("</TR>");
}

void CDetailOutput::WriteHtmlSpanRow(CExportFile& file, int leading, int columns, const std::string& text)
{
    file.WriteString("<TR>");
    for (int i = 0; i < leading; ++i)
        file.WriteString("<TD>&nbsp</TD>");
    file.WriteString("<TD COLSPAN=" + std::to_string(columns - leading) + ">");
    file.WriteString(HtmlEscape(text));
    file.WriteString("</TD>");
    file.WriteString("</TR>");
    file.WriteString("\n");
}

void CDetailOutput::WriteHtmlSpacer(CExportFile& file, int columns)
{
    file.WriteString("<TR>");
    file.WriteString("<TD COLSPAN=" + std::to_string(columns) + ">&nbsp</TD>");
    file.WriteString("</TR>");
    file.WriteString("\n");
}

void CDetailOutput::WriteHtmlTableStart(CExportFile& file, const std::vector<std::string>& headerCells)
{
    file.WriteString("<TABLE BORDER=1 CELLPADDING=2>");
    file.WriteString("\n");
    file.WriteString("<TR>");
    file.WriteString("\n");
    for (const std::string& cell : headerCells)
        file.WriteString("<TH NOWRAP>" + cell + "</TH>");
    file.WriteString("</TR>");
    file.WriteString("\n");
}

void CDetailOutput::WriteHtmlCell(CExportFile& file, const char* open, const std::string& value)
{
    file.WriteString(open);
    file.WriteString(HtmlValue(HtmlEscape(value)));
    file.WriteString("</TD>");
}

namespace
{
void WriteRightAligned(CExportFile& file, const std::vector<std::string>& values)
{
    file.WriteString("<TD ALIGN=RIGHT>");
    for (size_t i = 0; i < values.size(); ++i)
    {
        if (i > 0)
            file.WriteString("</TD> <TD ALIGN=RIGHT>");
        file.WriteString(values[i]);
    }
    file.WriteString("</TD>");
    file.WriteString("</TR>");
    file.WriteString("\n");
}
} // namespace

void CDetailOutput::WriteHtmlSubtotal(CExportFile& file, int span, const std::vector<std::string>& values)
{
    file.WriteString("<TR>");
    file.WriteString("<TD COLSPAN=" + std::to_string(span) + ">&nbsp</TD> ");
    WriteRightAligned(file, values);
}

void CDetailOutput::WriteHtmlTotal(CExportFile& file, int columns, int span, const std::vector<std::string>& values)
{
    WriteHtmlSpacer(file, columns);
    file.WriteString("<TR>");
    file.WriteString("<TD ALIGN=LEFT COLSPAN=" + std::to_string(span) + ">");
    file.WriteString("TOTAL");
    file.WriteString("</TD>");
    WriteRightAligned(file, values);
}

void CDetailOutput::HtmlHead(CExportFile& file)
{
    CReportOutput::HtmlHead(file);
    std::vector<std::string> header;
    for (const Column& column : PageColumns())
        header.push_back(HtmlColumnTitle(column));
    WriteHtmlTableStart(file, header);
}

std::vector<std::string> CDetailOutput::TotalCells(const std::string&) const { return {}; }

int CDetailOutput::HorizontalPadding() const { return m_metrics.maxCharWidth / 2; }

int CDetailOutput::TextBlockHeight(const std::vector<std::string>& lines) const
{
    return static_cast<int>(lines.size()) * m_metrics.lineHeight + 2 * m_metrics.cellVerticalPadding;
}

void CDetailOutput::Layout(Canvas& canvas)
{
    PrintMetrics& m = m_metrics;
    m_padding = HorizontalPadding();
    m.cellHorizontalPadding = m_padding;
    canvas.SelectFont(m.bodyFont);

    m_columns = PageColumns();
    std::vector<int> widest(m_columns.size(), 0);
    auto measure = [&](const std::vector<std::string>& cells) {
        for (size_t c = 0; c < cells.size() && c < widest.size(); ++c)
            widest[c] = std::max(widest[c], canvas.TextWidth(cells[c]));
    };
    for (size_t c = 0; c < m_columns.size(); ++c)
        widest[c] = canvas.TextWidth(m_columns[c].title);
    for (size_t i = 0; i < m_lines.size(); ++i)
    {
        measure(PageCells(m_lines[i]));
        if (HasTotals() && ClosesGroup(i))
            measure(TotalCells(m_lines[i].groupKey));
    }
    if (HasTotals() && !m_lines.empty())
        measure(TotalCells(kTotalKey));
    for (size_t c = 0; c < m_columns.size(); ++c)
    {
        if (m_columns[c].shareGroup == 0)
            continue;
        for (size_t k = 0; k < m_columns.size(); ++k)
            if (m_columns[k].shareGroup == m_columns[c].shareGroup)
                widest[c] = std::max(widest[c], widest[k]);
    }

    int fixed = 0;
    for (size_t c = 0; c < m_columns.size(); ++c)
    {
        if (m_columns[c].description)
            continue;
        m_columns[c].width = widest[c] + 2 * m_padding;
        fixed += m_columns[c].width;
    }
    int x = m.left;
    int beforeDescription = 0;
    bool seenDescription = false;
    for (Column& column : m_columns)
    {
        if (column.description)
        {
            column.width = std::max(0, m.pageWidth - fixed);
            seenDescription = true;
            m_noteX = x;
        }
        else if (!seenDescription)
            beforeDescription += column.width;
        column.x = x;
        x += column.width;
    }
    m_noteWidth = m.pageWidth - beforeDescription;

    const int wrapWidth = m_noteWidth - 2 * m_padding;
    auto textWidth = [&canvas](std::string_view s) { return canvas.TextWidth(s); };
    m_blocks.assign(m_lines.size(), {});
    for (size_t i = 0; i < m_lines.size(); ++i)
        for (const std::string& text : TextBlocks(m_lines[i]))
            if (!text.empty())
                m_blocks[i].push_back(WrapText(text, wrapWidth, textWidth));

    // Pagination: the title line and the column titles take one line and one row
    // at the top of every page.
    m_pageStarts.clear();
    m_totalOnOwnPage = false;
    if (m_lines.empty())
        return;
    const int row = RowHeight();
    const int pageTop = m.lineHeight + row;
    int running = pageTop;
    m_pageStarts.push_back(0);
    for (size_t i = 0; i < m_lines.size(); ++i)
    {
        int height = row;
        if (OpensGroup(i))
            height += 2 * row;
        for (const auto& block : m_blocks[i])
            height += TextBlockHeight(block);
        if (HasTotals() && ClosesGroup(i))
            height += row;
        if (running + height > m.pageHeight && i != m_pageStarts.back())
        {
            m_pageStarts.push_back(i);
            running = pageTop;
        }
        running += height;
    }
    m_totalOnOwnPage = HasTotals() && running + 2 * row > m.pageHeight;
}

int CDetailOutput::PageCount(Canvas&)
{
    const int pages = static_cast<int>(m_pageStarts.size()) + (m_totalOnOwnPage ? 1 : 0);
    return std::max(1, pages);
}

void CDetailOutput::DrawCells(Canvas& canvas, const std::vector<std::string>& cells, int y, bool shorten)
{
    for (size_t c = 0; c < cells.size() && c < m_columns.size(); ++c)
    {
        const Column& column = m_columns[c];
        if (cells[c].empty())
            continue;
        const int inner = column.width - 2 * m_padding;
        const std::string text = column.description && shorten ? ShortenToFit(canvas, cells[c], inner)
                                                               : cells[c];
        const int width = canvas.TextWidth(text);
        int x = column.x + m_padding;
        if (column.align == Align::right)
            x = column.x + column.width - m_padding - width;
        else if (column.align == Align::center)
            x = column.x + (column.width - width) / 2;
        canvas.DrawText(x, y, text);
    }
}

void CDetailOutput::PageHeader(Canvas& canvas, int page)
{
    DrawTitleLine(canvas, page);
    const PrintMetrics& m = m_metrics;
    canvas.SelectFont(m.titleFont);
    std::vector<std::string> titles;
    for (const Column& column : m_columns)
        titles.push_back(column.title);
    DrawCells(canvas, titles, ColumnTitleTop(), false);
    const int y = m.top + m.lineHeight + RowHeight();
    canvas.DrawLine(m.left, y, m.left + m.pageWidth, y, m.heavyPen);
}

void CDetailOutput::PageBody(Canvas& canvas, int page)
{
    const PrintMetrics& m = m_metrics;
    const int row = RowHeight();
    const size_t index = static_cast<size_t>(page - 1);
    const size_t begin = index < m_pageStarts.size() ? m_pageStarts[index] : m_lines.size();
    const size_t end = index + 1 < m_pageStarts.size() ? m_pageStarts[index + 1] : m_lines.size();
    int y = m.top + m.lineHeight + row;

    for (size_t i = begin; i < end; ++i)
    {
        const Line& line = m_lines[i];
        if (OpensGroup(i))
        {
            if (i != begin)
                y += row;
            canvas.SelectFont(m.titleFont);
            canvas.DrawText(m.left + m_padding, y + m.cellVerticalPadding, line.heading);
            y += row;
            canvas.DrawLine(m.left, y, m.left + m.pageWidth, y, m.lightPen);
        }
        canvas.SelectFont(m.bodyFont);
        DrawCells(canvas, PageCells(line), y + m.cellVerticalPadding, true);
        y += row;
        if (i < m_blocks.size())
        {
            for (const auto& block : m_blocks[i])
            {
                y += m.cellVerticalPadding;
                for (const std::string& text : block)
                {
                    canvas.DrawText(m_noteX + m_padding, y, text);
                    y += m.lineHeight;
                }
                y += m.cellVerticalPadding;
            }
        }
        if (HasTotals() && ClosesGroup(i))
        {
            const std::vector<std::string> cells = TotalCells(line.groupKey);
            int from = m.left + m.pageWidth;
            for (size_t c = 0; c < cells.size() && c < m_columns.size(); ++c)
                if (!cells[c].empty())
                    from = std::min(from, m_columns[c].x);
            canvas.DrawLine(from, y, m.left + m.pageWidth, y, m.lightPen);
            DrawCells(canvas, cells, y + m.cellVerticalPadding, false);
            y += row;
        }
    }

    if (page == PageCount(canvas) && HasTotals() && !m_lines.empty())
    {
        if (begin != end)
            y += row;
        canvas.DrawLine(m.left, y, m.left + m.pageWidth, y, m.lightPen);
        canvas.SelectFont(m.titleFont);
        canvas.DrawText(m.left + m_padding, y + m.cellVerticalPadding, "TOTAL");
        DrawCells(canvas, TotalCells(kTotalKey), y + m.cellVerticalPadding, false);
    }
}

} // namespace reports
