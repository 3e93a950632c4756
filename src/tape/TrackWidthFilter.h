#pragma once

#include "tape/SpacingFilter.h"

namespace oxa
{

// Low-frequency boost of a playback head narrower than the recorded track: a fit of
// 1 + (1 - exp(-k w base)) / (k base), w = ratio - 1.
class TrackWidthFilter
{
public:
    static constexpr double base = 0.0005;

    void prepare (double sampleRate) noexcept;
    void clear() noexcept { section.clear(); }

    // setSpeed refuses values that are not positive and finite, setRatio values that
    // are not above 1; the old design stays.
    bool setSpeed (double newSpeed) noexcept;
    bool setRatio (double newRatio) noexcept;

    double getSpeed() const noexcept { return speed; }
    double getRatio() const noexcept { return ratio; }
    const FifthOrderSection& getSection() const noexcept { return section; }

    double process (double x) noexcept { return section.process (x); }

private:
    friend class PlaybackChainsInLanes;
    void redesign() noexcept;

    double sampleRate = 48000.0;
    double speed = 1.0;
    double ratio = 1.82;
    FifthOrderSection section;
};

} // namespace oxa
