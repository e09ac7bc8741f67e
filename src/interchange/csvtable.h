#pragma once

#include <string>
#include <vector>

namespace interchange
{

// The cells of a delimited text file (RFC 4180: quoted cells may hold the delimiter,
// line breaks and doubled quotes), with the line on which each row starts.
struct CsvTable
{
    struct Row
    {
        size_t line = 0;
        std::vector<std::string> cells;
    };
    char delimiter = ',';
    Row header; // the first row that is not blank
    std::vector<Row> rows;
};

// `delimiter` 0: a "sep=X" first line, else the commonest of comma, semicolon and tab
// in the header row. Blank lines are skipped. A quote that is not closed, or text after
// a closing quote, raises CImportError naming the line and column.
CsvTable ParseCsv(const std::string& text, char delimiter);

} // namespace interchange
