#include "tape/RecordHead.h"

#include <cmath>
#include <cstdlib>

namespace oxa
{
namespace
{
// Above this argument tanhf rounds to exactly 1.
constexpr float tanhfSaturation = 10.0f;

inline double antiderivative(double m, double a) noexcept
{
    return (0.0224778046 * m * m + a * 0.5 - 0.427861251) * m * m;
}

inline double anhysteretic(double m, double a) noexcept
{
    return (a - 0.855722502 + 0.0899112184 * m * m) * m;
}
} // namespace

void RecordHead::prepare(double newSampleRate)
{
    sampleRate = newSampleRate;
    const auto first = static_cast<std::uint32_t>(std::rand());
    const auto second = static_cast<std::uint32_t>(std::rand());
    random.seed(first, second);
    for (float& row : noiseRows)
        row = 0.0f;
    noiseSum = 0.0f;
    gateEnvelope = 0.0;
    noiseCounter = 1;
    const double span = 2.0 * gateTime * sampleRate;
    gateCoefficient = (span - 1.0) / (span + 1.0);
    magnetisation = 0.0;
    step = 0.0;
}

void RecordHead::reset() noexcept
{
    magnetisation = 0.0;
    step = 0.0;
    gateEnvelope = 0.0;
}

void RecordHead::setOn(bool enabled) noexcept
{
    on = enabled ? 1 : 0;
    reset();
}

void RecordHead::setGateOn(bool enabled) noexcept
{
    gateOn = enabled ? 1 : 0;
    reset();
}

double RecordHead::makeupGain(double drive, double hardness, double resistance) noexcept
{
    const double exponent = 1.0 - (1.0 - hardness * 0.2) * (resistance - 100.0) * 5.005005005005005e-6;
    return std::pow(std::tanh(drive * 0.01) * 100.0, exponent);
}

float RecordHead::nextNoise() noexcept
{
    // Pink noise: row j changes every 2^j samples.
    std::uint32_t j = 0;
    while (j < 4 && (noiseCounter & (1u << j)) == 0)
        ++j;
    const float old = noiseRows[j];
    float total = noiseSum;
    bool accepted = false;
    // The sum stays bounded; the draw count is capped so a broken state can never hang.
    for (int attempt = 0; attempt < 64 && !accepted; ++attempt)
    {
        const float u = random.next();
        noiseRows[j] = u;
        total = noiseSum + (u - old);
        accepted = total >= -8.0f && total <= 8.0f;
    }
    if (accepted)
        noiseSum = total;
    else
    {
        noiseRows[j] = old;
        total = noiseSum;
    }
    const float w = random.next();
    ++noiseCounter;
    return (w + total) * 0.25f;
}

double RecordHead::process(double h) noexcept
{
    if (!on)
        return h;

    float noise = nextNoise();
    if (gateOn)
    {
        gateEnvelope = static_cast<float>(std::fabs(h) * (1.0 - gateCoefficient) + gateCoefficient * gateEnvelope);
        const float opening = static_cast<float>(gateEnvelope) * 100.0f;
        if (opening < tanhfSaturation)
            noise *= std::tanh(opening);
    }
    const double drivenH = noise * noiseLevel + h;
    input = drivenH;

    // Newton on  H = mean of G over the step + (fs / k) * step.
    const double m0 = magnetisation;
    const double f0 = antiderivative(m0, a);
    const double fsOverK = sampleRate / k;
    double x = step;
    double correction = 1.0;
    for (int pass = 0; pass < 10 && std::fabs(correction) > 1e-6; ++pass)
    {
        const double s = m0 + x;
        const double inverseStep = 1.0 / (x + 1e-16);
        const double mean = (antiderivative(s, a) - f0) * inverseStep;
        correction = -(drivenH - mean - fsOverK * x) / ((anhysteretic(s, a) - mean) * inverseStep + fsOverK + 1e-16);
        x -= correction;
    }
    if (!std::isfinite(x))
        x = 0.0; // never let one bad sample poison the integrator

    step = x;
    const double m = m0 + x;
    magnetisation = m;
    const double m2 = m * m;
    const double d = (0.05 * m2 + 0.5) * m2 + 1.0;
    return x * fsOverK / (d * d);
}

} // namespace oxa
