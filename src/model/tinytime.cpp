#include "model/tinytime.h"

#include "model/archive.h"

#include <cstdio>

namespace
{
constexpr uint32_t kVersion = 11;

CTinyTime::Status StatusFromStream(uint32_t status)
{
    // Anything but the three known values cannot be trusted as a time.
    return status <= CTinyTime::null ? CTinyTime::Status(status) : CTinyTime::invalid;
}
} // namespace

CTinyTime CTinyTime::FromDate(const CDateTime& d)
{
    if (d.IsNull())
        return Null();
    CTinyTime t(d.GetHour(), d.GetMinute());
    t.m_status = d.IsValid() ? valid : invalid;
    return t;
}

std::string CTinyTime::ToText() const
{
    if (IsNull())
        return std::string();
    char buf[16];
    std::snprintf(buf, sizeof buf, "%02d:%02d", m_hour, m_minute);
    return buf;
}

void CTinyTime::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU8(m_hour);
        ar.WriteU8(m_minute);
        ar.WriteU32(m_status);
        return;
    }
    ar.ReadVersion("CTinyTime", kVersion, kVersion);
    m_hour = ar.ReadU8();
    m_minute = ar.ReadU8();
    m_status = StatusFromStream(ar.ReadU32());
}

CTinyElapsedTime CTinyElapsedTime::FromMinutes(int64_t minutes)
{
    if (minutes <= 0)
        return CTinyElapsedTime();
    return CTinyElapsedTime(uint32_t(minutes / 60), int(minutes % 60));
}

CTinyElapsedTime& CTinyElapsedTime::operator+=(const CTinyElapsedTime& other)
{
    const int minutes = m_minutes + other.m_minutes;
    m_hours += other.m_hours + uint32_t(minutes / 60);
    m_minutes = uint8_t(minutes % 60);
    return *this;
}

void CTinyElapsedTime::Serialize(CArchive& ar)
{
    if (ar.IsStoring())
    {
        ar.WriteU32(kVersion);
        ar.WriteU32(m_hours);
        ar.WriteU8(m_minutes);
        ar.WriteU32(m_status);
        return;
    }
    ar.ReadVersion("CTinyElapsedTime", kVersion, kVersion);
    m_hours = ar.ReadU32();
    const uint8_t minutes = ar.ReadU8();
    m_status = ar.ReadU32();
    // Keep the minutes below 60 as every sum does.
    m_hours += minutes / 60;
    m_minutes = uint8_t(minutes % 60);
}
