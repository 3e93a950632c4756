#pragma once

#include "tape/RandomPair.h"

#include <cstdint>

namespace oxa
{

// Wow, flutter and a smoothed random drift, summed into one tape speed factor
// per 32-sample tick and written into the deck's speed history.
struct TransportGenerator
{
    static constexpr std::uint32_t resetSeedA = 282491734;
    static constexpr std::uint32_t resetSeedB = 564966983;
    static constexpr double resetRandomNext = 0.0657688940409571;

    double wowDepth = 0.0;     // 0.3 * wow control
    double wowRate = 0.1;      // Hz
    double flutterDepth = 0.0; // 0.05 * flutter control
    double flutterRate = 5.0;  // Hz
    double randomDepth = 0.0;  // 0.1 * random control
    double randomRate = 10.0;  // Hz

    RandomPair randomPair{resetSeedA, resetSeedB};
    double randomPrevious = 0.0;
    double randomNext = resetRandomNext;
    double randomSlope3 = 0.0;
    double randomSlope2 = 0.0;
    double wowPhase = 0.0;
    double flutterPhase = 0.0;
    double randomPhase = 0.0;
    double randomValue = 0.0;

    std::uint8_t transportOn = 1;
    float speedDeviationPrevious = 0.0f;
    float speedDeviationCurrent = 0.0f;
    double tickSeconds = 0.0; // 32 / sample rate

    void prepare(double sampleRate) noexcept { tickSeconds = 32.0 / sampleRate; }

    // Back to the shared seeds, so that all decks drift alike.
    void restoreSeeds() noexcept;
    // Shared seeds, and wow, flutter and drift from their start, so that a
    // replay from the same start wavers exactly as the last one did.
    void restart() noexcept;
    // Seeds of a deck's own, so that decks drift apart.
    void reseed(std::uint32_t r1, std::uint32_t r2) noexcept;

    // One tick: writes the speed (factor times nominal speed) for tick index
    // tick into history, which has historyLength entries.
    void tick(std::uint64_t tick, double phaseOffset, double nominalSpeed,
              double* history, std::uint64_t historyLength) noexcept;

    // The deviation from nominal speed at sample offset 0..31 within a tick,
    // for the monitor.
    float deviationAt(std::uint32_t offsetInTick) const noexcept
    {
        return (speedDeviationCurrent - speedDeviationPrevious) * 0.03125f * static_cast<float>(offsetInTick)
               + speedDeviationPrevious;
    }
};

} // namespace oxa
