#include "editor/PresetName.h"

namespace oxa
{
juce::String presetDisplayName(const juce::String& path, bool modified, bool showModifiedMark)
{
    juce::String name = "default";
    if (path.isNotEmpty())
    {
        const juce::String file = path.fromLastOccurrenceOf("/", false, false);
        name = file.containsChar('.') ? file.upToLastOccurrenceOf(".", false, false) : file;
    }
    return showModifiedMark && modified ? name + "*" : name;
}

PresetName::PresetName(const String& key, bool mark) : propertyKey(key), showModifiedMark(mark)
{
    setEditable(false, false, false);
    setInterceptsMouseClicks(true, false);
    setText(presetDisplayName({}, false, false), juce::dontSendNotification);
    // The modified flag is set by whichever thread writes a parameter, without a
    // signal the window could take there: a cheap look now and then is enough.
    startTimer(150);
}

PresetName::~PresetName()
{
    stopTimer();
}

void PresetName::setElement(Element* e)
{
    element = e;
    refresh();
}

void PresetName::refresh()
{
    juce::String path;
    bool modified = false;
    if (element != nullptr)
    {
        path = juce::String::fromUTF8(element->property(propertyKey).valueOr(String()).c_str());
        modified = element->isModified();
    }
    const juce::String text = presetDisplayName(path, modified, showModifiedMark);
    if (text != getText())
        setText(text, juce::dontSendNotification);
}

void PresetName::setBaseColour(juce::Colour colour)
{
    baseColour = colour;
    setColour(juce::Label::textColourId, colour);
}

void PresetName::setFaded(bool faded)
{
    setColour(juce::Label::textColourId, faded ? baseColour.withAlpha(0.4f) : baseColour);
}
} // namespace oxa
