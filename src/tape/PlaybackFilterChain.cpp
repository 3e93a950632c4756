#include "tape/PlaybackFilterChain.h"

#include <cmath>

namespace oxa
{

namespace
{
    constexpr double twoPi = 6.283185307179586;

    double waveNumber (double frequency, double speed) noexcept { return twoPi * frequency / speed; }

    // Each term falls back to its limit where the closed form would divide by zero.
    double boostTerm (double k, double ratio) noexcept
    {
        const double inverseBase = static_cast<double> (1999.9999f);
        if (k < 1e-12)
            return ratio;
        return 1.0 + (1.0 - std::exp (-(ratio - 1.0) * k * TrackWidthFilter::base)) * (inverseBase / k);
    }

    double azimuthTerm (double k, double azimuth) noexcept
    {
        const double x = k * azimuth / twoPi;
        return std::abs (x) < 1e-12 ? 1.0 : std::sin (x) / x;
    }

    double thicknessTerm (double k, double thickness) noexcept
    {
        const double kt = k * thickness;
        return std::abs (kt) < 1e-12 ? 1.0 : (1.0 - std::exp (-kt)) / kt;
    }

    double spacingTerm (double k, double spacing) noexcept { return std::exp (-k * spacing); }

    double headMagnitude (double k, const PlaybackHeadSettings& s) noexcept
    {
        return std::abs (boostTerm (k, s.ratio) * azimuthTerm (k, s.azimuth) * thicknessTerm (k, s.thickness)
                         * spacingTerm (k, s.spacing));
    }

    float gainToDecibels (double gain) noexcept
    {
        return gain < 1e-20 ? -400.0f : static_cast<float> (std::log (gain) * 8.6858892);
    }

    float decibelsToGain (float decibels) noexcept { return std::exp (decibels * 0.115129254758358f); }
} // namespace

namespace PlaybackHeadResponse
{
    double spacingLoss (double frequency, double speed, double spacing) noexcept
    {
        return spacingTerm (waveNumber (frequency, speed), spacing);
    }

    double thicknessLoss (double frequency, double speed, double thickness) noexcept
    {
        return thicknessTerm (waveNumber (frequency, speed), thickness);
    }

    double trackWidthBoost (double frequency, double speed, double ratio) noexcept
    {
        return boostTerm (waveNumber (frequency, speed), ratio);
    }

    double azimuthLoss (double frequency, double speed, double azimuth) noexcept
    {
        return azimuthTerm (waveNumber (frequency, speed), azimuth);
    }

    double magnitude (double frequency, const PlaybackHeadSettings& settings) noexcept
    {
        return headMagnitude (waveNumber (frequency, settings.speed), settings);
    }

    float feedbackCompensation (const PlaybackHeadSettings& settings) noexcept
    {
        const double k = static_cast<float> (20.0 * twoPi / settings.speed);
        const double m = decibelsToGain (gainToDecibels (headMagnitude (k, settings)));
        return static_cast<float> (1.0 / (m + 1e-16));
    }
} // namespace PlaybackHeadResponse

PlaybackFilterChain::PlaybackFilterChain()
{
    prepare (48000.0);
}

void PlaybackFilterChain::prepare (double sampleRate) noexcept
{
    spacing.prepare (sampleRate);
    thickness.prepare (sampleRate);
    azimuth.prepare (sampleRate);
    trackWidth.prepare (sampleRate);
}

void PlaybackFilterChain::reset() noexcept
{
    ++clears;
    spacing.clear();
    thickness.clear();
    azimuth.clear();
    trackWidth.clear();
}

void PlaybackFilterChain::setOn (bool shouldBeOn) noexcept
{
    on = shouldBeOn;
    reset();
}

bool PlaybackFilterChain::setSpeed (double speed) noexcept
{
    if (! (std::isfinite (speed) && speed > 0.0))
        return false;
    spacing.setSpeed (speed);
    thickness.setSpeed (speed);
    azimuth.setSpeed (speed);
    trackWidth.setSpeed (speed);
    return true;
}

bool PlaybackFilterChain::setSpacing (double value) noexcept { return spacing.setSpacing (value); }
bool PlaybackFilterChain::setThickness (double value) noexcept { return thickness.setThickness (value); }
bool PlaybackFilterChain::setAzimuth (double value) noexcept { return azimuth.setAzimuth (value); }
bool PlaybackFilterChain::setTrackWidthRatio (double value) noexcept { return trackWidth.setRatio (value); }

PlaybackHeadSettings PlaybackFilterChain::getSettings() const noexcept
{
    PlaybackHeadSettings s;
    s.speed = spacing.getSpeed();
    s.spacing = spacing.getSpacing();
    s.thickness = thickness.getThickness();
    s.azimuth = azimuth.getAzimuth();
    s.ratio = trackWidth.getRatio();
    return s;
}

float PlaybackFilterChain::feedbackCompensation() const noexcept
{
    return PlaybackHeadResponse::feedbackCompensation (getSettings());
}

} // namespace oxa
