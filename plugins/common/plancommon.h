#pragma once

// Helpers the plan components share: OLE dates, ISO dates and XML error positions.
// Header-only so that each component stays one self-contained library.

#include "projectlink/projectinterface.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace plancommon
{

// Days from 1970-01-01 of a civil date (proleptic Gregorian).
inline int64_t DaysFromCivil(int y, int m, int d)
{
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

inline void CivilFromDays(int64_t z, int& y, int& m, int& d)
{
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    d = int(doy - (153 * mp + 2) / 5 + 1);
    m = int(mp < 10 ? mp + 3 : mp - 9);
    y = int(yoe + era * 400 + (m <= 2));
}

// OLE automation dates count days from 1899-12-30.
constexpr int64_t kOleEpochOffset = 25569; // days from 1899-12-30 to 1970-01-01

inline double OleFromCivil(int y, int m, int d, int hh = 0, int mm = 0, int ss = 0)
{
    return double(DaysFromCivil(y, m, d) + kOleEpochOffset) + (hh * 3600 + mm * 60 + ss) / 86400.0;
}

// "YYYY-MM-DD" with an optional "THH:MM[:SS]"; 0 when the text is not a date.
inline double OleFromIso(const std::string& text)
{
    int y = 0, m = 0, d = 0, hh = 0, mm = 0, ss = 0;
    const int n = std::sscanf(text.c_str(), "%d-%d-%dT%d:%d:%d", &y, &m, &d, &hh, &mm, &ss);
    if (n < 3 || m < 1 || m > 12 || d < 1 || d > 31 || y < 1900 || y > 9999)
        return 0.0;
    return OleFromCivil(y, m, d, hh, mm, ss);
}

// The day of an OLE date as "YYYY-MM-DD".
inline std::string IsoDay(double ole)
{
    int y = 0, m = 0, d = 0;
    CivilFromDays(int64_t(std::floor(ole)) - kOleEpochOffset, y, m, d);
    char text[16];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", y, m, d);
    return text;
}

inline int DayOfWeek(double ole) // 0 = Sunday
{
    const int64_t days = int64_t(std::floor(ole)) - kOleEpochOffset; // 1970-01-01 was a Thursday
    return int(((days % 7) + 7 + 4) % 7);
}

// "line L, column C" of a byte offset in a text.
inline std::string Position(const std::string& text, std::ptrdiff_t offset)
{
    int line = 1, column = 1;
    for (std::ptrdiff_t i = 0; i < offset && i < std::ptrdiff_t(text.size()); ++i)
    {
        if (text[size_t(i)] == '\n')
            ++line, column = 1;
        else
            ++column;
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// FNV-1a folded to a positive 32-bit value: the file identity of a plan.
inline int32_t Identity(const std::string& text)
{
    uint32_t h = 2166136261u;
    for (unsigned char c : text)
        h = (h ^ c) * 16777619u;
    return int32_t(h & 0x7FFFFFFFu);
}

} // namespace plancommon
