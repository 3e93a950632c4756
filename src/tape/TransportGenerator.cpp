#include "tape/TransportGenerator.h"

#include <cmath>

namespace oxa
{
namespace
{
constexpr double twoPi = 6.283185307179586;

// depth * sin(angle). At depth 0 the product is a signed zero, which adds nothing to the
// speed factor's sum (never negative zero), so the sine is skipped; a non-finite angle
// keeps it, since there the product is NaN.
inline double swing(double depth, double angle) noexcept
{
    if (depth == 0.0 && std::isfinite(angle))
        return 0.0;
    return depth * std::sin(angle);
}
} // namespace

void TransportGenerator::restoreSeeds() noexcept
{
    randomPair.seed(resetSeedA, resetSeedB);
    randomNext = resetRandomNext;
}

void TransportGenerator::restart() noexcept
{
    restoreSeeds();
    randomPrevious = 0.0;
    randomSlope3 = 0.0;
    randomSlope2 = 0.0;
    wowPhase = 0.0;
    flutterPhase = 0.0;
    randomPhase = 0.0;
    randomValue = 0.0;
    speedDeviationPrevious = 0.0f;
    speedDeviationCurrent = 0.0f;
}

void TransportGenerator::reseed(std::uint32_t r1, std::uint32_t r2) noexcept
{
    const std::uint32_t a = r1 ^ r2;
    randomPair.seed(a, a + r2);
    randomNext = static_cast<float>(r2 * 2.3283064365386963e-10);
}

void TransportGenerator::tick(std::uint64_t tick, double phaseOffset, double nominalSpeed,
                              double* history, std::uint64_t historyLength) noexcept
{
    if (randomPhase >= 1.0)
    {
        // A new cubic segment towards the next random value.
        randomPhase = std::fmod(randomPhase, 1.0);
        randomPrevious = randomValue;
        randomNext = randomPair.next();
        randomSlope2 = (randomNext - randomPrevious) * 3.0;
        randomSlope3 = (randomPrevious - randomNext) * 2.0;
    }
    const double t = randomPhase;
    randomValue = (randomSlope3 * t + randomSlope2) * t * t + randomPrevious;

    double factor = 1.0;
    if (transportOn)
        factor = 1.0 + swing(wowDepth, twoPi * (phaseOffset + wowPhase))
                 + swing(flutterDepth, twoPi * (phaseOffset + flutterPhase)) + randomDepth * randomValue;

    double speed = factor * nominalSpeed;
    // Bad settings must neither stall nor poison the heads' walk.
    if (!std::isfinite(speed))
        speed = nominalSpeed > 0.0 && std::isfinite(nominalSpeed) ? nominalSpeed : 1.0;
    speed = speed < 1e-9 ? 1e-9 : (speed > 1e9 ? 1e9 : speed);

    history[tick % historyLength] = speed;
    speedDeviationPrevious = speedDeviationCurrent;
    speedDeviationCurrent = static_cast<float>(factor - 1.0);

    wowPhase += tickSeconds * wowRate;
    flutterPhase += tickSeconds * flutterRate;
    randomPhase += tickSeconds * randomRate;
}

} // namespace oxa
