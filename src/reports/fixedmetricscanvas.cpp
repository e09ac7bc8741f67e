#include "reports/fixedmetricscanvas.h"

#include <algorithm>
#include <map>
#include <utility>

namespace reports
{

namespace
{
bool IsContinuationByte(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// The text split into its UTF-8 characters.
std::vector<std::string> SplitChars(std::string_view text)
{
    std::vector<std::string> chars;
    for (size_t i = 0; i < text.size();)
    {
        size_t n = 1;
        while (i + n < text.size() && IsContinuationByte(text[i + n]))
            ++n;
        chars.emplace_back(text.substr(i, n));
        i += n;
    }
    return chars;
}

bool IsLandscape(int orientation) { return orientation == orientationLandscape; }

void Put(std::vector<std::string>& cells, size_t column, const std::string& ch)
{
    if (cells.size() <= column)
        cells.resize(column + 1, " ");
    cells[column] = ch;
}
} // namespace

size_t FixedMetricsCanvas::CharCount(std::string_view text)
{
    size_t n = 0;
    for (char c : text)
        n += IsContinuationByte(c) ? 0 : 1;
    return n;
}

int FixedMetricsCanvas::DeviceWidth() const
{
    return IsLandscape(m_options.orientation) ? m_options.deviceHeight : m_options.deviceWidth;
}

int FixedMetricsCanvas::DeviceHeight() const
{
    return IsLandscape(m_options.orientation) ? m_options.deviceWidth : m_options.deviceHeight;
}

void FixedMetricsCanvas::SetOrientation(int orientation)
{
    if (orientation == orientationPortrait || orientation == orientationLandscape)
        m_options.orientation = orientation;
}

FontMetrics FixedMetricsCanvas::GetFontMetrics() const
{
    FontMetrics m;
    m.height = m_options.fontHeight;
    m.externalLeading = m_options.externalLeading;
    m.averageCharWidth = m_options.charWidth;
    m.maxCharWidth = m_options.maxCharWidth;
    return m;
}

TextSize FixedMetricsCanvas::GetTextExtent(std::string_view text) const
{
    return TextSize{static_cast<int>(CharCount(text)) * m_options.charWidth, m_options.fontHeight};
}

FixedMetricsCanvas::Page& FixedMetricsCanvas::CurrentPage()
{
    // Drawing before the first StartPage still lands somewhere visible.
    if (m_pages.empty())
        m_pages.emplace_back();
    return m_pages.back();
}

void FixedMetricsCanvas::StartPage() { m_pages.emplace_back(); }

void FixedMetricsCanvas::DrawText(int x, int y, std::string_view text)
{
    CurrentPage().texts.push_back(Text{x, y, std::string(text), m_font.weight >= 700});
}

void FixedMetricsCanvas::DrawLine(int x1, int y1, int x2, int y2, int penWidth)
{
    CurrentPage().lines.push_back(Line{x1, y1, x2, y2, penWidth});
}

void FixedMetricsCanvas::FillRect(int x, int y, int width, int height)
{
    CurrentPage().fills.push_back(Fill{x, y, width, height});
}

std::vector<std::string> FixedMetricsCanvas::PageText(size_t page) const
{
    std::vector<std::string> out;
    if (page >= m_pages.size())
        return out;
    const Page& p = m_pages[page];
    const int cw = std::max(1, m_options.charWidth);

    // A rule sorts before text with the same top edge: it is drawn above it.
    std::map<std::pair<int, int>, std::vector<std::string>> rows;
    for (const Line& line : p.lines)
    {
        if (line.y1 != line.y2)
            continue;
        const int from = std::max(0, std::min(line.x1, line.x2) / cw);
        const int to = std::max(from + 1, std::max(line.x1, line.x2) / cw);
        auto& cells = rows[{line.y1, 0}];
        for (int c = from; c < to; ++c)
            Put(cells, static_cast<size_t>(c), "-");
    }
    for (const Text& t : p.texts)
    {
        auto& cells = rows[{t.y, 1}];
        size_t column = static_cast<size_t>(std::max(0, t.x) / cw);
        for (const std::string& ch : SplitChars(t.text))
            Put(cells, column++, ch);
    }
    for (const auto& [key, cells] : rows)
    {
        std::string line;
        for (const std::string& ch : cells)
            line += ch;
        while (!line.empty() && line.back() == ' ')
            line.pop_back();
        out.push_back(line);
    }
    return out;
}

} // namespace reports
