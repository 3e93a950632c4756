#include "editor/displays/ScrollCurve.h"

#include <algorithm>
#include <cmath>

namespace oxa
{
ScrollCurve::ScrollCurve()
{
    setColour(backgroundColourId, juce::Colours::transparentBlack);
    setInterceptsMouseClicks(false, false);
}

int ScrollCurve::addCurve(const Curve& curve)
{
    Trace trace;
    trace.style = curve;
    trace.setCapacity(static_cast<std::size_t>(juce::jmax(0, getWidth())));
    curves.push_back(std::move(trace));
    return static_cast<int>(curves.size()) - 1;
}

void ScrollCurve::addValue(int curve, float value)
{
    if (curve < 0 || curve >= getNumCurves() || !std::isfinite(value))
        return;
    curves[static_cast<std::size_t>(curve)].push(value);
    repaint();
}

std::vector<float> ScrollCurve::getValues(int curve) const
{
    std::vector<float> values;
    if (curve < 0 || curve >= getNumCurves())
        return values;
    const Trace& trace = curves[static_cast<std::size_t>(curve)];
    for (std::size_t i = 0; i < trace.count; ++i)
        values.push_back(trace.at(i));
    return values;
}

void ScrollCurve::Trace::setCapacity(std::size_t capacity)
{
    // Keep the newest values that still fit.
    std::vector<float> kept;
    const std::size_t keep = std::min(count, capacity);
    for (std::size_t i = count - keep; i < count; ++i)
        kept.push_back(at(i));
    ring.assign(capacity, 0.0f);
    std::copy(kept.begin(), kept.end(), ring.begin());
    start = 0;
    count = keep;
}

void ScrollCurve::Trace::push(float value)
{
    if (ring.empty())
        return;
    if (count < ring.size())
        ring[(start + count++) % ring.size()] = value;
    else
    {
        ring[start] = value;
        start = (start + 1) % ring.size();
    }
}

void ScrollCurve::resized()
{
    for (Trace& trace : curves)
        trace.setCapacity(static_cast<std::size_t>(juce::jmax(0, getWidth())));
}

juce::Path ScrollCurve::pathOf(const Trace& trace, float width, float height)
{
    const Curve& style = trace.style;
    const float span = style.maximum - style.minimum;
    const float n = static_cast<float>(trace.count);
    juce::Path path;
    for (std::size_t i = 0; i < trace.count; ++i)
    {
        const float x = width - n + static_cast<float>(i);
        const float proportion = span != 0.0f ? (trace.at(i) - style.minimum) / span : 0.5f;
        const float y = (1.0f - proportion) * height;
        if (i == 0)
            path.startNewSubPath(x, y);
        else
            path.lineTo(x, y);
    }
    return path;
}

void ScrollCurve::paint(juce::Graphics& g)
{
    g.fillAll(findColour(backgroundColourId));
    const auto width = static_cast<float>(getWidth());
    const auto height = static_cast<float>(getHeight());
    for (const Trace& trace : curves)
    {
        if (trace.count == 0)
            continue;
        const juce::Path line = pathOf(trace, width, height);
        const Curve& style = trace.style;
        if (style.mode == fillToTop || style.mode == fillToBottom)
        {
            const float edge = style.mode == fillToTop ? -1.0f : height;
            juce::Path area(line);
            area.lineTo(width - 1.0f, edge);
            area.lineTo(width - static_cast<float>(trace.count), edge);
            area.closeSubPath();
            g.setColour(style.colour.withAlpha(0.5f));
            g.fillPath(area);
        }
        g.setColour(style.colour);
        g.strokePath(line, juce::PathStrokeType(style.lineThickness, juce::PathStrokeType::curved,
                                                juce::PathStrokeType::rounded));
    }
}
} // namespace oxa
