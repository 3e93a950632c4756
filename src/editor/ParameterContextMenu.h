#pragma once
// The right-click menu of a parameter's control: lock against presets (for the five
// lockable controls), unlock them all, and learn or forget a MIDI controller.

#include "element/String.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <cstdint>

namespace oxa
{
class EngineProxy;

class ParameterContextMenu
{
public:
    enum Ids
    {
        lockedId = 1,
        unlockAllId = 2,
        learnId = 3,
        unlearnId = 4
    };

    ParameterContextMenu(EngineProxy& proxy, const String& elementPath, uint32_t parameterId);

    /** "MIDI Unlearn (CC #<n>)" while a controller drives the parameter, else "MIDI Unlearn". */
    juce::String unlearnText() const;
    juce::PopupMenu build() const;
    /** Acts on a result of the menu; "MIDI Learn" opens the settings panel over the
        window that holds `from`. */
    void perform(int result, juce::Component& from) const;
    /** Shows the menu at the mouse and acts on the choice. */
    void show(juce::Component& from) const;

private:
    EngineProxy& proxy;
    String path;
    uint32_t parameterId;
};
} // namespace oxa
