#pragma once
// Two cycles of a sine as the record head passes them on: rounded and bent by
// the magnetisation law, shifted by its high-pass. The picture runs its own copy
// of the head model, so it never touches the audio.

#include "editor/displays/RecordHeadValues.h"
#include "tape/RecordHead.h"

#include "editor/displays/CurvePlot.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>
#include <vector>

namespace oxa
{
class EngineProxy;
class ParameterWatch;
class String;

class MagneticWaveformDisplay : public juce::Component
{
public:
    using Values = RecordHeadValues;

    static constexpr juce::uint32 curveColour = 0xFF6B82B2;

    MagneticWaveformDisplay();
    ~MagneticWaveformDisplay() override;

    void bind(EngineProxy* proxy, const String& elementPath);

    void setValues(const Values& newValues);
    const Values& getValues() const noexcept { return values; }

    // The normalised heights (1 at the top) of the points of the picture, one a
    // quarter pixel from 0 to the width. A whole first cycle through the model
    // settles it; the second pass is the one drawn.
    std::vector<float> heights(float width);

    void paint(juce::Graphics& g) override;

private:
    Values values;
    CurvePlot::CachedCurve curve;
    RecordHead model;
    std::unique_ptr<ParameterWatch> watch;
};
} // namespace oxa
