#pragma once
// The recessed boxes under combo boxes and text fields. The background images print
// them from the layout tables; a panel whose box must change with its state (the
// compander's decoder) draws the same box itself, with this same code.

#include <juce_graphics/juce_graphics.h>

namespace oxa::boxArt
{
void drawInsetBox(juce::Graphics& g, juce::Rectangle<float> area, float corner);

/** A combo box's box at its bounds; a narrow one keeps all its width for the text
    and carries its arrow just outside. Without the arrow it reads as a plain field. */
void drawComboBox(juce::Graphics& g, juce::Rectangle<float> bounds, bool withArrow);

/** Where a combo box's text goes inside its bounds: clear of an arrow drawn inside. */
juce::BorderSize<int> comboBoxTextBorder(int boxWidth);
/** The narrowest squeeze of a combo box's text before it is cut short. */
constexpr float comboBoxTextSqueeze = 0.75f;
} // namespace oxa::boxArt
