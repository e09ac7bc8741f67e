#include "interchange/datetimetext.h"

#include "interchange/wallclock.h"

#include <cctype>
#include <string>

namespace interchange
{

namespace
{
const char* const kMonths[12] = {"january", "february", "march",     "april",   "may",      "june",
                                  "july",    "august",   "september", "october", "november", "december"};

std::string_view Trimmed(std::string_view s)
{
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front())))
        s.remove_prefix(1);
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back())))
        s.remove_suffix(1);
    return s;
}

bool Digit(char c) { return c >= '0' && c <= '9'; }

// Reads `min` to `max` digits at `i`.
std::optional<int> Number(std::string_view s, size_t& i, size_t min, size_t max)
{
    size_t n = 0;
    int value = 0;
    while (i < s.size() && n < max && Digit(s[i]))
    {
        value = value * 10 + (s[i] - '0');
        ++i;
        ++n;
    }
    if (n < min)
        return std::nullopt;
    return value;
}

std::optional<int> MonthName(std::string_view s, size_t& i)
{
    size_t end = i;
    while (end < s.size() && std::isalpha(static_cast<unsigned char>(s[end])))
        ++end;
    std::string word;
    for (size_t k = i; k < end; ++k)
        word += char(std::tolower(static_cast<unsigned char>(s[k])));
    if (word.size() < 3)
        return std::nullopt;
    for (int m = 0; m < 12; ++m)
    {
        const std::string full = kMonths[m];
        if (word == full || word == full.substr(0, 3) || (m == 8 && word == "sept"))
        {
            i = end;
            if (i < s.size() && s[i] == '.')
                ++i;
            return m + 1;
        }
    }
    return std::nullopt;
}

// "Z", "+02:00", "+0200", "-05": the offset from UTC in seconds.
std::optional<int> ZoneOffset(std::string_view s)
{
    if (s == "Z" || s == "z")
        return 0;
    if (s.size() < 3 || (s[0] != '+' && s[0] != '-'))
        return std::nullopt;
    size_t i = 1;
    const auto hours = Number(s, i, 2, 2);
    int minutes = 0;
    if (i < s.size() && s[i] == ':')
        ++i;
    if (i < s.size())
    {
        const auto m = Number(s, i, 2, 2);
        if (!m)
            return std::nullopt;
        minutes = *m;
    }
    if (!hours || i != s.size() || *hours > 14 || minutes > 59)
        return std::nullopt;
    return (s[0] == '-' ? -1 : 1) * (*hours * 3600 + minutes * 60);
}
} // namespace

bool ValidDate(const CivilDate& d)
{
    return PlausibleYear(d.year) && d.month >= 1 && d.month <= 12 && d.day >= 1 &&
           d.day <= DaysInMonth(d.year, d.month);
}

std::optional<CivilDate> ReadDate(std::string_view text, std::string_view picture)
{
    text = Trimmed(text);
    CivilDate d;
    size_t i = 0;
    for (size_t p = 0; p < picture.size(); ++p)
    {
        const char c = picture[p];
        if (c == ' ')
        {
            if (i >= text.size() || text[i] != ' ')
                return std::nullopt;
            while (i < text.size() && text[i] == ' ')
                ++i;
            continue;
        }
        if (c != '%' || p + 1 >= picture.size())
        {
            if (i >= text.size() || text[i] != c)
                return std::nullopt;
            ++i;
            continue;
        }
        char conversion = picture[++p];
        if ((conversion == '-' || conversion == '#') && p + 1 < picture.size())
            conversion = picture[++p];
        std::optional<int> v;
        switch (conversion)
        {
        case 'Y':
            v = Number(text, i, 4, 4);
            d.year = v.value_or(0);
            break;
        case 'y':
            v = Number(text, i, 2, 2);
            d.year = v ? (*v < 70 ? 2000 + *v : 1900 + *v) : 0;
            break;
        case 'm':
            v = Number(text, i, 1, 2);
            d.month = v.value_or(0);
            break;
        case 'd':
        case 'e':
            while (conversion == 'e' && i < text.size() && text[i] == ' ')
                ++i;
            v = Number(text, i, 1, 2);
            d.day = v.value_or(0);
            break;
        case 'b':
        case 'B':
        case 'h':
            v = MonthName(text, i);
            d.month = v.value_or(0);
            break;
        case 'a':
        case 'A':
            v = 0;
            if (i >= text.size() || !std::isalpha(static_cast<unsigned char>(text[i])))
                v.reset();
            while (i < text.size() && (std::isalpha(static_cast<unsigned char>(text[i])) || text[i] == '.'))
                ++i;
            break;
        case '%':
            v = i < text.size() && text[i] == '%' ? std::optional<int>(0) : std::nullopt;
            ++i;
            break;
        default:
            return std::nullopt;
        }
        if (!v)
            return std::nullopt;
    }
    if (i != text.size() || d.year == 0 || d.month < 1 || d.month > 12 || d.day < 1 ||
        d.day > DaysInMonth(d.year, d.month))
        return std::nullopt;
    return d;
}

std::optional<CivilDate> ReadIsoDate(std::string_view text)
{
    text = Trimmed(text);
    if (auto d = ReadDate(text, "%Y-%m-%d"))
        return d;
    return ReadDate(text, "%Y/%m/%d");
}

std::optional<int> ReadTimeOfDay(std::string_view text)
{
    text = Trimmed(text);
    size_t i = 0;
    const auto hour = Number(text, i, 1, 2);
    if (!hour)
        return std::nullopt;
    int minute = 0, second = 0;
    bool hasMinutes = false;
    if (i < text.size() && (text[i] == ':' || text[i] == '.'))
    {
        const char separator = text[i++];
        const auto m = Number(text, i, 2, 2);
        if (!m)
            return std::nullopt;
        minute = *m;
        hasMinutes = true;
        if (i < text.size() && text[i] == separator)
        {
            ++i;
            const auto s = Number(text, i, 2, 2);
            if (!s)
                return std::nullopt;
            second = *s;
            // Fractions of a second are dropped.
            if (i < text.size() && (text[i] == '.' || text[i] == ','))
                for (++i; i < text.size() && Digit(text[i]);)
                    ++i;
        }
    }
    while (i < text.size() && text[i] == ' ')
        ++i;
    std::string suffix;
    for (; i < text.size(); ++i)
        if (text[i] != '.')
            suffix += char(std::tolower(static_cast<unsigned char>(text[i])));
    int h = *hour;
    if (suffix == "am" || suffix == "a" || suffix == "pm" || suffix == "p")
    {
        if (h < 1 || h > 12)
            return std::nullopt;
        h = h % 12 + (suffix[0] == 'p' ? 12 : 0);
    }
    else if (!suffix.empty() || !hasMinutes)
        return std::nullopt;
    if (minute > 59 || second > 59 || h > 24 || (h == 24 && (minute || second)))
        return std::nullopt;
    return h * 3600 + minute * 60 + second;
}

std::optional<int64_t> ReadDuration(std::string_view text)
{
    text = Trimmed(text);
    if (text.empty())
        return std::nullopt;
    size_t i = 0;
    if (text.find(':') != std::string_view::npos)
    {
        const auto hours = Number(text, i, 1, 6);
        if (!hours || i >= text.size() || text[i++] != ':')
            return std::nullopt;
        const auto minutes = Number(text, i, 2, 2);
        int seconds = 0;
        if (i < text.size() && text[i] == ':')
        {
            ++i;
            const auto s = Number(text, i, 2, 2);
            if (!s)
                return std::nullopt;
            seconds = *s;
        }
        if (!minutes || i != text.size() || *minutes > 59 || seconds > 59)
            return std::nullopt;
        return int64_t(*hours) * 3600 + *minutes * 60 + seconds;
    }
    // Decimal hours, with a point or a comma.
    const auto whole = Number(text, i, 0, 6);
    int64_t fraction = 0, scale = 1;
    if (i < text.size() && (text[i] == '.' || text[i] == ','))
    {
        ++i;
        size_t digits = 0;
        for (; i < text.size() && Digit(text[i]); ++i, ++digits)
            if (digits < 6)
            {
                fraction = fraction * 10 + (text[i] - '0');
                scale *= 10;
            }
        if (digits == 0)
            return std::nullopt;
    }
    else if (i == 0)
        return std::nullopt;
    if (i != text.size())
        return std::nullopt;
    return int64_t(whole.value_or(0)) * 3600 + (fraction * 3600 + scale / 2) / scale;
}

std::optional<LocalSeconds> ReadDateTime(std::string_view text, std::string_view picture)
{
    text = Trimmed(text);
    // ISO 8601: a date, "T" or a blank, a time, and perhaps a zone.
    if (text.size() >= 16 && Digit(text[0]) && text[4] == '-' && (text[10] == 'T' || text[10] == ' '))
    {
        const auto date = ReadIsoDate(text.substr(0, 10));
        std::string_view rest = text.substr(11);
        std::optional<int> offset;
        const size_t zone = rest.find_first_of("Zz+-");
        if (zone != std::string_view::npos)
        {
            offset = ZoneOffset(rest.substr(zone));
            if (!offset)
                return std::nullopt;
            rest = rest.substr(0, zone);
        }
        const auto time = ReadTimeOfDay(rest);
        if (!date || !time || !ValidDate(*date))
            return std::nullopt;
        const LocalSeconds civil = LocalFromCivil(date->year, date->month, date->day) + *time;
        return offset ? LocalFromUtc(civil - *offset) : civil;
    }
    // A date and a time of day: try each blank as the place where the time begins.
    for (size_t blank = text.find(' '); blank != std::string_view::npos; blank = text.find(' ', blank + 1))
    {
        const auto time = ReadTimeOfDay(text.substr(blank + 1));
        if (!time)
            continue;
        const std::string_view datePart = text.substr(0, blank);
        auto date = ReadIsoDate(datePart);
        if (!date && !picture.empty())
            date = ReadDate(datePart, picture);
        if (date && ValidDate(*date))
            return LocalFromCivil(date->year, date->month, date->day) + *time;
    }
    return std::nullopt;
}

} // namespace interchange
