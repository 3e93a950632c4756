#include "editor/displays/FlangeDisplay.h"

#include "editor/displays/CurvePlot.h"
#include "editor/displays/ParameterWatch.h"
#include "editor/displays/ProcessorLink.h"
#include "tape/FluxDeckProcessor.h"

#include <algorithm>
#include <cmath>

namespace oxa
{
namespace
{
constexpr float twoCycles = 12.566370964050293f;
// The widest flange depth (15 ms) moves deck two by 0.4 of the width.
constexpr float widthPerSecond = 26.66666666666667f;

float deckHeight(float x, float shift, float width, bool inverted)
{
    const float s = std::sin((x - shift) * twoCycles / width);
    return 0.5f - 0.5f * (inverted ? -s : s);
}
} // namespace

FlangeDisplay::FlangeDisplay()
{
    setInterceptsMouseClicks(false, false);
}

FlangeDisplay::~FlangeDisplay()
{
    stopTimer();
}

void FlangeDisplay::bind(EngineProxy* proxy, const String& elementPath)
{
    const auto& id = FluxDeckProcessor::ids();
    watch.reset();
    watch = std::make_unique<ParameterWatch>(proxy, elementPath,
                                             std::initializer_list<unsigned>{id.maxRelativeDelay, id.phaseInvert},
                                             [this](const ParameterWatch& w) {
                                                 Values next = values;
                                                 next.maxRelativeDelay = w[0];
                                                 next.phaseInvert = w[1] != 0.0f;
                                                 setValues(next);
                                             });
    processor.reset();
    processor = std::make_unique<ProcessorLink>(proxy, elementPath, [this](bool present) {
        if (present)
            startTimer(refreshMilliseconds);
        else
            stopTimer();
    });
}

void FlangeDisplay::timerCallback()
{
    const auto live = processor != nullptr ? processor->lock() : nullptr;
    if (live == nullptr)
        return;
    const float position = live->flangePosition.load(std::memory_order_relaxed);
    if (!std::isfinite(position))
        return;
    Values next = values;
    next.flangePosition = std::clamp(position, -1.0f, 1.0f);
    setValues(next);
}

void FlangeDisplay::setValues(const Values& newValues)
{
    if (newValues == values)
        return;
    values = newValues;
    repaint();
}

float FlangeDisplay::firstDeckHeightAt(const Values& v, float x, float width)
{
    return deckHeight(x, v.maxRelativeDelay * widthPerSecond * width, width, false);
}

float FlangeDisplay::secondDeckHeightAt(const Values& v, float x, float width)
{
    const float shift = (v.flangePosition + 1.0f) * v.maxRelativeDelay * widthPerSecond * width;
    return deckHeight(x, shift, width, v.phaseInvert);
}

void FlangeDisplay::paint(juce::Graphics& g)
{
    const auto width = static_cast<float>(getWidth());
    const auto height = static_cast<float>(getHeight());
    if (width <= 0.0f || height <= 0.0f)
        return;
    const Values v = values;
    CurvePlot::drawLevelLine(g, width, height, 0.5f);
    CurvePlot::stroke(g, CurvePlot::trace(width, height, [&](float x) { return firstDeckHeightAt(v, x, width); }),
                      juce::Colour(firstDeckColour), 1.0f);
    CurvePlot::stroke(g, CurvePlot::trace(width, height, [&](float x) { return secondDeckHeightAt(v, x, width); }),
                      juce::Colour(secondDeckColour), 2.0f);
}
} // namespace oxa
