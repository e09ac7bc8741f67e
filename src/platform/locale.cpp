#include "platform/locale.h"

#include <cctype>
#include <climits>
#include <cstdint>
#include <langinfo.h>
#include <locale.h>
#include <vector>

namespace platform
{

namespace
{

// One piece of an strftime picture: a conversion ("%d", "%-e") or literal text.
struct Piece
{
    bool conversion = false;
    std::string text;
    char letter = 0; // the conversion letter
};

std::vector<Piece> Split(const std::string& picture)
{
    std::vector<Piece> pieces;
    for (size_t i = 0; i < picture.size();)
    {
        if (picture[i] == '%' && i + 1 < picture.size())
        {
            size_t end = i + 1;
            while (end < picture.size() && (picture[end] == '-' || picture[end] == '_' ||
                                            picture[end] == '0' || picture[end] == 'E' ||
                                            picture[end] == 'O'))
                ++end;
            if (end < picture.size())
            {
                pieces.push_back({true, picture.substr(i, end + 1 - i), picture[end]});
                i = end + 1;
                continue;
            }
        }
        if (pieces.empty() || pieces.back().conversion)
            pieces.push_back({false, std::string(), 0});
        pieces.back().text += picture[i];
        ++i;
    }
    return pieces;
}

bool IsDay(char c) { return c == 'd' || c == 'e'; }
bool IsMonth(char c) { return c == 'm' || c == 'b' || c == 'B' || c == 'h'; }
bool IsYear(char c) { return c == 'Y' || c == 'y' || c == 'C' || c == 'G'; }
bool IsTimeOfDay(char c)
{
    switch (c)
    {
    case 'H': case 'I': case 'k': case 'l': case 'M': case 'S': case 'p': case 'P':
    case 'r': case 'R': case 'T': case 'X': case 'Z': case 'z': case 's':
        return true;
    default:
        return false;
    }
}

std::string TrimEdges(const std::string& text, const char* junk)
{
    const size_t begin = text.find_first_not_of(junk);
    if (begin == std::string::npos)
        return std::string();
    const size_t end = text.find_last_not_of(junk);
    return text.substr(begin, end + 1 - begin);
}

// The date part of a date-and-time picture, with full day and month names.
std::string DatePartOf(const std::string& dateTime)
{
    const std::vector<Piece> pieces = Split(dateTime);
    std::string out;
    for (size_t i = 0; i < pieces.size(); ++i)
    {
        const Piece& p = pieces[i];
        if (p.conversion)
        {
            if (IsTimeOfDay(p.letter))
                continue;
            std::string text = p.text;
            if (p.letter == 'a')
                text.back() = 'A';
            else if (p.letter == 'b' || p.letter == 'h')
                text.back() = 'B';
            out += text;
            continue;
        }
        // Text that only joins time fields goes with them.
        const bool afterTime = i > 0 && IsTimeOfDay(pieces[i - 1].letter);
        const bool beforeTime = i + 1 < pieces.size() && IsTimeOfDay(pieces[i + 1].letter);
        const bool atEnd = i + 1 == pieces.size();
        if (afterTime && (beforeTime || atEnd))
            continue;
        out += p.text;
    }
    std::string collapsed;
    for (char c : out)
        if (!(c == ' ' && !collapsed.empty() && collapsed.back() == ' '))
            collapsed += c;
    return TrimEdges(collapsed, " ,");
}

// An strftime time picture in the h/H/mm/ss/tt notation.
std::string TimePictureOf(const std::string& picture, const std::string& ampmPicture, int depth = 0)
{
    std::string out;
    for (const Piece& p : Split(picture))
    {
        if (!p.conversion)
        {
            bool hasLetter = false;
            for (char c : p.text)
                hasLetter = hasLetter || std::isalpha(static_cast<unsigned char>(c));
            out += hasLetter ? "'" + p.text + "'" : p.text;
            continue;
        }
        switch (p.letter)
        {
        case 'H': out += "HH"; break;
        case 'k': out += "H"; break;
        // A 12-hour hour reads without a leading zero ("9:05 AM"); strftime's %I pads
        // only because it has no other 12-hour conversion.
        case 'I': case 'l': out += "h"; break;
        case 'M': out += "mm"; break;
        case 'S': out += "ss"; break;
        case 'p': case 'P': out += "tt"; break;
        case 'T': out += "HH:mm:ss"; break;
        case 'R': out += "HH:mm"; break;
        case 'r':
            out += depth == 0 && !ampmPicture.empty() ? TimePictureOf(ampmPicture, "", depth + 1)
                                                      : "h:mm:ss tt";
            break;
        default: break; // time zones and the like are not part of a time of day
        }
    }
    return TrimEdges(out, " ");
}

bool IsPlainC(locale_t loc, int category)
{
    const std::string name = nl_langinfo_l(_NL_LOCALE_NAME(category), loc);
    return name == "C" || name == "POSIX" || name.rfind("C.", 0) == 0;
}

std::string Text(locale_t loc, nl_item item) { return nl_langinfo_l(item, loc); }

int FirstGroup(const char* grouping)
{
    // CHAR_MAX (or an empty string) means no grouping.
    if (!grouping || !*grouping || *grouping < 0 || *grouping == 127)
        return 0;
    return *grouping;
}

void ReadTime(locale_t loc, LocaleInfo& info)
{
    info.shortDatePicture = Text(loc, D_FMT);
    int found = 0;
    int first = -1;
    bool separatorTaken = false;
    for (const Piece& p : Split(info.shortDatePicture))
    {
        if (!p.conversion)
        {
            if (found == 1 && !separatorTaken)
            {
                info.dateSeparator = p.text;
                separatorTaken = true;
            }
            continue;
        }
        const int kind = IsMonth(p.letter) ? 0 : IsDay(p.letter) ? 1 : IsYear(p.letter) ? 2 : -1;
        if (kind < 0)
            continue;
        if (first < 0)
            first = kind;
        ++found;
    }
    info.shortDateOrder = first < 0 ? 0 : first;

    // Month-first locales get the month-first long form; the others take the date part
    // of the locale's own date-and-time picture.
    info.longDatePicture =
        info.shortDateOrder == 0 ? std::string("%A, %B %d, %Y") : DatePartOf(Text(loc, D_T_FMT));

    info.amSymbol = Text(loc, AM_STR);
    info.pmSymbol = Text(loc, PM_STR);
    info.timeFormat = TimePictureOf(Text(loc, T_FMT), Text(loc, T_FMT_AMPM));
    info.clock24 = true;
    bool quoted = false;
    for (char c : info.timeFormat)
    {
        if (c == '\'')
            quoted = !quoted;
        else if (!quoted && (c == 'h' || c == 't'))
            info.clock24 = false;
    }
    // The separator is what stands between the hour and the minutes.
    const size_t hour = info.timeFormat.find_first_of("hH");
    const size_t minutes = info.timeFormat.find("mm");
    if (hour != std::string::npos && minutes != std::string::npos && minutes > hour)
    {
        size_t from = info.timeFormat.find_first_not_of("hH", hour);
        std::string separator = info.timeFormat.substr(from, minutes - from);
        if (separator.size() >= 2 && separator.front() == '\'' && separator.back() == '\'')
            separator = separator.substr(1, separator.size() - 2);
        if (!separator.empty())
            info.timeSeparator = separator;
    }

    for (int i = 0; i < 7; ++i)
    {
        info.dayNames[i] = Text(loc, nl_item(DAY_1 + i));
        info.abbrevDayNames[i] = Text(loc, nl_item(ABDAY_1 + i));
    }
    for (int i = 0; i < 12; ++i)
    {
        info.monthNames[i] = Text(loc, nl_item(MON_1 + i));
        info.abbrevMonthNames[i] = Text(loc, nl_item(ABMON_1 + i));
    }

    // The first weekday counts from the week's reference day: 1997-11-30 was a Sunday,
    // 1997-12-01 a Monday.
    const auto weekStart = static_cast<unsigned>(reinterpret_cast<uintptr_t>(
        nl_langinfo_l(_NL_TIME_WEEK_1STDAY, loc)));
    const int firstWeekday = *nl_langinfo_l(_NL_TIME_FIRST_WEEKDAY, loc);
    const int fromSunday = ((weekStart == 19971201 ? 1 : 0) + firstWeekday - 1 + 7) % 7;
    info.firstDayOfWeek = (fromSunday + 6) % 7;
}

void ReadNumeric(LocaleInfo& info)
{
    const lconv* conv = localeconv();
    if (conv->decimal_point && *conv->decimal_point)
        info.decimalSeparator = conv->decimal_point;
    info.thousandsSeparator = conv->thousands_sep ? conv->thousands_sep : "";
    info.grouping = info.thousandsSeparator.empty() ? 0 : FirstGroup(conv->grouping);
}

void ReadMonetary(LocaleInfo& info)
{
    const lconv* conv = localeconv();
    info.currencySymbol = conv->currency_symbol ? conv->currency_symbol : "";
    if (conv->p_cs_precedes != CHAR_MAX)
        info.currencySymbolFirst = conv->p_cs_precedes == 1;
    if (conv->p_sep_by_space != CHAR_MAX)
        info.currencySpaceSeparated = conv->p_sep_by_space != 0;
    if (conv->frac_digits != CHAR_MAX)
        info.currencyDigits = conv->frac_digits;
    if (conv->mon_decimal_point && *conv->mon_decimal_point)
        info.monetaryDecimalSeparator = conv->mon_decimal_point;
    info.monetaryThousandsSeparator = conv->mon_thousands_sep ? conv->mon_thousands_sep : "";
    info.monetaryGrouping =
        info.monetaryThousandsSeparator.empty() ? 0 : FirstGroup(conv->mon_grouping);
}

LocaleInfo FromLocale(locale_t loc)
{
    LocaleInfo info;
    if (!IsPlainC(loc, LC_TIME))
        ReadTime(loc, info);
    if (!IsPlainC(loc, LC_MEASUREMENT))
        info.measurementSystem = *nl_langinfo_l(_NL_MEASUREMENT_MEASUREMENT, loc) == 2 ? 1 : 0;
    // localeconv() has no form that takes a locale: make it this thread's for the call.
    const locale_t previous = uselocale(loc);
    if (!IsPlainC(loc, LC_NUMERIC))
        ReadNumeric(info);
    if (!IsPlainC(loc, LC_MONETARY))
        ReadMonetary(info);
    uselocale(previous);
    return info;
}

LocaleInfo FromNamedLocale(const char* name)
{
    const locale_t loc = newlocale(LC_ALL_MASK, name, static_cast<locale_t>(nullptr));
    if (!loc)
        return LocaleInfo::UnitedStates();
    LocaleInfo info = FromLocale(loc);
    freelocale(loc);
    return info;
}

} // namespace

LocaleInfo LocaleInfo::FromEnvironment() { return FromNamedLocale(""); }

LocaleInfo LocaleInfo::FromName(const std::string& localeName)
{
    return FromNamedLocale(localeName.c_str());
}

bool LocaleInfo::IsAvailable(const std::string& localeName)
{
    const locale_t loc = newlocale(LC_ALL_MASK, localeName.c_str(), static_cast<locale_t>(nullptr));
    if (!loc)
        return false;
    freelocale(loc);
    return true;
}

} // namespace platform
