#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace reports
{

// The export formats, numbered as the save dialog's file types.
enum ExportFormat
{
    formatCsv = 1,
    formatHtml = 2,
    formatTab = 3,
};

// The text of an export file. It is a text file: every line ends with carriage
// return and line feed. A text that already holds that pair (a note typed on
// several lines) keeps it as it is rather than doubling the carriage return.
// Without a sink the whole text stays in memory; with one it is handed on in
// pieces of about a megabyte, so that a large export needs little memory.
class CExportFile
{
public:
    // Receives a piece of the text; returns false when it could not take it.
    using Sink = std::function<bool(std::string_view)>;

    CExportFile() = default;
    explicit CExportFile(Sink sink) : m_sink(std::move(sink)) {}

    void WriteString(std::string_view text);
    // Hands what is buffered to the sink. False once the sink has refused a piece.
    bool Flush();
    bool Failed() const { return m_failed; }

    const std::string& Data() const { return m_data; }
    std::string Take() { return std::move(m_data); }

private:
    std::string m_data;
    Sink m_sink;
    char m_last = '\0';
    bool m_failed = false;
};

// How a delimited export separates and quotes its cells: the comma-delimited
// format uses the locale's list separator and double quotes, the tab-delimited
// format a tab and no quote. Any reader must get back the cells that were meant,
// whatever the user typed into them: in the comma-delimited format a quote inside a
// quoted value is doubled, and a value written without quotes is quoted when it
// holds the separator, a quote or a line break; the tab-delimited format has no
// way to quote, so a tab or line break inside a value becomes a space.
struct CellForm
{
    std::string separator;
    std::string quote;

    // quote, the value, quote.
    std::string Quoted(std::string_view value) const;
    // The same appended to `out`, for the export's inner loops.
    void AppendQuoted(std::string& out, std::string_view value) const;
    // The value as it is, unless it must be quoted (or, for tabs, cleaned) to stay one cell.
    std::string Plain(std::string_view value) const;
};

// Text from the user's data inside HTML: & < > and " written as entities.
std::string HtmlEscape(std::string_view text);

CellForm MakeCellForm(int format, char listSeparator);

} // namespace reports
