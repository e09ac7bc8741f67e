#pragma once

#include "interchange/importsource.h"
#include "interchange/textencoding.h"

#include <string>
#include <string_view>

namespace interchange
{

struct CsvOptions
{
    // "COLUMN=FIELD,..." naming header cells and what they hold: task (several make a
    // path, in the order given), date, start, end, end-date, duration, note (several are
    // joined), activity. Empty: recognised from the header row.
    std::string map;
    // The dates' picture (%Y %y %m %d %e %b %B); empty: ISO dates or `localeDatePicture`.
    std::string datePicture;
    std::string localeDatePicture = "%m/%d/%Y";
    // The cell separator; 0: taken from the header row (comma, semicolon or tab).
    char delimiter = 0;
    TextEncoding encoding = TextEncoding::utf8;
    // Where the first entry of a day begins when rows give a duration but no start;
    // later ones of the day follow it.
    int dayStartMinutes = 9 * 60;
};

// A CSV file with a header row: one time entry per row. A start or end cell may hold a
// time of day ("09:30", "9:30 PM") or a date and time ("2024-06-10 09:30", ISO 8601 with
// a zone); a duration cell hours and minutes ("1:30", "1:30:00") or decimal hours ("1.5").
// Rows that lack the values an entry needs are skipped; a value that does not read raises
// CImportError naming the line and the column.
ImportSource ReadCsv(std::string_view bytes, const CsvOptions& options);

} // namespace interchange
