#include "editor/displays/RecordResponseDisplay.h"

#include "editor/displays/CurvePlot.h"
#include "editor/displays/ParameterWatch.h"
#include "tape/FluxDeckParameters.h"
#include "tape/RecordHead.h"
#include "tape/TapeControls.h"

#include <algorithm>

namespace oxa
{
RecordResponseDisplay::RecordResponseDisplay()
{
    setInterceptsMouseClicks(false, false);
}

RecordResponseDisplay::~RecordResponseDisplay() = default;

void RecordResponseDisplay::bind(EngineProxy* proxy, const String& elementPath)
{
    const auto& id = FluxDeckParameters::ids();
    watch.reset();
    watch = std::make_unique<ParameterWatch>(proxy, elementPath,
                                             std::initializer_list<unsigned>{id.magneticHardness, id.hysteresis,
                                                                             id.applyRecordHead},
                                             [this](const ParameterWatch& w) {
                                                 setValues({w[0], w[1], w[2] != 0.0f});
                                             });
}

void RecordResponseDisplay::setValues(const Values& newValues)
{
    if (newValues == values)
        return;
    values = newValues;
    curve.invalidate();
    repaint();
}

float RecordResponseDisplay::decibelsAt(const Values& v, float frequency)
{
    if (!v.applyRecordHead)
        return 0.0f;
    const double gain = RecordHead::smallSignalGain(frequency, TapeControls::recordHardness(v.magneticHardness),
                                                    TapeControls::recordResistance(v.hysteresis));
    return gain < 1e-20 ? -400.0f : static_cast<float>(20.0 * std::log10(gain));
}

float RecordResponseDisplay::heightAt(const Values& v, float x, float width)
{
    const float db = std::clamp(decibelsAt(v, CurvePlot::logFrequency(x, width)), minimumDb, maximumDb);
    return (db - minimumDb) / (maximumDb - minimumDb);
}

void RecordResponseDisplay::paint(juce::Graphics& g)
{
    const auto width = static_cast<float>(getWidth());
    const auto height = static_cast<float>(getHeight());
    if (width <= 0.0f || height <= 0.0f)
        return;
    CurvePlot::drawFrequencyGrid(g, width, height);
    CurvePlot::drawLevelLine(g, width, height, -minimumDb / (maximumDb - minimumDb));
    const Values v = values;
    const juce::Path& path = curve.get(width, height, [&] {
        return CurvePlot::trace(width, height, [&](float x) { return heightAt(v, x, width); });
    });
    CurvePlot::stroke(g, path, juce::Colour(curveColour), 2.0f);
}
} // namespace oxa
