#pragma once
// From a control's value (the parameter as the host and the window see it) to the
// physical value a deck stage is designed with. The parameter setters and the
// window's response pictures both go through these, so a picture always shows the
// head the audio runs through.

#include "tape/PlaybackFilterChain.h"

#include <cmath>

namespace oxa::TapeControls
{
// Record head: the anhysteretic law's hardness, 5 (soft, hardness 0) down to 1.
inline double recordHardness(float magneticHardness) noexcept
{
    return 5.0 - 4.0 * magneticHardness;
}

// Record head: the resistance that sets its magnetic high-pass, 100 to 100000.
inline double recordResistance(float hysteresis) noexcept
{
    return 100.0 * std::pow(10.0, 3.0 * hysteresis);
}

// Tape speed, 1 nominal; rounded to single precision as the decks store it.
inline float tapeSpeed(float speed) noexcept
{
    return static_cast<float>(0.1 * std::pow(10.0, static_cast<double>(speed)));
}

inline double headSpacing(float spacing) noexcept
{
    return 1e-5f * std::pow(10.0f, spacing);
}

inline double tapeThickness(float thickness) noexcept
{
    return static_cast<double>(0.000005f) * std::pow(10.0, static_cast<double>(thickness));
}

inline double headAzimuth(float azimuth) noexcept
{
    return 0.00090000004 * azimuth + 0.0001;
}

inline double trackWidthRatio(float trackWidthRatio) noexcept
{
    return 0.9 * trackWidthRatio + 1.1;
}

// The whole playback head from its five controls.
inline PlaybackHeadSettings playbackHead(float speed, float spacing, float thickness, float azimuth,
                                         float widthRatio) noexcept
{
    PlaybackHeadSettings head;
    head.speed = tapeSpeed(speed);
    head.spacing = headSpacing(spacing);
    head.thickness = tapeThickness(thickness);
    head.azimuth = headAzimuth(azimuth);
    head.ratio = trackWidthRatio(widthRatio);
    return head;
}
} // namespace oxa::TapeControls
