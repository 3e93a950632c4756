#pragma once
// The engine's general look for places where JUCE itself draws: menus, combo boxes,
// text boxes and the value bubble. One per process, deleted at shutdown.

#include <juce_gui_basics/juce_gui_basics.h>

namespace oxa
{
class OxaLookAndFeel : public juce::LookAndFeel_V2
{
public:
    OxaLookAndFeel();
    ~OxaLookAndFeel() override;

    /** The process-wide instance, made on first use. */
    static OxaLookAndFeel& instance();

    juce::Label* createComboBoxTextBox(juce::ComboBox& box) override;
    void positionComboBoxText(juce::ComboBox& box, juce::Label& label) override;
    void drawComboBox(juce::Graphics& g, int width, int height, bool isButtonDown, int buttonX, int buttonY,
                      int buttonW, int buttonH, juce::ComboBox& box) override;
    juce::Font getSliderPopupFont(juce::Slider&) override;
};
} // namespace oxa
