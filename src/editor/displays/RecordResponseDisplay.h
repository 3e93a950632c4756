#pragma once
// The record head's small-signal frequency response, 20 Hz to 20 kHz, in dB:
// the magnetic high-pass that MagneticHardness and Hysteresis move.

#include "editor/displays/FrequencyResponseDisplay.h"
#include "editor/displays/RecordHeadValues.h"

namespace oxa
{
class RecordResponseDisplay : public FrequencyResponseDisplay<RecordResponseDisplay, RecordHeadValues>
{
public:
    static constexpr juce::uint32 curveColour = 0xFF6B82B2;
    static constexpr float minimumDb = -70.0f, maximumDb = 20.0f;

    // Follows the three parameters of the element at the path from now on.
    void bind(EngineProxy* proxy, const String& elementPath);

    // The level the picture shows at a frequency, unclamped (0 dB with the head off).
    static float decibelsAt(const Values& values, float frequency);
};
} // namespace oxa
