#pragma once
// The playback head's losses against frequency, 20 Hz to 20 kHz, in dB: spacing,
// thickness, azimuth and the track width's low boost at the chosen tape speed.

#include "editor/displays/CurvePlot.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

namespace oxa
{
class EngineProxy;
class ParameterWatch;
class String;

class PlayHeadResponseDisplay : public juce::Component
{
public:
    // The controls, as the parameters hold them (defaults are the parameters').
    struct Values
    {
        float speed = 1.0f;
        float spacing = 0.0f;
        float thickness = 0.0f;
        float azimuth = 0.0f;
        float trackWidthRatio = 0.8f;
        bool applyPlayheadFilter = true;

        bool operator==(const Values& o) const
        {
            return speed == o.speed && spacing == o.spacing && thickness == o.thickness && azimuth == o.azimuth
                && trackWidthRatio == o.trackWidthRatio && applyPlayheadFilter == o.applyPlayheadFilter;
        }
    };

    static constexpr juce::uint32 curveColour = 0xFFA45756;
    static constexpr float minimumDb = -60.0f, maximumDb = 20.0f;

    PlayHeadResponseDisplay();
    ~PlayHeadResponseDisplay() override;

    void bind(EngineProxy* proxy, const String& elementPath);

    void setValues(const Values& newValues);
    const Values& getValues() const noexcept { return values; }

    // The level the picture shows at a frequency, unclamped (0 dB with the filter off).
    static float decibelsAt(const Values& values, float frequency);
    static float heightAt(const Values& values, float x, float width);

    void paint(juce::Graphics& g) override;

private:
    Values values;
    CurvePlot::CachedCurve curve;
    std::unique_ptr<ParameterWatch> watch;
};
} // namespace oxa
