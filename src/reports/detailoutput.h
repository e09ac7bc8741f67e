#pragma once

#include "reports/reportoutput.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

class CDay;
class CEntry;
class CTask;

namespace reports
{

// Breaks a note into printed lines no wider than `width`: leading blanks of a line
// are dropped, words run up to and including the next blank or hyphen, a line
// break in the text ends the line, and a word wider than the line is cut
// character by character.
std::vector<std::string> WrapText(std::string_view text, int width,
                                  const std::function<int(std::string_view)>& measure);

// What the three detail kinds share: a list of single entries grouped under
// headings (days, or the outstanding to-dos), printed one line per entry with
// wrapped text below it and, for the kinds with totals, a subtotal per group and
// a total at the end. Their HTML ends with the frame's end, which closes the body
// and the document but writes no table end tag of its own.
//
// Values are formatted by the application: money on the page and in HTML as
// currency, in the delimited exports as plain numbers (two decimals, the locale's
// decimal separator, no grouping).
class CDetailOutput : public CReportOutput
{
public:
    using CReportOutput::CReportOutput;

    bool PrepareReportData() override;
    void ReleaseReportData() override;
    void Layout(Canvas& canvas) override;
    int PageCount(Canvas& canvas) override;
    void PageHeader(Canvas& canvas, int page) override;
    void PageBody(Canvas& canvas, int page) override;
    // The HTML head followed by the table start with the page's column titles.
    void HtmlHead(CExportFile& file) override;

    // The gathered entries, in report order.
    size_t EntryCount() const { return m_lines.size(); }
    const CEntry* EntryAt(size_t i) const { return m_lines[i].entry; }
    // The index of the first entry of each printed page.
    const std::vector<size_t>& PageStarts() const { return m_pageStarts; }

protected:
    enum class Align
    {
        left,
        right,
        center,
    };

    // One printed column. Columns of the same share group get one width; the
    // description column takes the width that the others leave.
    struct Column
    {
        std::string title;
        Align align = Align::left;
        bool description = false;
        int shareGroup = 0;
        int width = 0;
        int x = 0;
    };

    // One listed entry and the group it is printed under.
    struct Line
    {
        const CEntry* entry = nullptr;
        const CTask* task = nullptr;
        const CDay* day = nullptr; // none for outstanding to-dos
        std::string groupKey;      // the day key, or empty for the outstanding to-dos
        std::string heading;       // what the group's heading shows
    };

    // Fills m_lines and the totals; m_range is resolved and the lock is held.
    virtual void Gather() = 0;
    virtual void ClearTotals() {}
    // The shown columns in page order, without widths.
    virtual std::vector<Column> PageColumns() const = 0;
    // One value per shown column.
    virtual std::vector<std::string> PageCells(const Line& line) const = 0;
    // Texts printed below the entry line across the note width.
    virtual std::vector<std::string> TextBlocks(const Line& line) const = 0;
    // Kinds with totals print a subtotal after each group and TOTAL at the end:
    // the cells of the sums under a group key or under kTotalKey.
    virtual bool HasTotals() const = 0;
    virtual std::vector<std::string> TotalCells(const std::string& key) const;
    // The title of a column in the HTML table header.
    virtual std::string HtmlColumnTitle(const Column& column) const { return column.title; }
    // Cell padding of the printed columns.
    virtual int HorizontalPadding() const;

    // The key the sums over all groups are kept under.
    static constexpr const char* kTotalKey = "TOTAL";

    bool Shown(uint32_t mask) const;
    bool OpensGroup(size_t i) const;
    bool ClosesGroup(size_t i) const;
    // The task test: the task is one of the selected tasks, or lies below one of
    // them unless the report lists the selected tasks only.
    bool TaskMatches(const CTask* task) const;
    // The task's composed description (its display path).
    std::string TaskDescription(const CTask* task) const;
    // An empty text as the HTML empty cell.
    static std::string HtmlValue(const std::string& value);
    // Notes export on one line: a carriage return and the character after it
    // become one space (a lone line feed as well).
    static std::string FlattenNote(const std::string& note);

    // HTML pieces shared by the kinds: the table start with its header cells, a
    // group heading row (no line end), a row spanning the columns after the
    // `leading` empty ones, and the spacer row before the total.
    static void WriteHtmlTableStart(CExportFile& file, const std::vector<std::string>& headerCells);
    static void WriteHtmlHeading(CExportFile& file, int columns, const std::string& heading);
    static void WriteHtmlSpanRow(CExportFile& file, int leading, int columns, const std::string& text);
    static void WriteHtmlSpacer(CExportFile& file, int columns);
    // One cell: the opening tag, the value escaped (empty as the HTML empty cell), the end tag.
    // Headings, span rows and cells take plain text; the subtotal and total values are markup.
    static void WriteHtmlCell(CExportFile& file, const char* open, const std::string& value);
    // A group's subtotal row and, after the spacer, the TOTAL row: `span` columns
    // before the right-aligned values.
    static void WriteHtmlSubtotal(CExportFile& file, int span, const std::vector<std::string>& values);
    static void WriteHtmlTotal(CExportFile& file, int columns, int span, const std::vector<std::string>& values);

    std::vector<Line> m_lines;

private:
    int RowHeight() const { return m_metrics.RowHeight(); }
    int TextBlockHeight(const std::vector<std::string>& lines) const;
    void DrawCells(Canvas& canvas, const std::vector<std::string>& cells, int y, bool shorten);

    std::vector<Column> m_columns;
    int m_noteX = 0;
    int m_noteWidth = 0;
    int m_padding = 0;
    // Wrapped text blocks of each entry, made by Layout.
    std::vector<std::vector<std::vector<std::string>>> m_blocks;
    std::vector<size_t> m_pageStarts;
    bool m_totalOnOwnPage = false;
};

} // namespace reports
