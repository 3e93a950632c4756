#include "editor/displays/CurvePlot.h"

namespace oxa::CurvePlot
{
namespace
{
const juce::Colour gridColour = juce::Colour(0xFF424242).withAlpha(0.14f);
}

void stroke(juce::Graphics& g, const juce::Path& path, juce::Colour colour, float thickness)
{
    g.setColour(colour);
    g.strokePath(path, juce::PathStrokeType(thickness, juce::PathStrokeType::curved, juce::PathStrokeType::rounded));
}

void drawFrequencyGrid(juce::Graphics& g, float width, float height)
{
    g.setColour(gridColour);
    for (const float frequency : {100.0f, 1000.0f, 10000.0f})
        g.fillRect(std::round(width * std::log10(frequency / 20.0f) / 3.0f), 0.0f, 1.0f, height);
}

void drawLevelLine(juce::Graphics& g, float width, float height, float normalisedHeight)
{
    g.setColour(gridColour);
    g.fillRect(0.0f, std::round(yFor(normalisedHeight, height)), width, 1.0f);
}
} // namespace oxa::CurvePlot
