#include "platform/clock.h"

#include <ctime>

namespace platform
{

LocalTime SystemClock::Now() const
{
    const std::time_t t = std::time(nullptr);
    std::tm tm{};
    localtime_r(&t, &tm);
    LocalTime now;
    now.year = tm.tm_year + 1900;
    now.month = tm.tm_mon + 1;
    now.day = tm.tm_mday;
    now.hour = tm.tm_hour;
    now.minute = tm.tm_min;
    now.second = tm.tm_sec > 59 ? 59 : tm.tm_sec;
    return now;
}

void FixedClock::Advance(int64_t seconds)
{
    // Calendar arithmetic in UTC so that no time-zone rule shifts a test clock.
    std::tm tm{};
    tm.tm_year = m_now.year - 1900;
    tm.tm_mon = m_now.month - 1;
    tm.tm_mday = m_now.day;
    tm.tm_hour = m_now.hour;
    tm.tm_min = m_now.minute;
    tm.tm_sec = m_now.second;
    std::time_t t = timegm(&tm) + static_cast<std::time_t>(seconds);
    std::tm out{};
    gmtime_r(&t, &out);
    m_now.year = out.tm_year + 1900;
    m_now.month = out.tm_mon + 1;
    m_now.day = out.tm_mday;
    m_now.hour = out.tm_hour;
    m_now.minute = out.tm_min;
    m_now.second = out.tm_sec;
}

} // namespace platform
