#pragma once

#include "interchange/importsource.h"

#include <optional>
#include <string_view>

namespace interchange
{

// Dates, times and durations as spreadsheets and trackers write them.

struct CivilDate
{
    int year = 0;
    int month = 0;
    int day = 0;
};

// By a strftime-like picture: %Y (four digits), %y (two: 1970 to 2069), %m, %d, %e,
// %b and %B (English month names, or their first three letters), %a and %A (a day
// name, not checked); "%-d" reads as "%d"; a blank matches any number of blanks. The
// day must be one of the month; the year is not checked.
std::optional<CivilDate> ReadDate(std::string_view text, std::string_view picture);
// "2024-06-10" or "2024/06/10".
std::optional<CivilDate> ReadIsoDate(std::string_view text);
// "09:30", "9:30:15", "9:30 PM", "9pm", "24:00": seconds from 00:00.
std::optional<int> ReadTimeOfDay(std::string_view text);
// "1:30", "1:30:00", "1.5" or "1,5" (hours): seconds; negative values do not read.
std::optional<int64_t> ReadDuration(std::string_view text);

// A date and time in one text: ISO 8601 ("2024-06-10T09:30:00", with "Z" or an offset
// such as "+02:00" for a moment elsewhere, which becomes local time) or a date of
// `picture` (or ISO), a blank, and a time of day.
std::optional<LocalSeconds> ReadDateTime(std::string_view text, std::string_view picture);

// The date is a real one of a plausible year.
bool ValidDate(const CivilDate& d);

} // namespace interchange
