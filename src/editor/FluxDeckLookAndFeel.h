#pragma once
// The product's look: the engine's, with the window's one typeface read from the
// embedded archive.

#include "editor/OxaLookAndFeel.h"

namespace oxa
{
class FluxDeckLookAndFeel : public OxaLookAndFeel
{
public:
    FluxDeckLookAndFeel();
    ~FluxDeckLookAndFeel() override;

    static FluxDeckLookAndFeel& instance();

    /** The window's typeface at height 15 (a default sans-serif when the archive lacks it). */
    const juce::Font& getFont() const { return font; }
    juce::Font fontOfHeight(float height) const { return font.withHeight(height); }
    bool hasEmbeddedTypeface() const { return embedded; }

    juce::Font getPopupMenuFont() override;
    juce::Font getComboBoxFont(juce::ComboBox&) override;
    juce::Font getSliderPopupFont(juce::Slider&) override;
    juce::Font getLabelFont(juce::Label& label) override;

private:
    juce::Font font;
    bool embedded = false;
};
} // namespace oxa
