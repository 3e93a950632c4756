#pragma once

#include <cstdint>

namespace oxa
{

// Loss from a tilted head gap: a running mean over the time the tape needs to pass the
// tilt, built as a comb with fractional length and a slightly leaky integrator.
class AzimuthFilter
{
public:
    // Long enough for the longest mean: azimuth 0.001 at speed 0.1 and 192 kHz.
    static constexpr uint32_t ringSize = 612;

    void prepare (double sampleRate) noexcept;
    void clear() noexcept;

    // Both return false and keep the old design for values that are not positive and finite.
    bool setSpeed (double newSpeed) noexcept;
    bool setAzimuth (double newAzimuth) noexcept;

    double getSpeed() const noexcept { return speed; }
    double getAzimuth() const noexcept { return azimuth; }
    double getLength() const noexcept { return length; }

    double process (double x) noexcept
    {
        const uint32_t first = olderTap (position, delay);
        const uint32_t second = oldestTap (first);
        const double y = combine (g0, g1, g2, p1, p2, x, ring[first], ring[second], y1, y2);
        ring[position] = x;
        position = nextPosition (position);
        return y;
    }

    // Ring arithmetic without a division: position < ringSize and 1 <= delay < ringSize.
    static uint32_t olderTap (uint32_t position, uint32_t delay) noexcept
    {
        return position >= delay ? position - delay : position + ringSize - delay;
    }
    static uint32_t oldestTap (uint32_t older) noexcept { return older == 0 ? ringSize - 1 : older - 1; }
    static uint32_t nextPosition (uint32_t position) noexcept { return position + 1 == ringSize ? 0 : position + 1; }

    // The comb and the integrator for a double or for lanes of several decks, in the same
    // operations; older and oldest are the ring's two taps. Moves the integrator's history on.
    template <class T>
    static T combine (T g0, T g1, T g2, T p1, T p2, T x, T older, T oldest, T& y1, T& y2) noexcept
    {
        const T y = g0 * x + g1 * older + g2 * oldest - p1 * y1 - p2 * y2;
        y2 = y1;
        y1 = y;
        return y;
    }

private:
    friend class PlaybackChainsInLanes;
    void redesign() noexcept;

    double sampleRate = 48000.0;
    double speed = 1.0;
    double azimuth = 0.0001;
    double length = 1.0;
    uint32_t delay = 1;
    double g0 = 1.0, g1 = -1.0, g2 = 0.0;
    double p1 = -0.9999, p2 = 0.0;
    double ring[ringSize] {};
    uint32_t position = 0;
    double y1 = 0.0, y2 = 0.0;
};

} // namespace oxa
