#include "model/money.h"

#include <algorithm>
#include <cmath>

namespace conferix {

double RoundMoney(long double value) {
    long double cents = 0;
    const long double rest = std::abs(std::modf(value * 100.0L, &cents));
    if (std::round(rest * 10000.0L) >= 5000.0L)
        cents += std::copysign(1.0L, value);
    // Adding zero takes the sign off a negative zero.
    return static_cast<double>(cents) / 100.0 + 0.0;
}

bool SameMoney(double a, double b) {
    constexpr double kTolerance = 1e-12;
    return std::abs(a - b) <= std::max(std::min(std::abs(a), std::abs(b)) * kTolerance, kTolerance);
}

} // namespace conferix
