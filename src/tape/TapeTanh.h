#pragma once

#include <cmath>

namespace oxa
{

// tanh for the deck's saturator. Most samples reach it with small arguments,
// where the odd Taylor series through x^15 is exact to below an ulp
// (its first dropped term is about 1e-19 of x); larger ones take std::tanh.
inline double tapeTanh(double x) noexcept
{
    if (!(std::fabs(x) < 0.0625))
        return std::tanh(x);
    const double z = x * x;
    const double series =
        -1.0 / 3.0
        + z * (2.0 / 15.0
               + z * (-17.0 / 315.0
                      + z * (62.0 / 2835.0
                             + z * (-1382.0 / 155925.0 + z * (21844.0 / 6081075.0 + z * (-929569.0 / 638512875.0))))));
    return x + (x * z) * series;
}

} // namespace oxa
