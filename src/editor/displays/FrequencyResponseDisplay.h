#pragma once
// What the two response pictures share: a level in dB against a log frequency axis
// from 20 Hz to 20 kHz, clamped to the picture's range, over a faint decade grid and
// a 0 dB line, recomputed only when one of the watched parameters changes. The
// derived picture names its Values, the parameters it watches, its dB range and
// colour, and its level at a frequency.

#include "editor/displays/CurvePlot.h"
#include "editor/displays/ParameterWatch.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <algorithm>
#include <initializer_list>
#include <memory>

namespace oxa
{
class EngineProxy;
class String;

template <class Picture, class ValuesType>
class FrequencyResponseDisplay : public juce::Component
{
public:
    using Values = ValuesType;

    FrequencyResponseDisplay() { setInterceptsMouseClicks(false, false); }

    void setValues(const Values& newValues)
    {
        if (newValues == values)
            return;
        values = newValues;
        curve.invalidate();
        repaint();
    }
    const Values& getValues() const noexcept { return values; }

    // The curve's normalised height (1 at the top) at pixel x across a width.
    static float heightAt(const Values& v, float x, float width)
    {
        constexpr float low = Picture::minimumDb, high = Picture::maximumDb;
        const float db = std::clamp(Picture::decibelsAt(v, CurvePlot::logFrequency(x, width)), low, high);
        return (db - low) / (high - low);
    }

    void paint(juce::Graphics& g) override
    {
        const auto width = static_cast<float>(getWidth());
        const auto height = static_cast<float>(getHeight());
        if (width <= 0.0f || height <= 0.0f)
            return;
        CurvePlot::drawFrequencyGrid(g, width, height);
        CurvePlot::drawLevelLine(g, width, height, -Picture::minimumDb / (Picture::maximumDb - Picture::minimumDb));
        const Values v = values;
        const juce::Path& path = curve.get(width, height, [&] {
            return CurvePlot::trace(width, height, [&](float x) { return heightAt(v, x, width); });
        });
        CurvePlot::stroke(g, path, juce::Colour(Picture::curveColour), 2.0f);
    }

protected:
    // Follows the parameters of the element at the path from now on; `read` turns the
    // watched values, in the order of the ids, into the picture's Values.
    void follow(EngineProxy* proxy, const String& elementPath, std::initializer_list<unsigned> parameterIds,
                Values (*read)(const ParameterWatch&))
    {
        watch.reset();
        watch = std::make_unique<ParameterWatch>(proxy, elementPath, parameterIds,
                                                 [this, read](const ParameterWatch& w) { setValues(read(w)); });
    }

private:
    Values values;
    CurvePlot::CachedCurve curve;
    std::unique_ptr<ParameterWatch> watch;
};
} // namespace oxa
