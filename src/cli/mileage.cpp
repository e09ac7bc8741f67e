#include "cli/mileage.h"

#include <cmath>

namespace cli
{

double MileageAmount(int distance, float rate)
{
    const double cents = double(distance) * double(rate) * 100.0;
    double whole = std::floor(cents);
    if (cents - whole >= 0.5)
        whole += 1.0;
    return whole / 100.0;
}

} // namespace cli
