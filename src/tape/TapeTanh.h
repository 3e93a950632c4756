#pragma once

#include "tape/Lanes.h"

#include <cmath>

namespace oxa
{

// The odd Taylor series of tanh through x^15, for a double or for lanes of several
// decks in the same operations. Exact to below an ulp while |x| < 0.0625 (its first
// dropped term is about 1e-19 of x).
template <class T>
inline T tapeTanhSeries(T x) noexcept
{
    const T z = x * x;
    const T series =
        -1.0 / 3.0
        + z * (2.0 / 15.0
               + z * (-17.0 / 315.0
                      + z * (62.0 / 2835.0
                             + z * (-1382.0 / 155925.0 + z * (21844.0 / 6081075.0 + z * (-929569.0 / 638512875.0))))));
    return x + (x * z) * series;
}

// tanh for the deck's saturator. Most samples reach it with small arguments, which take
// the series; larger ones take std::tanh.
inline double tapeTanh(double x) noexcept
{
    if (!(std::fabs(x) < 0.0625))
        return std::tanh(x);
    return tapeTanhSeries(x);
}

// tapeTanh on each lane, bit for bit.
[[gnu::always_inline]] inline Lanes tapeTanh(Lanes x) noexcept
{
    const LaneMask small = abs(x) < Lanes(0.0625);
    const Lanes series = tapeTanhSeries(x);
    if (small.every())
        return series;
    return Lanes(small.first() ? series.first() : std::tanh(x.first()),
                 small.second() ? series.second() : std::tanh(x.second()));
}

} // namespace oxa
