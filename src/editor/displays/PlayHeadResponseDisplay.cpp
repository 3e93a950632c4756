#include "editor/displays/PlayHeadResponseDisplay.h"

#include "editor/displays/CurvePlot.h"
#include "editor/displays/ParameterWatch.h"
#include "tape/Decibels.h"
#include "tape/FluxDeckParameters.h"
#include "tape/TapeControls.h"

#include <algorithm>

namespace oxa
{
PlayHeadResponseDisplay::PlayHeadResponseDisplay()
{
    setInterceptsMouseClicks(false, false);
}

PlayHeadResponseDisplay::~PlayHeadResponseDisplay() = default;

void PlayHeadResponseDisplay::bind(EngineProxy* proxy, const String& elementPath)
{
    const auto& id = FluxDeckParameters::ids();
    watch.reset();
    watch = std::make_unique<ParameterWatch>(
        proxy, elementPath,
        std::initializer_list<unsigned>{id.speed, id.spacing, id.thickness, id.azimuth, id.trackWidthRatio,
                                        id.applyPlayheadFilter},
        [this](const ParameterWatch& w) { setValues({w[0], w[1], w[2], w[3], w[4], w[5] != 0.0f}); });
}

void PlayHeadResponseDisplay::setValues(const Values& newValues)
{
    if (newValues == values)
        return;
    values = newValues;
    curve.invalidate();
    repaint();
}

float PlayHeadResponseDisplay::decibelsAt(const Values& v, float frequency)
{
    if (!v.applyPlayheadFilter)
        return 0.0f;
    const PlaybackHeadSettings head =
        TapeControls::playbackHead(v.speed, v.spacing, v.thickness, v.azimuth, v.trackWidthRatio);
    return linearToDb(static_cast<float>(PlaybackHeadResponse::magnitude(frequency, head)));
}

float PlayHeadResponseDisplay::heightAt(const Values& v, float x, float width)
{
    const float db = std::clamp(decibelsAt(v, CurvePlot::logFrequency(x, width)), minimumDb, maximumDb);
    return (db - minimumDb) / (maximumDb - minimumDb);
}

void PlayHeadResponseDisplay::paint(juce::Graphics& g)
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
