#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// A date and time of day with a status, kept as the number of days since
// 30 December 1899 00:00 with the time of day as the fraction: the value
// that .qvx files store for every date.
class CDateTime
{
public:
    enum Status : uint32_t
    {
        valid = 0,
        invalid = 1,
        null = 2,
    };

    CDateTime() = default;
    CDateTime(double oleDate, Status status) : m_dt(oleDate), m_status(status) {}

    static CDateTime FromDate(int year, int month, int day, int hour = 0, int minute = 0,
                              int second = 0);
    static CDateTime Null() { return CDateTime(0.0, null); }
    // Seconds since 1970-01-01 00:00 UTC, shown in local time (the old file layouts).
    static CDateTime FromUnixLocal(uint32_t seconds);
    // "%Y%m%d" back to the day at 00:00; invalid when the text is not a day key.
    static CDateTime FromDayKey(std::string_view key);

    double GetValue() const { return m_dt; }
    Status GetStatus() const { return m_status; }
    bool IsValid() const { return m_status == valid; }
    bool IsNull() const { return m_status == null; }
    void SetStatus(Status status) { m_status = status; }

    int GetYear() const;
    int GetMonth() const;
    int GetDay() const;
    int GetHour() const;
    int GetMinute() const;
    int GetSecond() const;
    // 1 = Sunday ... 7 = Saturday.
    int GetDayOfWeek() const;

    // The same day at 00:00.
    CDateTime DatePart() const;
    CDateTime AddDays(double days) const { return CDateTime(m_dt + days, m_status); }
    CDateTime AddMinutes(long minutes) const;
    CDateTime AddSeconds(long seconds) const;
    // Whole seconds since the epoch of the value; used for exact comparisons.
    int64_t TotalSeconds() const;
    static CDateTime FromTotalSeconds(int64_t seconds);

    // strftime-like: %Y %y %m %d %H %M %S %%.
    std::string Format(const char* picture) const;
    std::string DayKey() const { return Format("%Y%m%d"); }

    bool SameDay(const CDateTime& other) const;

    friend bool operator==(const CDateTime& a, const CDateTime& b)
    {
        return a.m_status == b.m_status && a.m_dt == b.m_dt;
    }
    friend bool operator<(const CDateTime& a, const CDateTime& b) { return a.m_dt < b.m_dt; }
    friend bool operator>(const CDateTime& a, const CDateTime& b) { return b < a; }
    friend bool operator<=(const CDateTime& a, const CDateTime& b) { return !(b < a); }
    friend bool operator>=(const CDateTime& a, const CDateTime& b) { return !(a < b); }

private:
    struct Civil
    {
        int year, month, day, hour, minute, second;
    };
    Civil ToCivil() const;

    double m_dt = 0.0;
    Status m_status = null;
};

// Days since the civil epoch 1970-01-01 for a proleptic Gregorian date, and back.
int64_t DaysFromCivil(int year, int month, int day);
void CivilFromDays(int64_t days, int& year, int& month, int& day);
int DaysInMonth(int year, int month);
