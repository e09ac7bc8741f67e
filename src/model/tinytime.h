#pragma once

#include "model/datetime.h"

#include <cstdint>
#include <string>

class CArchive;

// A time of day to the minute. 24:00 (valid) is the end of the day; a null time
// (hour 255, minute 255) is the open end of the running time entry.
class CTinyTime
{
public:
    enum Status : uint32_t
    {
        valid = 0,
        invalid = 1,
        null = 2,
    };

    CTinyTime() = default; // null
    CTinyTime(int hour, int minute) : m_hour(uint8_t(hour)), m_minute(uint8_t(minute)), m_status(valid) {}

    static CTinyTime Null() { return CTinyTime(); }
    // The date's hour and minute and its status.
    static CTinyTime FromDate(const CDateTime& d);

    int GetHour() const { return m_hour; }
    int GetMinute() const { return m_minute; }
    Status GetStatus() const { return Status(m_status); }
    bool IsNull() const { return m_status == null; }
    bool IsValid() const { return m_status == valid; }
    void SetNull() { *this = CTinyTime(); }
    void SetStatus(Status s) { m_status = uint8_t(s); }

    // Minutes since 00:00; 24:00 gives 1440.
    int MinutesOfDay() const { return m_hour * 60 + m_minute; }
    // "HH:MM", "24:00", or empty for null.
    std::string ToText() const;

    // Body: version, u8 hour, u8 minute, u32 status (version 11 only).
    void Serialize(CArchive& ar);

    friend bool operator==(const CTinyTime& a, const CTinyTime& b)
    {
        return a.m_hour == b.m_hour && a.m_minute == b.m_minute && a.m_status == b.m_status;
    }
    // Ordering compares hour, then minute.
    friend bool operator<(const CTinyTime& a, const CTinyTime& b)
    {
        return a.m_hour != b.m_hour ? a.m_hour < b.m_hour : a.m_minute < b.m_minute;
    }

private:
    uint8_t m_hour = 255;
    uint8_t m_minute = 255;
    // Held in a byte (the file stores 32 bits): time entries by the million carry two.
    uint8_t m_status = null;
};

// A duration in hours and minutes (0 to 59).
class CTinyElapsedTime
{
public:
    CTinyElapsedTime() = default;
    CTinyElapsedTime(uint32_t hours, int minutes) : m_hours(hours), m_minutes(uint8_t(minutes)) {}
    static CTinyElapsedTime FromMinutes(int64_t minutes);

    uint32_t GetHours() const { return m_hours; }
    int GetMinutes() const { return m_minutes; }
    uint32_t GetStatus() const { return m_status; }
    int64_t TotalMinutes() const { return int64_t(m_hours) * 60 + m_minutes; }
    // Hours with the minutes as a fraction.
    double Hours() const { return m_hours + m_minutes / 60.0; }
    bool IsZero() const { return m_hours == 0 && m_minutes == 0; }

    CTinyElapsedTime& operator+=(const CTinyElapsedTime& other);
    friend CTinyElapsedTime operator+(CTinyElapsedTime a, const CTinyElapsedTime& b) { return a += b; }

    // Body: version, u32 hours, u8 minutes, u32 status (version 11 only).
    void Serialize(CArchive& ar);

    friend bool operator==(const CTinyElapsedTime& a, const CTinyElapsedTime& b)
    {
        return a.m_hours == b.m_hours && a.m_minutes == b.m_minutes && a.m_status == b.m_status;
    }
    friend bool operator<(const CTinyElapsedTime& a, const CTinyElapsedTime& b)
    {
        return a.m_hours != b.m_hours ? a.m_hours < b.m_hours : a.m_minutes < b.m_minutes;
    }

private:
    uint32_t m_hours = 0;
    uint8_t m_minutes = 0;
    uint32_t m_status = 0;
};
