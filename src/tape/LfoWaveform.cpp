#include "tape/LfoWaveform.h"

#include <cmath>

namespace oxa
{
namespace
{
// powf(x, 1) is x exactly; the default shape takes this short road.
inline float raise(float x, float exponent) noexcept
{
    return exponent == 1.0f ? x : std::pow(x, exponent);
}
} // namespace

LfoWaveform::LfoWaveform(float phase_, float shape, float symmetry_, float swing_) noexcept
    : phase(phase_), exponent(shapeExponent(shape)), symmetry(symmetry_), swing(swing_)
{
}

float LfoWaveform::shapeExponent(float shape) noexcept
{
    return std::pow((shape + 1.0f) / (1.0f - shape), 1.41f);
}

float LfoWaveform::normaliser(float shape) noexcept
{
    return 1.0f / LfoWaveform(0.0f, shape, 0.0f, 0.0f)(0.25f);
}

float LfoWaveform::operator()(float t) const noexcept
{
    const float swingAmount = swing * 0.33333334f;
    float u = std::fmod(2.0f * t, 4.0f) * 0.5f - 1.0f;
    if (swingAmount != 0.0f)
        u = (u - swingAmount) / (u > swingAmount ? 1.0f - swingAmount : 1.0f + swingAmount);

    float q = std::fmod((symmetry + 1.0f) * 0.5f - 2.0f * phase + 2.0f * u + 4.0f, 2.0f) - 1.0f;
    if (symmetry != 0.0f)
    {
        if (symmetry < -0.999999f)
            q = (q + 1.0f) * 0.5f;
        else if (symmetry > 0.999999f)
            q = (q - 1.0f) * 0.5f;
        else
            q = (q - symmetry) / (q >= symmetry ? 1.0f - symmetry : 1.0f + symmetry);
    }

    const float magnitude = std::fabs(q);
    if (magnitude * 0.99f > 0.495f)
        return raise(2.0f * (0.995f - magnitude * 0.99f), exponent) - 1.0f;
    return 1.0f - raise(magnitude * 1.98f + 0.01f, exponent);
}

float lfoWaveform(float t, float phase, float shape, float symmetry, float swing) noexcept
{
    return LfoWaveform(phase, shape, symmetry, swing)(t);
}

double manualCrossfade(double flangePhase, double fade) noexcept
{
    const auto half = [fade](double x) {
        if (x > fade)
            return 0.5;
        return (-x / (fade * fade * fade) + 1.5 / (fade * fade)) * x * x;
    };
    return half(1.0 - flangePhase) + half(flangePhase) - 0.5;
}

} // namespace oxa
