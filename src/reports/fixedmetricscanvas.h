#pragma once

#include "reports/canvas.h"

#include <string>
#include <vector>

namespace reports
{

// A canvas on which every character has the same width and every font the same
// height. It records what is drawn, page by page, and can show a page as plain
// text lines: tests and `qvx report pages` check pagination with it.
class FixedMetricsCanvas : public Canvas
{
public:
    struct Options
    {
        // A letter-sized sheet at 100 dots per inch with no unprintable edge.
        int deviceWidth = 850;
        int deviceHeight = 1100;
        int dpiX = 100;
        int dpiY = 100;
        int physicalOffsetX = 0;
        int physicalOffsetY = 0;
        int charWidth = 10;
        // As in a real font, the widest character is about twice the average one;
        // the cell paddings follow from it.
        int maxCharWidth = 20;
        int fontHeight = 16;
        int externalLeading = 4;
        int orientation = orientationPortrait;
    };

    struct Text
    {
        int x = 0;
        int y = 0;
        std::string text;
        bool bold = false;
    };
    struct Line
    {
        int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
        int penWidth = 0;
    };
    struct Fill
    {
        int x = 0, y = 0, width = 0, height = 0;
    };
    struct Page
    {
        std::vector<Text> texts;
        std::vector<Line> lines;
        std::vector<Fill> fills;
    };

    FixedMetricsCanvas() = default;
    explicit FixedMetricsCanvas(const Options& options) : m_options(options) {}

    int DeviceWidth() const override;
    int DeviceHeight() const override;
    int DpiX() const override { return m_options.dpiX; }
    int DpiY() const override { return m_options.dpiY; }
    int PhysicalOffsetX() const override { return m_options.physicalOffsetX; }
    int PhysicalOffsetY() const override { return m_options.physicalOffsetY; }
    int GetOrientation() const override { return m_options.orientation; }
    void SetOrientation(int orientation) override;

    void SelectFont(const FontRequest& font) override { m_font = font; }
    FontMetrics GetFontMetrics() const override;
    TextSize GetTextExtent(std::string_view text) const override;

    void StartPage() override;
    void EndPage() override {}
    void DrawText(int x, int y, std::string_view text) override;
    void DrawLine(int x1, int y1, int x2, int y2, int penWidth) override;
    void FillRect(int x, int y, int width, int height) override;

    const FontRequest& GetSelectedFont() const { return m_font; }
    const std::vector<Page>& Pages() const { return m_pages; }
    // The page (0-based) as text: texts that share a top edge form one line, placed
    // at the column of their x position; horizontal rules become runs of "-".
    // Vertical lines and fills are left out. Trailing blanks are trimmed.
    std::vector<std::string> PageText(size_t page) const;

    // Characters of a UTF-8 text (the width of every one is the same here).
    static size_t CharCount(std::string_view text);

private:
    Page& CurrentPage();

    Options m_options;
    FontRequest m_font;
    std::vector<Page> m_pages;
};

} // namespace reports
