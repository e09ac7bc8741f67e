#include "model/datetime.h"

#include <cmath>
#include <cstdio>
#include <ctime>

namespace
{
// OLE day 0 is 1899-12-30, which is 25569 days before 1970-01-01.
constexpr int64_t kOleEpochOffset = 25569;
constexpr int64_t kSecondsPerDay = 86400;
} // namespace

int64_t DaysFromCivil(int year, int month, int day)
{
    year -= month <= 2;
    const int64_t era = (year >= 0 ? year : year - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(year - era * 400);
    const unsigned doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void CivilFromDays(int64_t z, int& year, int& month, int& day)
{
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    year = static_cast<int>(yoe + era * 400 + (month <= 2));
}

int DaysInMonth(int year, int month)
{
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month == 2 && ((year % 4 == 0 && year % 100 != 0) || year % 400 == 0))
        return 29;
    return days[(month - 1) % 12];
}

CDateTime CDateTime::FromDate(int year, int month, int day, int hour, int minute, int second)
{
    if (month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month) || hour < 0 ||
        hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59)
        return CDateTime(0.0, invalid);
    const int64_t days = DaysFromCivil(year, month, day) + kOleEpochOffset;
    const double fraction = (hour * 3600 + minute * 60 + second) / double(kSecondsPerDay);
    // Before the OLE epoch the fraction still counts forward from the day's start.
    return CDateTime(days < 0 ? double(days) - fraction : double(days) + fraction, valid);
}

CDateTime CDateTime::FromUnixLocal(uint32_t seconds)
{
    std::time_t t = static_cast<std::time_t>(seconds);
    std::tm tm{};
    if (!localtime_r(&t, &tm))
        return CDateTime(0.0, invalid);
    return FromDate(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min,
                    tm.tm_sec > 59 ? 59 : tm.tm_sec);
}

CDateTime CDateTime::FromDayKey(std::string_view key)
{
    if (key.size() != 8)
        return CDateTime(0.0, invalid);
    int parts[3] = {0, 0, 0};
    const size_t offsets[3] = {0, 4, 6};
    const size_t lengths[3] = {4, 2, 2};
    for (int i = 0; i < 3; ++i)
    {
        for (size_t k = 0; k < lengths[i]; ++k)
        {
            const char c = key[offsets[i] + k];
            if (c < '0' || c > '9')
                return CDateTime(0.0, invalid);
            parts[i] = parts[i] * 10 + (c - '0');
        }
    }
    return FromDate(parts[0], parts[1], parts[2]);
}

int64_t CDateTime::TotalSeconds() const
{
    // Negative OLE dates count the fraction forward from the day before; the dates
    // this system handles (1900 to 2300) are all positive.
    return static_cast<int64_t>(std::llround(m_dt * kSecondsPerDay));
}

CDateTime CDateTime::FromTotalSeconds(int64_t seconds)
{
    return CDateTime(double(seconds) / double(kSecondsPerDay), valid);
}

CDateTime::Civil CDateTime::ToCivil() const
{
    // An OLE date's integer part is the day and the magnitude of its fraction the time
    // of day, also below zero: -1.25 is 29 December 1899 06:00.
    const int64_t total = std::llround(std::fabs(m_dt) * kSecondsPerDay);
    int64_t days = total / kSecondsPerDay;
    const int64_t secs = total % kSecondsPerDay;
    if (m_dt < 0)
        days = -days;
    Civil c{};
    CivilFromDays(days - kOleEpochOffset, c.year, c.month, c.day);
    c.hour = static_cast<int>(secs / 3600);
    c.minute = static_cast<int>((secs / 60) % 60);
    c.second = static_cast<int>(secs % 60);
    return c;
}

int CDateTime::GetYear() const { return ToCivil().year; }
int CDateTime::GetMonth() const { return ToCivil().month; }
int CDateTime::GetDay() const { return ToCivil().day; }
int CDateTime::GetHour() const { return ToCivil().hour; }
int CDateTime::GetMinute() const { return ToCivil().minute; }
int CDateTime::GetSecond() const { return ToCivil().second; }

int CDateTime::GetDayOfWeek() const
{
    const Civil c = ToCivil();
    // 1970-01-01 was a Thursday (5 in 1 = Sunday numbering).
    int64_t dow = (DaysFromCivil(c.year, c.month, c.day) + 4) % 7;
    if (dow < 0)
        dow += 7;
    return static_cast<int>(dow) + 1;
}

CDateTime CDateTime::DatePart() const
{
    const Civil c = ToCivil();
    CDateTime d = FromDate(c.year, c.month, c.day);
    d.m_status = m_status;
    return d;
}

CDateTime CDateTime::AddMinutes(long minutes) const { return AddSeconds(minutes * 60L); }

CDateTime CDateTime::AddSeconds(long seconds) const
{
    CDateTime d = FromTotalSeconds(TotalSeconds() + seconds);
    d.m_status = m_status;
    return d;
}

bool CDateTime::SameDay(const CDateTime& other) const
{
    const Civil a = ToCivil();
    const Civil b = other.ToCivil();
    return a.year == b.year && a.month == b.month && a.day == b.day;
}

std::string CDateTime::Format(const char* picture) const
{
    const Civil c = ToCivil();
    std::string out;
    char buf[16];
    for (const char* p = picture; *p; ++p)
    {
        if (*p != '%' || !p[1])
        {
            out += *p;
            continue;
        }
        ++p;
        switch (*p)
        {
        case 'Y': std::snprintf(buf, sizeof buf, "%04d", c.year); out += buf; break;
        case 'y': std::snprintf(buf, sizeof buf, "%02d", ((c.year % 100) + 100) % 100); out += buf; break;
        case 'm': std::snprintf(buf, sizeof buf, "%02d", c.month); out += buf; break;
        case 'd': std::snprintf(buf, sizeof buf, "%02d", c.day); out += buf; break;
        case 'H': std::snprintf(buf, sizeof buf, "%02d", c.hour); out += buf; break;
        case 'M': std::snprintf(buf, sizeof buf, "%02d", c.minute); out += buf; break;
        case 'S': std::snprintf(buf, sizeof buf, "%02d", c.second); out += buf; break;
        case '%': out += '%'; break;
        default: out += '%'; out += *p; break;
        }
    }
    return out;
}
