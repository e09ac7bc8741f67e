#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

// Sets the process's time zone (TZ) for the life of the object.
class ScopedZone
{
public:
    explicit ScopedZone(const char* zone)
    {
        if (const char* old = std::getenv("TZ"))
            m_old = old;
        setenv("TZ", zone, 1);
        tzset();
    }
    ~ScopedZone()
    {
        if (m_old)
            setenv("TZ", m_old->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    ScopedZone(const ScopedZone&) = delete;
    ScopedZone& operator=(const ScopedZone&) = delete;

private:
    std::optional<std::string> m_old;
};
