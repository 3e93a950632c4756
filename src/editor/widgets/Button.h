#pragma once
// A button drawn from four images: off, on, and each with the mouse over it. The
// toggle state picks on or off; a press counts as on.

#include <juce_gui_basics/juce_gui_basics.h>

namespace oxa
{
class Button : public juce::TextButton
{
public:
    explicit Button(const juce::String& name = {});

    /** Paths through the image loader; a two-image button passes its first two again. */
    void setImages(const juce::String& off, const juce::String& on, const juce::String& offOver,
                   const juce::String& onOver);
    void setImages(const juce::Image& off, const juce::Image& on, const juce::Image& offOver,
                   const juce::Image& onOver);
    bool hasImages() const { return images[0].isValid(); }
    /** The image that painting shows now: 0 off, 1 on, 2 off-over, 3 on-over. */
    int shownImage() const;

    void paintButton(juce::Graphics& g, bool isMouseOver, bool isButtonDown) override;

private:
    int imageFor(bool isMouseOver, bool isButtonDown) const;

    juce::Image images[4];
};
} // namespace oxa
