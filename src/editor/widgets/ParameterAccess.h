#pragma once
// What the bound widgets share: finding a parameter by name, its description, the
// value text, and the gesture brackets a host records as one edit.

#include "element/ParameterDescription.h"
#include "engine/ElementView.h"

#include <juce_core/juce_core.h>

namespace oxa
{
/** The registry id of a declared parameter by name; 0 when none is declared. */
uint32_t parameterIdByName(const char* name);

inline juce::String toJuce(const String& text)
{
    return juce::String::fromUTF8(text.c_str());
}

/** Opens and closes one edit of the view's parameter at the host, at most once each. */
class GestureBracket
{
public:
    explicit GestureBracket(const SimpleElementParameterView& view) : view(view) {}
    ~GestureBracket() = default;

    bool isOpen() const { return open; }
    void begin();
    void end();

private:
    const SimpleElementParameterView& view;
    bool open = false;
};

/** Value text of a parameter by kind, through its description's formatter. */
juce::String floatText(const Element* element, uint32_t id, float plain);
juce::String intText(const Element* element, uint32_t id, int value);
juce::String boolText(const Element* element, uint32_t id, bool value);
} // namespace oxa
