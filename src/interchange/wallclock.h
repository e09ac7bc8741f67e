#pragma once

#include "interchange/importsource.h"
#include "model/datetime.h"

#include <cstdint>
#include <optional>
#include <string>

namespace interchange
{

constexpr int64_t kSecondsPerDay = 86400;
// Dates outside these years are taken for mistakes in the source, not for work.
constexpr int kFirstPlausibleYear = 1900;
constexpr int kLastPlausibleYear = 2199;
// A single stretch of work longer than this is taken for a mistake in the source.
constexpr int64_t kLongestInterval = 31 * kSecondsPerDay;

LocalSeconds LocalFromCivil(int year, int month, int day, int hour = 0, int minute = 0,
                            int second = 0);
// A moment since the epoch (UTC) as it reads on this machine's clock (TZ).
LocalSeconds LocalFromUtc(int64_t unixSeconds);
// The moment since the epoch at which this machine's clock reads `local` (in the hour
// that a clock change repeats, the one the C library picks).
int64_t UtcFromLocal(LocalSeconds local);
LocalSeconds LocalFromDate(const CDateTime& date);

// The local day of a moment (at 00:00) and its time of day in seconds.
int64_t DayNumber(LocalSeconds t);
CDateTime DateOfDay(int64_t dayNumber);
CDateTime DateOf(LocalSeconds t);

bool PlausibleYear(int year);
// "2024-06-10 09:30".
std::string FormatLocal(LocalSeconds t);

} // namespace interchange
