#pragma once

#include <cmath>

namespace oxa
{

// The most a deck's tape gives back. Below the knee the level passes untouched; above
// it, it bends smoothly towards the ceiling, as tape does when driven into saturation,
// and never passes it. A deck's output is also what its feedback head reads back, so a
// loop that runs away settles into a saturated tone at a level a speaker survives.
struct TapeCeiling
{
    static constexpr double knee = 2.5;      // +8 dBFS: above what full-scale programme reaches with compensation on
    static constexpr double ceiling = 3.981; // +12 dBFS

    static double apply(double x) noexcept
    {
        const double magnitude = std::fabs(x);
        if (magnitude <= knee)
            return x;
        // Slope 1 at the knee, so the bend adds no corner of its own.
        constexpr double room = ceiling - knee;
        const double bent = knee + room * std::tanh((magnitude - knee) / room);
        return std::copysign(bent, x);
    }
};

} // namespace oxa
