#include "editor/widgets/BoxArt.h"

#include "editor/Layout.h"

namespace oxa::boxArt
{
namespace
{
constexpr float arrowInsideFrom = 100.0f; // narrower boxes carry their arrow outside

bool arrowInside(float boxWidth)
{
    return boxWidth >= arrowInsideFrom;
}
} // namespace

void drawInsetBox(juce::Graphics& g, juce::Rectangle<float> area, float corner)
{
    g.setColour(juce::Colours::white.withAlpha(0.6f));
    g.drawRoundedRectangle(area.translated(0.0f, 1.0f).reduced(0.5f), corner, 1.0f);
    g.setColour(juce::Colour(layout::boxFillColour));
    g.fillRoundedRectangle(area, corner);
    g.setColour(juce::Colours::black.withAlpha(0.08f));
    g.drawLine(area.getX() + corner, area.getY() + 1.5f, area.getRight() - corner, area.getY() + 1.5f, 1.0f);
    g.setColour(juce::Colour(layout::boxEdgeColour));
    g.drawRoundedRectangle(area.reduced(0.5f), corner, 1.0f);
}

void drawComboBox(juce::Graphics& g, juce::Rectangle<float> bounds, bool withArrow)
{
    const juce::Rectangle<float> area = arrowInside(bounds.getWidth()) ? bounds : bounds.withTrimmedRight(-14.0f);
    drawInsetBox(g, area, 3.0f);
    if (!withArrow)
        return;
    const float arrowX = area.getRight() - 9.0f, arrowY = area.getCentreY();
    juce::Path arrow;
    arrow.addTriangle(arrowX - 3.5f, arrowY - 2.0f, arrowX + 3.5f, arrowY - 2.0f, arrowX, arrowY + 2.5f);
    g.setColour(juce::Colour(layout::iconColour));
    g.fillPath(arrow);
}

juce::BorderSize<int> comboBoxTextBorder(int boxWidth)
{
    return {1, 5, 1, arrowInside(float(boxWidth)) ? 15 : 5};
}
} // namespace oxa::boxArt
