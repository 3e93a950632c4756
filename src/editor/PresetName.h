#pragma once
// The name box of a preset bar: the file name of the preset the element last took,
// "default" when it took none, and in the top bar a "*" once anything has changed
// since. It follows the element's path property and modified flag by itself.

#include "engine/ElementView.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace oxa
{
/** The name a bar shows for a path property: the file name without its extension. */
juce::String presetDisplayName(const juce::String& path, bool modified, bool showModifiedMark);

class PresetName : public juce::Label, private juce::Timer
{
public:
    PresetName(const String& propertyKey, bool showModifiedMark);
    ~PresetName() override;

    /** The element whose property is shown; null shows "default". */
    void setElement(Element* element);
    /** Reads the property and the flag again now. */
    void refresh();

    /** The colour at full strength; the bar fades it while the mouse is over it. */
    void setBaseColour(juce::Colour colour);
    void setFaded(bool faded);

private:
    void timerCallback() override { refresh(); }

    const String propertyKey;
    const bool showModifiedMark;
    Element* element = nullptr;
    juce::Colour baseColour {0xFF785991};
};
} // namespace oxa
