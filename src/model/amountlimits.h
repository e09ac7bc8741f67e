#pragma once

#include <cmath>

// The range of money, rates and estimates that the file, the lists and the reports can
// show: below one trillion either way. Past that a double no longer keeps the cents, and
// the report columns have no room for the digits.
constexpr double kAmountLimit = 1e12;
// Whole miles (or km) of one mileage expense.
constexpr int kMaxDistance = 1000000;

inline bool IsStorableAmount(double value)
{
    return std::isfinite(value) && std::fabs(value) < kAmountLimit;
}
