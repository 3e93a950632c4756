#include "editor/widgets/Button.h"

#include "editor/widgets/ImageLoader.h"

namespace oxa
{
Button::Button(const juce::String& name) : juce::TextButton(name) {}

void Button::setImages(const juce::String& off, const juce::String& on, const juce::String& offOver,
                       const juce::String& onOver)
{
    setImages(loadImage(off), loadImage(on), loadImage(offOver), loadImage(onOver));
}

void Button::setImages(const juce::Image& off, const juce::Image& on, const juce::Image& offOver,
                       const juce::Image& onOver)
{
    images[0] = off;
    images[1] = on;
    images[2] = offOver.isValid() ? offOver : off;
    images[3] = onOver.isValid() ? onOver : on;
    repaint();
}

int Button::imageFor(bool isMouseOver, bool isButtonDown) const
{
    const bool on = getToggleState() || isButtonDown;
    return (on ? 1 : 0) + (isMouseOver ? 2 : 0);
}

int Button::shownImage() const
{
    return imageFor(isOver(), isDown());
}

void Button::paintButton(juce::Graphics& g, bool isMouseOver, bool isButtonDown)
{
    if (!hasImages())
    {
        juce::TextButton::paintButton(g, isMouseOver, isButtonDown);
        return;
    }
    const juce::Image& image = images[imageFor(isMouseOver && isEnabled(), isButtonDown)];
    if (!image.isValid())
        return;
    const juce::Rectangle<int> logical = logicalBounds(image);
    g.setOpacity(isEnabled() ? 1.0f : 0.25f);
    g.drawImage(image, 0, 0, logical.getWidth(), logical.getHeight(), 0, 0, image.getWidth(), image.getHeight());
}
} // namespace oxa
