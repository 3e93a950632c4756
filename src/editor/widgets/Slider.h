#pragma once
// A slider that paints one frame of a filmstrip for its value, can show its value in a
// bubble while dragged, and takes typed values after a double click. Not bound to
// anything: ParamSlider adds the parameter.

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

namespace oxa
{
/** The value bubble: the text centred, in the tooltip colour of the look and feel. */
class OxaSliderPopupDisplayComponent : public juce::BubbleComponent
{
public:
    explicit OxaSliderPopupDisplayComponent(const juce::Font& font);
    void setText(const juce::String& newText);
    const juce::String& getText() const { return text; }

    void getContentSize(int& width, int& height) override;
    void paintContent(juce::Graphics& g, int width, int height) override;

private:
    juce::Font font;
    juce::String text;
};

class Slider : public juce::Slider, public juce::TextEditor::Listener
{
public:
    enum PaintStyle
    {
        juceStyle = 0,
        filmstrip = 1
    };

    explicit Slider(juce::Slider::SliderStyle style = juce::Slider::RotaryVerticalDrag, bool showValuePopup = false);
    ~Slider() override;

    /** Loads a filmstrip through the image loader; a missing image changes nothing.
        framesInStrip below frames: the strip repeats, position p shows frame p mod framesInStrip. */
    void setImage(const juce::String& path, int frames, int framesInStrip = 0);
    /** orientation: 0 frames side by side, 1 stacked, -1 from the image's shape. */
    void setImageStrip(const juce::Image& strip, int frames = 0, int orientation = -1, int framesInStrip = 0);
    /** The frame that the current value shows: trunc(p x (N - 1)), clamped. */
    int currentFrame() const { return frameForValue(getValue()); }
    int frameForValue(double value) const;
    int getFrameCount() const { return frameCount; }
    const juce::Image& getImage() const { return image; }

    /** A label that shows the value text; not owned. */
    void setLabel(juce::Label* newLabel);
    void setShowValuePopup(bool show) { showValuePopup = show; }
    void setEditOnDoubleClick(bool edit) { editOnDoubleClick = edit; }
    bool hasValuePopup() const { return valuePopup != nullptr; }
    juce::TextEditor* getEditBox() const { return editBox.get(); }

    void paint(juce::Graphics& g) override;
    void mouseDown(const juce::MouseEvent& e) override;
    void mouseUp(const juce::MouseEvent& e) override;
    void mouseDoubleClick(const juce::MouseEvent& e) override;
    void valueChanged() override;

    void textEditorReturnKeyPressed(juce::TextEditor&) override;
    void textEditorEscapeKeyPressed(juce::TextEditor&) override;
    void textEditorFocusLost(juce::TextEditor&) override;

protected:
    void refreshValueText();
    void closeValuePopup();
    void closeEditBox();

    int paintStyle = juceStyle;
    int stripOrientation = 1;
    juce::Image image;
    int frameCount = 0;      // positions the value maps onto
    int stripFrameCount = 0; // frames the image holds
    int lastDragMode = -1;
    juce::Label* label = nullptr;
    bool showValuePopup;
    bool editOnDoubleClick = true;
    std::unique_ptr<OxaSliderPopupDisplayComponent> valuePopup;
    std::unique_ptr<juce::TextEditor> editBox;
};
} // namespace oxa
