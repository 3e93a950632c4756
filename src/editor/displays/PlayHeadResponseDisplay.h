#pragma once
// The playback head's losses against frequency, 20 Hz to 20 kHz, in dB: spacing,
// thickness, azimuth and the track width's low boost at the chosen tape speed.

#include "editor/displays/FrequencyResponseDisplay.h"

namespace oxa
{
// The controls, as the parameters hold them (defaults are the parameters').
struct PlayHeadValues
{
    float speed = 1.0f;
    float spacing = 0.0f;
    float thickness = 0.0f;
    float azimuth = 0.0f;
    float trackWidthRatio = 0.8f;
    bool applyPlayheadFilter = true;

    bool operator==(const PlayHeadValues& o) const
    {
        return speed == o.speed && spacing == o.spacing && thickness == o.thickness && azimuth == o.azimuth
            && trackWidthRatio == o.trackWidthRatio && applyPlayheadFilter == o.applyPlayheadFilter;
    }
};

class PlayHeadResponseDisplay : public FrequencyResponseDisplay<PlayHeadResponseDisplay, PlayHeadValues>
{
public:
    static constexpr juce::uint32 curveColour = 0xFFA45756;
    static constexpr float minimumDb = -60.0f, maximumDb = 20.0f;

    void bind(EngineProxy* proxy, const String& elementPath);

    // The level the picture shows at a frequency, unclamped (0 dB with the filter off).
    static float decibelsAt(const Values& values, float frequency);
};
} // namespace oxa
