#pragma once

#include <atomic>
#include <cstdint>

namespace platform
{

// A local date and time of day, to the second.
struct LocalTime
{
    int year = 1970;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

class Clock
{
public:
    virtual ~Clock() = default;
    virtual LocalTime Now() const = 0;
};

// The system clock in the local time zone.
class SystemClock : public Clock
{
public:
    LocalTime Now() const override;
};

// A clock that stands still until told otherwise; for tests.
class FixedClock : public Clock
{
public:
    explicit FixedClock(LocalTime t) : m_now(t) {}
    LocalTime Now() const override { return m_now; }
    void Set(LocalTime t) { m_now = t; }
    // Moves the clock forward (or back, for negative values) by whole seconds.
    void Advance(int64_t seconds);

private:
    LocalTime m_now;
};

} // namespace platform
