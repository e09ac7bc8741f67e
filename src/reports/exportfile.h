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
// format a tab and no quote. Values are written unchanged, without escaping.
struct CellForm
{
    std::string separator;
    std::string quote;

    std::string Quoted(std::string_view value) const
    {
        std::string s = quote;
        s += value;
        s += quote;
        return s;
    }
};

CellForm MakeCellForm(int format, char listSeparator);

} // namespace reports
