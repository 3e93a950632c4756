#include "engine/instrument/BandLimitedOscillator.h"

#include <cmath>

namespace oxa
{
namespace
{
constexpr double twoPi = 6.283185307179586;

/** The difference between a band-limited unit step and a hard one, around a jump at
    phase 0, for a phase `t` in 0..1 advancing by `dt` a sample. */
double stepResidual(double t, double dt)
{
    if (t < dt)
    {
        const double x = t / dt;
        return x + x - x * x - 1.0;
    }
    if (t > 1.0 - dt)
    {
        const double x = (t - 1.0) / dt;
        return x * x + x + x + 1.0;
    }
    return 0.0;
}
} // namespace

float BandLimitedOscillator::next(int waveform, double dt)
{
    if (!(dt > 0.0) || dt >= 0.5)
        dt = 0.0;
    const double t = phase;
    double v = 0.0;
    switch (waveform)
    {
        case sawtooth:
            v = 2.0 * t - 1.0 - stepResidual(t, dt);
            break;
        case square:
        {
            double half = t + 0.5;
            if (half >= 1.0)
                half -= 1.0;
            v = (t < 0.5 ? 1.0 : -1.0) + stepResidual(t, dt) - stepResidual(half, dt);
            break;
        }
        default:
            v = std::sin(twoPi * t);
            break;
    }
    phase += dt;
    if (phase >= 1.0)
        phase -= 1.0;
    return (float) v;
}
} // namespace oxa
