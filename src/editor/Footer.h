#pragma once
// The window's bottom bar: the tooltip of whatever lies under the mouse (the window has
// no floating tooltips), and the version at the right.

#include <juce_gui_basics/juce_gui_basics.h>

namespace oxa
{
class Footer : public juce::Component, private juce::Timer
{
public:
    Footer();
    ~Footer() override;

    const juce::String& getTooltip() const { return tooltip; }
    /** One poll of the mouse, as the timer does every 100 ms. */
    void poll();
    /** The right edge of the version text: clear of the expand button unless expanded. */
    int versionTextWidth() const;

    static juce::String versionText();

    void paint(juce::Graphics& g) override;

private:
    void timerCallback() override { poll(); }

    juce::String tooltip;
};
} // namespace oxa
