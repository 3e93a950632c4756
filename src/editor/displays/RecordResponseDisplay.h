#pragma once
// The record head's small-signal frequency response, 20 Hz to 20 kHz, in dB:
// the magnetic high-pass that MagneticHardness and Hysteresis move.

#include "editor/displays/RecordHeadValues.h"

#include "editor/displays/CurvePlot.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

namespace oxa
{
class EngineProxy;
class ParameterWatch;
class String;

class RecordResponseDisplay : public juce::Component
{
public:
    using Values = RecordHeadValues;

    static constexpr juce::uint32 curveColour = 0xFF6B82B2;
    static constexpr float minimumDb = -70.0f, maximumDb = 20.0f;

    RecordResponseDisplay();
    ~RecordResponseDisplay() override;

    // Follows the three parameters of the element at the path from now on.
    void bind(EngineProxy* proxy, const String& elementPath);

    void setValues(const Values& newValues);
    const Values& getValues() const noexcept { return values; }

    // The level the picture shows at a frequency, unclamped (0 dB with the head off).
    static float decibelsAt(const Values& values, float frequency);
    // The curve's normalised height (1 at the top) at pixel x across a width.
    static float heightAt(const Values& values, float x, float width);

    void paint(juce::Graphics& g) override;

private:
    Values values;
    CurvePlot::CachedCurve curve;
    std::unique_ptr<ParameterWatch> watch;
};
} // namespace oxa
