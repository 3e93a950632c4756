#pragma once

#include "tape/AzimuthFilter.h"
#include "tape/SpacingFilter.h"
#include "tape/ThicknessFilter.h"
#include "tape/TrackWidthFilter.h"

namespace oxa
{

// The design values of a playback head. Lengths and speed share one system of units;
// speed 1 is nominal.
struct PlaybackHeadSettings
{
    double speed = 1.0;
    double spacing = 0.00001;
    double thickness = 0.000005;
    double azimuth = 0.0001;
    double ratio = 1.82;
};

// The physical losses the filters fit, as magnitudes at a frequency in hertz. Pure
// functions, so that response pictures draw exactly what the compensation assumes.
namespace PlaybackHeadResponse
{
    double spacingLoss (double frequency, double speed, double spacing) noexcept;
    double thicknessLoss (double frequency, double speed, double thickness) noexcept;
    double trackWidthBoost (double frequency, double speed, double ratio) noexcept;
    double azimuthLoss (double frequency, double speed, double azimuth) noexcept;

    // |boost * azimuth * thickness * spacing| at one frequency.
    double magnitude (double frequency, const PlaybackHeadSettings& settings) noexcept;

    // Feedback gain that undoes the head's gain at 20 Hz, so that a loop through a
    // boosting head stays below unity.
    float feedbackCompensation (const PlaybackHeadSettings& settings) noexcept;
} // namespace PlaybackHeadResponse

// The playback head as a chain of IIR filters. Setters redesign on the calling thread
// and keep the filter histories; process() runs per sample on the audio thread.
class PlaybackFilterChain
{
public:
    PlaybackFilterChain();

    void prepare (double sampleRate) noexcept;
    void reset() noexcept;

    // Switching clears every history, in either direction.
    void setOn (bool shouldBeOn) noexcept;
    bool isOn() const noexcept { return on; }

    // Each returns false and changes nothing for an unusable value (not finite, not
    // positive; a ratio not above 1).
    bool setSpeed (double speed) noexcept;
    bool setSpacing (double spacing) noexcept;
    bool setThickness (double thickness) noexcept;
    bool setAzimuth (double azimuth) noexcept;
    bool setTrackWidthRatio (double ratio) noexcept;

    PlaybackHeadSettings getSettings() const noexcept;

    // The compensation for the current settings, whether the chain is on or not.
    float feedbackCompensation() const noexcept;

    double process (double x) noexcept
    {
        if (! on)
            return x;
        return azimuth.process (trackWidth.process (thickness.process (spacing.process (x))));
    }

    const SpacingFilter& getSpacingFilter() const noexcept { return spacing; }
    const ThicknessFilter& getThicknessFilter() const noexcept { return thickness; }
    const AzimuthFilter& getAzimuthFilter() const noexcept { return azimuth; }
    const TrackWidthFilter& getTrackWidthFilter() const noexcept { return trackWidth; }

private:
    friend class PlaybackChainsInLanes;
    SpacingFilter spacing;
    ThicknessFilter thickness;
    AzimuthFilter azimuth;
    TrackWidthFilter trackWidth;
    bool on = true;
    // Counts reset() calls, so that a block that worked on copies of the histories can
    // tell whether a setter cleared them meanwhile.
    unsigned clears = 0;
};

} // namespace oxa
