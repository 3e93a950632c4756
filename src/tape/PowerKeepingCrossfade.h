#pragma once

#include <cmath>

namespace oxa
{

// How alike two signals have been lately: their correlation, from one-pole averages of
// their powers and of their product over about the given time.
struct Likeness
{
    double firstPower = 0.0;
    double secondPower = 0.0;
    double crossPower = 0.0;
    double smoothing = 1.0;

    void start(double seconds, double sampleRate) noexcept
    {
        firstPower = secondPower = crossPower = 0.0;
        smoothing = seconds > 0.0 && sampleRate > 0.0 ? 1.0 - std::exp(-1.0 / (seconds * sampleRate)) : 1.0;
    }

    void add(double first, double second) noexcept
    {
        firstPower += smoothing * (first * first - firstPower);
        secondPower += smoothing * (second * second - secondPower);
        crossPower += smoothing * (first * second - crossPower);
    }

    // -1..1 (a rounding beyond is harmless); 1 until both have been heard.
    double correlation() const noexcept
    {
        const double product = firstPower * secondPower;
        return product > 0.0 ? crossPower / std::sqrt(product) : 1.0;
    }
};

// Crossfades two signals that are only partly alike, such as one programme recorded at two
// drives. A plain crossfade of two such signals dips in the middle: half of each adds up
// to less power than either alone (3 dB less when they are unrelated). This one lifts the
// mix by what that dip would be for two equally loud signals as alike as these have been.
struct PowerKeepingCrossfade
{
    // Long enough that the lift does not ride on single waves or on one loud moment.
    static constexpr double averagingSeconds = 0.1;
    // Two signals that cancel are not brought back from nothing.
    static constexpr double maximumLift = 2.0;

    Likeness likeness;

    // Every fade judges its own two signals from scratch.
    void start(double sampleRate) noexcept { likeness.start(averagingSeconds, sampleRate); }

    // share: the incoming signal's weight, 0..1. Share 0 passes the outgoing signal as it is.
    double mix(double outgoing, double incoming, double share) noexcept
    {
        likeness.add(outgoing, incoming);
        const double keep = 1.0 - share;
        const double mixedPower = keep * keep + share * share + 2.0 * keep * share * likeness.correlation();
        return (outgoing + share * (incoming - outgoing)) * lift(mixedPower);
    }

    // The gain that brings a mix of this power (relative to its two equally loud parts)
    // back to theirs, within 1..maximumLift.
    static double lift(double mixedPower) noexcept
    {
        if (!(mixedPower < 1.0))
            return 1.0; // also for NaN: an estimate never poisons the output
        if (mixedPower * maximumLift * maximumLift <= 1.0)
            return maximumLift;
        return 1.0 / std::sqrt(mixedPower);
    }
};

} // namespace oxa
