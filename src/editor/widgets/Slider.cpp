#include "editor/widgets/Slider.h"

#include "editor/widgets/ImageLoader.h"

#include <algorithm>
#include <cmath>

namespace oxa
{
OxaSliderPopupDisplayComponent::OxaSliderPopupDisplayComponent(const juce::Font& font) : font(font)
{
    setAlwaysOnTop(true);
    setInterceptsMouseClicks(false, false);
}

void OxaSliderPopupDisplayComponent::setText(const juce::String& newText)
{
    if (text == newText)
        return;
    text = newText;
    repaint();
}

void OxaSliderPopupDisplayComponent::getContentSize(int& width, int& height)
{
    width = juce::roundToInt(font.getStringWidthFloat(text)) + 18;
    height = juce::roundToInt(font.getHeight() * 1.6f);
}

void OxaSliderPopupDisplayComponent::paintContent(juce::Graphics& g, int width, int height)
{
    g.setFont(font);
    g.setColour(findColour(juce::TooltipWindow::textColourId, true));
    g.drawText(text, 0, 0, width, height, juce::Justification::centred, false);
}

Slider::Slider(juce::Slider::SliderStyle style, bool showValuePopup)
    : juce::Slider(style, juce::Slider::NoTextBox), showValuePopup(showValuePopup)
{
    setTextBoxStyle(juce::Slider::NoTextBox, true, 0, 0);
    setVelocityModeParameters(0.1, 1, 0.0, true,
                              juce::ModifierKeys::Flags(juce::ModifierKeys::ctrlModifier | juce::ModifierKeys::altModifier));
}

Slider::~Slider()
{
    closeValuePopup();
    closeEditBox();
}

void Slider::setImage(const juce::String& path, int frames, int framesInStrip)
{
    setImageStrip(loadImage(path), frames, -1, framesInStrip);
}

void Slider::setImageStrip(const juce::Image& strip, int frames, int orientation, int framesInStrip)
{
    if (!strip.isValid())
        return;
    image = strip;
    paintStyle = filmstrip;
    const juce::Rectangle<int> logical = logicalBounds(strip);
    stripOrientation = orientation >= 0 ? orientation : (logical.getWidth() > logical.getHeight() ? 0 : 1);
    const int longer = std::max(logical.getWidth(), logical.getHeight());
    const int shorter = std::max(1, std::min(logical.getWidth(), logical.getHeight()));
    frameCount = frames > 0 ? frames : longer / shorter;
    stripFrameCount = framesInStrip > 0 ? std::min(framesInStrip, frameCount) : frameCount;
    setSliderStyle(juce::Slider::RotaryVerticalDrag);
    const int frameWidth = stripOrientation == 0 ? logical.getWidth() / stripFrameCount : logical.getWidth();
    const int frameHeight = stripOrientation == 1 ? logical.getHeight() / stripFrameCount : logical.getHeight();
    setSize(frameWidth, frameHeight);
}

int Slider::frameForValue(double value) const
{
    if (frameCount <= 0)
        return 0;
    // juce::Slider declares the mapping non-const, though it changes nothing.
    const double p = const_cast<Slider*>(this)->valueToProportionOfLength(value);
    const int frame = int(p * double(frameCount - 1)); // truncation picks the frame
    return juce::jlimit(0, frameCount - 1, frame);
}

void Slider::paint(juce::Graphics& g)
{
    if (paintStyle != filmstrip || !image.isValid())
    {
        juce::Slider::paint(g);
        return;
    }
    const float k = imageScaleFactor(image);
    const juce::Rectangle<int> logical = logicalBounds(image);
    const int frameWidth = stripOrientation == 0 ? logical.getWidth() / stripFrameCount : logical.getWidth();
    const int frameHeight = stripOrientation == 1 ? logical.getHeight() / stripFrameCount : logical.getHeight();
    const int frame = currentFrame() % stripFrameCount;
    const juce::Rectangle<int> source((stripOrientation == 0 ? frame * frameWidth : 0) * int(k),
                                      (stripOrientation == 1 ? frame * frameHeight : 0) * int(k),
                                      frameWidth * int(k), frameHeight * int(k));
    // Unscaled and centred; a smaller component clips the frame.
    const int x = (getWidth() - frameWidth) / 2, y = (getHeight() - frameHeight) / 2;
    g.drawImage(image, x, y, frameWidth, frameHeight, source.getX(), source.getY(), source.getWidth(),
                source.getHeight());
}

void Slider::refreshValueText()
{
    if (label == nullptr && valuePopup == nullptr)
        return; // a reel turning 50 times a second shows no text: no formatting
    const juce::String text = getTextFromValue(getValue());
    if (label != nullptr)
        label->setText(text, juce::dontSendNotification);
    if (valuePopup != nullptr)
    {
        valuePopup->setText(text);
        valuePopup->setPosition(this);
    }
}

void Slider::setLabel(juce::Label* newLabel)
{
    label = newLabel;
    refreshValueText();
}

void Slider::valueChanged()
{
    refreshValueText();
}

void Slider::mouseDown(const juce::MouseEvent& e)
{
    lastDragMode = getThumbBeingDragged();
    juce::Slider::mouseDown(e);
    lastDragMode = getThumbBeingDragged();
    if (isEnabled() && showValuePopup && valuePopup == nullptr)
    {
        if (juce::Component* top = getTopLevelComponent(); top != nullptr && top != this)
        {
            valuePopup = std::make_unique<OxaSliderPopupDisplayComponent>(getLookAndFeel().getSliderPopupFont(*this));
            top->addChildComponent(*valuePopup);
            valuePopup->setText(getTextFromValue(getValue()));
            valuePopup->setPosition(this);
            valuePopup->setVisible(true);
        }
    }
}

void Slider::mouseUp(const juce::MouseEvent& e)
{
    juce::Slider::mouseUp(e);
    closeValuePopup();
}

void Slider::closeValuePopup()
{
    valuePopup.reset();
}

void Slider::mouseDoubleClick(const juce::MouseEvent& e)
{
    juce::Slider::mouseDoubleClick(e);
    if (!isEnabled() || !editOnDoubleClick)
        return;
    juce::Component* top = getTopLevelComponent();
    if (top == nullptr || top == this)
        return;
    closeValuePopup();
    editBox = std::make_unique<juce::TextEditor>("EditTextBox");
    editBox->addListener(this);
    const juce::Font font = getLookAndFeel().getSliderPopupFont(*this);
    editBox->setFont(font);
    editBox->setText(getTextFromValue(getValue()), false);
    const int width = std::max(80, juce::roundToInt(font.getStringWidthFloat(editBox->getText())) + 8);
    const int height = juce::roundToInt(font.getHeight()) + 4;
    const juce::Point<int> centre = top->getLocalPoint(this, getLocalBounds().getCentre());
    top->addAndMakeVisible(*editBox);
    editBox->setBounds(juce::Rectangle<int>(width, height).withCentre(centre));
    editBox->selectAll();
    editBox->grabKeyboardFocus();
}

void Slider::textEditorReturnKeyPressed(juce::TextEditor& editor)
{
    const double value = getValueFromText(editor.getText());
    juce::MessageManager::callAsync([safe = juce::Component::SafePointer<Slider>(this)] {
        if (safe != nullptr)
            safe->closeEditBox();
    });
    setValue(value, juce::sendNotificationSync);
}

void Slider::textEditorEscapeKeyPressed(juce::TextEditor&)
{
    juce::MessageManager::callAsync([safe = juce::Component::SafePointer<Slider>(this)] {
        if (safe != nullptr)
            safe->closeEditBox();
    });
}

void Slider::textEditorFocusLost(juce::TextEditor& editor)
{
    textEditorEscapeKeyPressed(editor);
}

void Slider::closeEditBox()
{
    if (editBox != nullptr)
        editBox->removeListener(this);
    editBox.reset();
}
} // namespace oxa
