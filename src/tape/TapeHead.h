#pragma once

#include "tape/LinearRamp.h"

#include <cstdint>

namespace oxa
{

// A play head at a fixed tape distance from the record head. Its delay is not
// set but found: once per tick it walks the speed history until the tape that
// passed since a sample was written adds up to that distance.
struct TapeHead
{
    double delay = 0.06;       // nominal delay, seconds
    double tapeLength = 0.06;  // delay * headSpeed: distance to the record head
    LinearRamp lengthRamp;
    double distance = 0.0;     // tape passed between the read position and now
    std::uint64_t readTick = 1;
    std::uint8_t startup = 1;  // a fresh head jumps to its length, later changes ramp
    double tickRate = 0.0;     // sample rate / 32
    double headSpeed = 1.0;
    std::uint64_t ticks = 0;
    double previousDelay = 0.0; // ticks
    double currentDelay = 0.0;  // ticks

    void prepare(double newTickRate) noexcept;
    void reset() noexcept;

    void setDelay(double seconds) noexcept;
    void setSpeed(double speed) noexcept;

    // history holds historyLength speeds; the transport has just written the
    // entry of tick.
    void tick(std::uint64_t tick, const double* history, std::uint64_t historyLength) noexcept;

    // Read position in samples behind the current one, offsetInTick 0..31. A head whose
    // tape passed in n ticks reads the sample written n * 32 samples ago, so that the
    // forward head stays in time with a dry path delayed by the same nominal time.
    double delayInSamples(std::uint32_t offsetInTick) const noexcept
    {
        return (currentDelay - previousDelay) * offsetInTick + (previousDelay + 1.0) * 32.0;
    }

    // Linear interpolation from ring (ringLength entries) at the delay of
    // offsetInTick, with writeIndex the slot of the current sample.
    double read(const double* ring, std::uint64_t ringLength, std::uint64_t writeIndex,
                std::uint32_t offsetInTick) const noexcept
    {
        return readAt(ring, ringLength, writeIndex, delayInSamples(offsetInTick));
    }

    static double readAt(const double* ring, std::uint64_t ringLength, std::uint64_t writeIndex,
                         double delaySamples) noexcept
    {
        return readWithin(ring, ringLength, deepestDelay(ringLength), writeIndex, delaySamples);
    }

    // The deepest delay readAt() reads at; a block loop finds it once.
    static double deepestDelay(std::uint64_t ringLength) noexcept { return static_cast<double>(ringLength - 2); }

    // readAt() with the ring's deepest delay already known.
    [[gnu::always_inline]] static double readWithin(const double* ring, std::uint64_t ringLength, double deepest, std::uint64_t writeIndex,
                             double delaySamples) noexcept
    {
        // A head that walked the whole history (blank tape after a reset) would otherwise
        // wrap round to the sample being written; it reads the oldest pair at most.
        if (delaySamples > deepest)
            delaySamples = deepest;
        else if (!(delaySamples >= 0.0)) // a broken head reads the present, not past the ring
            delaySamples = 0.0;
        const auto whole = static_cast<std::int64_t>(delaySamples);
        const double fraction = delaySamples - static_cast<double>(whole);
        const auto n = static_cast<std::int64_t>(ringLength);
        std::int64_t newer = static_cast<std::int64_t>(writeIndex) - whole;
        while (newer < 0)
            newer += n;
        const std::int64_t older = newer == 0 ? n - 1 : newer - 1;
        return fraction * ring[older] + (1.0 - fraction) * ring[newer];
    }

private:
    void applyLength() noexcept;
};

} // namespace oxa
