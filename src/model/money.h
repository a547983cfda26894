// Arithmetic of amounts in reais.
#pragma once

namespace conferix {

/// An amount rounded to cents, half away from zero. What remains after the cents is itself rounded to four
/// decimals first, so that 1.005, whose double lies just below, gives 1.01.
double RoundMoney(long double value);

/// Whether two amounts are the same but for the noise of binary arithmetic: they differ by at most one part
/// in 10^12 of the smaller, or by 10^-12.
bool SameMoney(double a, double b);

} // namespace conferix
