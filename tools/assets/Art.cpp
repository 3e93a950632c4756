#include "assets/Art.h"

namespace oxa::art
{
namespace
{
juce::Typeface::Ptr& typeface()
{
    static juce::Typeface::Ptr face;
    return face;
}
} // namespace

void loadTypeface(const juce::File& fontFile)
{
    juce::MemoryBlock bytes;
    if (fontFile.loadFileAsData(bytes) && bytes.getSize() > 0)
        typeface() = juce::Typeface::createSystemTypefaceFor(bytes.getData(), bytes.getSize());
}

juce::Font font(float height, float kerning)
{
    juce::Font f = typeface() != nullptr ? juce::Font(typeface()) : juce::Font();
    f.setHeight(height);
    f.setExtraKerningFactor(kerning);
    return f;
}

void drawLegend(juce::Graphics& g, const juce::String& text, juce::Rectangle<float> area, float height,
                juce::Colour colour, juce::Justification justification)
{
    g.setColour(colour);
    g.setFont(font(height, 0.09f));
    g.drawText(text, area, justification, false);
}

void drawPlate(juce::Graphics& g, juce::Rectangle<float> area)
{
    const float corner = 7.0f;
    // A soft fall of shadow below, then the plate with a lit top edge.
    for (int i = 3; i >= 1; --i)
    {
        g.setColour(juce::Colours::black.withAlpha(0.035f * float(4 - i)));
        g.fillRoundedRectangle(area.translated(0.0f, float(i)).expanded(float(i) * 0.5f), corner + float(i));
    }
    g.setGradientFill(juce::ColourGradient(ink::plateTop, area.getX(), area.getY(), ink::plateBottom, area.getX(),
                                           area.getBottom(), false));
    g.fillRoundedRectangle(area, corner);
    g.setColour(ink::plateEdge);
    g.drawRoundedRectangle(area.reduced(0.5f), corner, 1.0f);
    g.setColour(juce::Colours::white.withAlpha(0.55f));
    g.drawLine(area.getX() + corner, area.getY() + 1.5f, area.getRight() - corner, area.getY() + 1.5f, 1.0f);
}

void drawWell(juce::Graphics& g, juce::Rectangle<float> area, float corner)
{
    g.setColour(ink::well);
    g.fillRoundedRectangle(area, corner);
    // Light falls from above: the well's top edge lies in shadow.
    juce::Graphics::ScopedSaveState save(g);
    juce::Path clip;
    clip.addRoundedRectangle(area, corner);
    g.reduceClipRegion(clip);
    g.setGradientFill(juce::ColourGradient(juce::Colours::black.withAlpha(0.16f), area.getX(), area.getY(),
                                           juce::Colours::transparentBlack, area.getX(), area.getY() + 7.0f, false));
    g.fillRect(area.withHeight(7.0f));
    g.setColour(juce::Colours::black.withAlpha(0.18f));
    g.drawRoundedRectangle(area.reduced(0.5f), corner, 1.0f);
    g.setColour(juce::Colours::white.withAlpha(0.5f));
    g.drawLine(area.getX() + corner, area.getBottom() - 0.5f, area.getRight() - corner, area.getBottom() - 0.5f, 1.0f);
}

void drawScreen(juce::Graphics& g, juce::Rectangle<float> area, bool withGrid)
{
    const juce::Rectangle<float> frame = area.expanded(3.0f);
    g.setColour(juce::Colours::white.withAlpha(0.6f));
    g.drawRoundedRectangle(frame.translated(0.0f, 1.0f).reduced(0.5f), 4.0f, 1.0f);
    g.setColour(ink::screen);
    g.fillRoundedRectangle(frame, 4.0f);
    if (withGrid)
    {
        g.setColour(ink::grid);
        for (int i = 1; i < 6; ++i)
            g.drawVerticalLine(juce::roundToInt(area.getX() + area.getWidth() * float(i) / 6.0f), area.getY(),
                               area.getBottom());
        for (int i = 1; i < 3; ++i)
            g.drawHorizontalLine(juce::roundToInt(area.getY() + area.getHeight() * float(i) / 3.0f), area.getX(),
                                 area.getRight());
    }
    juce::Graphics::ScopedSaveState save(g);
    juce::Path clip;
    clip.addRoundedRectangle(frame, 4.0f);
    g.reduceClipRegion(clip);
    g.setGradientFill(juce::ColourGradient(juce::Colours::black.withAlpha(0.13f), frame.getX(), frame.getY(),
                                           juce::Colours::transparentBlack, frame.getX(), frame.getY() + 5.0f, false));
    g.fillRect(frame.withHeight(5.0f));
    g.setColour(ink::screenEdge);
    g.drawRoundedRectangle(frame.reduced(0.5f), 4.0f, 1.0f);
}

void drawDropShadow(juce::Graphics& g, juce::Point<float> centre, float radius)
{
    juce::ColourGradient shade(juce::Colours::black.withAlpha(0.32f), centre.x, centre.y + 2.0f,
                               juce::Colours::transparentBlack, centre.x + radius + 4.0f, centre.y + 2.0f, true);
    shade.addColour(radius / (radius + 4.0f), juce::Colours::black.withAlpha(0.22f));
    g.setGradientFill(shade);
    g.fillEllipse(juce::Rectangle<float>(2.0f * (radius + 4.0f), 2.0f * (radius + 4.0f))
                      .withCentre(centre.translated(0.0f, 2.0f)));
}
} // namespace oxa::art
