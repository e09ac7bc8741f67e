#include "interchange/wallclock.h"

#include <cstdio>
#include <ctime>

namespace interchange
{

LocalSeconds LocalFromCivil(int year, int month, int day, int hour, int minute, int second)
{
    return DaysFromCivil(year, month, day) * kSecondsPerDay + hour * 3600 + minute * 60 + second;
}

LocalSeconds LocalFromUtc(int64_t unixSeconds)
{
    const std::time_t t = static_cast<std::time_t>(unixSeconds);
    std::tm tm{};
    if (!localtime_r(&t, &tm))
        return unixSeconds;
    return LocalFromCivil(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min,
                          tm.tm_sec);
}

int64_t UtcFromLocal(LocalSeconds local)
{
    int year = 0, month = 0, day = 0;
    CivilFromDays(DayNumber(local), year, month, day);
    const int64_t second = local - DayNumber(local) * kSecondsPerDay;
    std::tm tm{};
    tm.tm_year = year - 1900;
    tm.tm_mon = month - 1;
    tm.tm_mday = day;
    tm.tm_hour = int(second / 3600);
    tm.tm_min = int(second / 60 % 60);
    tm.tm_sec = int(second % 60);
    tm.tm_isdst = -1;
    return int64_t(std::mktime(&tm));
}

LocalSeconds LocalFromDate(const CDateTime& date)
{
    return LocalFromCivil(date.GetYear(), date.GetMonth(), date.GetDay(), date.GetHour(),
                          date.GetMinute(), date.GetSecond());
}

int64_t DayNumber(LocalSeconds t)
{
    return t >= 0 ? t / kSecondsPerDay : -((-t + kSecondsPerDay - 1) / kSecondsPerDay);
}

CDateTime DateOfDay(int64_t dayNumber)
{
    int year = 0, month = 0, day = 0;
    CivilFromDays(dayNumber, year, month, day);
    return CDateTime::FromDate(year, month, day);
}

CDateTime DateOf(LocalSeconds t) { return DateOfDay(DayNumber(t)); }

bool PlausibleYear(int year) { return year >= kFirstPlausibleYear && year <= kLastPlausibleYear; }

std::string FormatLocal(LocalSeconds t)
{
    int year = 0, month = 0, day = 0;
    CivilFromDays(DayNumber(t), year, month, day);
    const int64_t second = t - DayNumber(t) * kSecondsPerDay;
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d", year, month, day,
                  int(second / 3600), int(second / 60 % 60));
    return text;
}

} // namespace interchange
