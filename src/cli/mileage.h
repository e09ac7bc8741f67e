#pragma once

namespace cli
{

// The amount of a mileage expense: distance times rate, rounded to cents with a half
// cent rounding up. Distances are whole units and the rate a single-precision value,
// as the expense editor keeps them.
double MileageAmount(int distance, float rate);

} // namespace cli
