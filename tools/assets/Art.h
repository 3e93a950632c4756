#pragma once
// Shared pens and inks of the interface drawing: the palette, the typeface and the
// small shapes several images repeat. Everything draws in 1x coordinates; the caller
// scales the context for the "@2x" twins, so both sizes come from the same vectors.

#include "editor/Layout.h"
#include "editor/widgets/BoxArt.h"

#include <juce_graphics/juce_graphics.h>

namespace oxa::art
{
namespace ink
{
const juce::Colour panel {layout::panelColour};
const juce::Colour legend {layout::legendColour};
const juce::Colour accent {layout::accentColour};
const juce::Colour accentLight {layout::valueColour};
const juce::Colour caption {0xFF767676};
const juce::Colour plateTop {0xFFDDDDDD};
const juce::Colour plateBottom {0xFFCDCDCD};
const juce::Colour plateEdge {0xFFB4B4B4};
const juce::Colour well {0xFFC8C8C8};
const juce::Colour screen {0xFFEEEEEE};
const juce::Colour screenEdge {layout::boxEdgeColour};
const juce::Colour grid {0xFFDDDDDD};
const juce::Colour boxFill {layout::boxFillColour};
const juce::Colour icon {layout::iconColour};
const juce::Colour iconOver {0xFF3E3E3E};
const juce::Colour tape {0xFF4B3F37};
} // namespace ink

/** The window's typeface, read once from the font file the archive carries. */
void loadTypeface(const juce::File& fontFile);
juce::Font font(float height, float kerning = 0.0f);

/** Capitals with a little air between them, as every legend of the window is set. */
void drawLegend(juce::Graphics& g, const juce::String& text, juce::Rectangle<float> area, float height,
                juce::Colour colour, juce::Justification justification = juce::Justification::centred);

void drawPlate(juce::Graphics& g, juce::Rectangle<float> area);
void drawWell(juce::Graphics& g, juce::Rectangle<float> area, float corner);
void drawScreen(juce::Graphics& g, juce::Rectangle<float> area, bool withGrid);
using boxArt::drawInsetBox;
void drawDropShadow(juce::Graphics& g, juce::Point<float> centre, float radius);

inline juce::Rectangle<float> toRect(const layout::Box& b)
{
    return {float(b.x), float(b.y), float(b.w), float(b.h)};
}

// ---- painters of each image family (one frame each, in its 1x size) ----------------
void paintBackground(juce::Graphics& g, unsigned page, bool expanded);
void paintKnobFrame(juce::Graphics& g, const layout::ImageSpec& spec, float proportion);
void paintReelFrame(juce::Graphics& g, bool leftReel, float turns);
/** state: 0 off, 1 on, 2 off-over, 3 on-over. */
void paintButton(juce::Graphics& g, const layout::ImageSpec& spec, int state);
} // namespace oxa::art
