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

float deckHeight(float x, float shift, float width)
{
    return 0.5f - 0.5f * std::sin((x - shift) * twoCycles / width);
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
    // A slow LFO moves deck two by less than a device pixel a tick: the strip lands
    // where it already is, so that tick needs no paint.
    const auto width = static_cast<float>(getWidth());
    const bool samePicture = stripScale > 0.0f && newValues.maxRelativeDelay == values.maxRelativeDelay
                          && newValues.phaseInvert == values.phaseInvert
                          && stripOffset(secondDeckShift(newValues, width), width)
                                 == stripOffset(secondDeckShift(values, width), width);
    values = newValues;
    if (!samePicture)
        repaint();
}

float FlangeDisplay::firstDeckShift(const Values& v, float width)
{
    return v.maxRelativeDelay * widthPerSecond * width;
}

float FlangeDisplay::secondDeckShift(const Values& v, float width)
{
    return (v.flangePosition + 1.0f) * firstDeckShift(v, width) + (v.phaseInvert ? width * 0.25f : 0.0f);
}

float FlangeDisplay::firstDeckHeightAt(const Values& v, float x, float width)
{
    return deckHeight(x, firstDeckShift(v, width), width);
}

float FlangeDisplay::secondDeckHeightAt(const Values& v, float x, float width)
{
    return deckHeight(x, secondDeckShift(v, width), width);
}

void FlangeDisplay::prepareStrips(int width, int height, float scale)
{
    if (width == stripWidth && height == stripHeight && scale == stripScale && deckOneStrip.isValid())
        return;
    stripWidth = width;
    stripHeight = height;
    stripScale = scale;
    const auto w = static_cast<float>(width), h = static_cast<float>(height);
    const float length = w * 1.5f;
    auto draw = [&](juce::Colour colour, float thickness) {
        juce::Image strip(juce::Image::ARGB, static_cast<int>(std::ceil(length * scale)),
                          static_cast<int>(std::ceil(h * scale)), true);
        juce::Graphics g(strip);
        g.addTransform(juce::AffineTransform::scale(scale));
        CurvePlot::stroke(g, CurvePlot::trace(length, h, [w](float x) { return deckHeight(x, 0.0f, w); }), colour,
                          thickness);
        return strip;
    };
    deckOneStrip = draw(juce::Colour(firstDeckColour), 1.0f);
    deckTwoStrip = draw(juce::Colour(secondDeckColour), 2.0f);
}

float FlangeDisplay::stripOffset(float shift, float width) const
{
    // The strip starts one period left of the picture; a shift moves it right by
    // its remainder within a period, snapped to whole device pixels for a plain copy.
    const float period = width * 0.5f;
    const float remainder = shift - period * std::floor(shift / period);
    return std::round((remainder - period) * stripScale) / stripScale;
}

void FlangeDisplay::drawStrip(juce::Graphics& g, const juce::Image& strip, float shift, float width) const
{
    g.drawImageTransformed(strip,
                           juce::AffineTransform::scale(1.0f / stripScale).translated(stripOffset(shift, width), 0.0f));
}

void FlangeDisplay::paint(juce::Graphics& g)
{
    const auto width = static_cast<float>(getWidth());
    const auto height = static_cast<float>(getHeight());
    if (width <= 0.0f || height <= 0.0f)
        return;
    const float scale = juce::jlimit(1.0f, 4.0f, g.getInternalContext().getPhysicalPixelScaleFactor());
    prepareStrips(getWidth(), getHeight(), scale);
    g.reduceClipRegion(getLocalBounds());
    CurvePlot::drawLevelLine(g, width, height, 0.5f);
    g.setOpacity(1.0f); // images take the current colour's alpha
    drawStrip(g, deckOneStrip, firstDeckShift(values, width), width);
    drawStrip(g, deckTwoStrip, secondDeckShift(values, width), width);
}
} // namespace oxa
