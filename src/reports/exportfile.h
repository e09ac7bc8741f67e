#pragma once

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

// The text of an export file, built in memory and written out whole, so that a
// failure never leaves half a file. It is a text file: every line ends with
// carriage return and line feed. A text that already holds that pair (a note typed
// on several lines) keeps it as it is rather than doubling the carriage return.
class CExportFile
{
public:
    void WriteString(std::string_view text);
    const std::string& Data() const { return m_data; }
    std::string Take() { return std::move(m_data); }

private:
    std::string m_data;
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
