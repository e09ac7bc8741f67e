#include "interchange/csvtable.h"

#include "interchange/importsource.h"
#include "interchange/textencoding.h"

namespace interchange
{

namespace
{
char GuessDelimiter(const std::string& text, size_t from)
{
    size_t comma = 0, semicolon = 0, tab = 0;
    bool quoted = false;
    for (size_t i = from; i < text.size(); ++i)
    {
        const char c = text[i];
        if (c == '"')
            quoted = !quoted;
        else if (quoted)
            continue;
        else if (c == '\n')
            break;
        else if (c == ',')
            ++comma;
        else if (c == ';')
            ++semicolon;
        else if (c == '\t')
            ++tab;
    }
    if (tab > comma && tab >= semicolon)
        return '\t';
    return semicolon > comma ? ';' : ',';
}

bool Blank(const std::vector<std::string>& cells)
{
    for (const std::string& c : cells)
        if (c.find_first_not_of(" \t") != std::string::npos)
            return false;
    return true;
}
} // namespace

CsvTable ParseCsv(const std::string& text, char delimiter)
{
    CsvTable table;
    size_t pos = 0;
    size_t line = 1;
    // A spreadsheet's "sep=;" line names the delimiter.
    if (text.compare(0, 4, "sep=") == 0 && text.size() >= 5 && text[4] != '\n' && text[4] != '\r')
    {
        if (delimiter == 0)
            delimiter = text[4];
        pos = text.find('\n');
        pos = pos == std::string::npos ? text.size() : pos + 1;
        line = 2;
    }
    table.delimiter = delimiter != 0 ? delimiter : GuessDelimiter(text, pos);
    const char sep = table.delimiter;

    bool haveHeader = false;
    while (pos < text.size())
    {
        CsvTable::Row row;
        row.line = line;
        std::string cell;
        bool endOfRow = false;
        while (!endOfRow)
        {
            if (pos < text.size() && text[pos] == '"')
            {
                const size_t openedAt = pos++;
                for (;;)
                {
                    if (pos >= text.size())
                        throw CImportError(LineAndColumn(text, openedAt),
                                           "a quoted cell is not closed");
                    const char c = text[pos++];
                    if (c == '"')
                    {
                        if (pos < text.size() && text[pos] == '"')
                        {
                            cell += '"';
                            ++pos;
                            continue;
                        }
                        break;
                    }
                    if (c == '\n')
                        ++line;
                    cell += c;
                }
                if (pos < text.size() && text[pos] == '\r')
                    ++pos;
                if (pos < text.size() && text[pos] != sep && text[pos] != '\n')
                    throw CImportError(LineAndColumn(text, pos), "text after the closing quote of a cell");
            }
            else
            {
                while (pos < text.size() && text[pos] != sep && text[pos] != '\n')
                    cell += text[pos++];
                if (!cell.empty() && cell.back() == '\r')
                    cell.pop_back();
            }
            row.cells.push_back(std::move(cell));
            cell.clear();
            if (pos >= text.size() || text[pos] == '\n')
            {
                endOfRow = true;
                if (pos < text.size())
                    ++line;
            }
            ++pos;
        }
        if (Blank(row.cells))
            continue;
        if (!haveHeader)
        {
            table.header = std::move(row);
            haveHeader = true;
        }
        else
            table.rows.push_back(std::move(row));
    }
    if (!haveHeader)
        throw CImportError("", "the file holds no header row (it is empty)");
    return table;
}

} // namespace interchange
