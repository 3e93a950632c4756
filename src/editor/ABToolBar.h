#pragma once
// The top bar: the effect's preset bar and the A/B compare button sit here. Its look
// (the bar, the name box, the legends) is in the background image.
//
// A/B keeps one stored state in the effect (so it is saved with the project); the two
// memories exist only in the button's look, which starts afresh with each window.

#include "editor/ModulePresetDisplay.h"
#include "editor/widgets/Button.h"
#include "engine/ElementView.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace oxa
{
class ABToolBar : public juce::Component, public SimpleElementView
{
public:
    explicit ABToolBar(EngineProxy* proxy);
    ~ABToolBar() override;

    /** 0: nothing stored yet; 1 or 2: which memory the button shows. */
    int getMemoryState() const { return memoryState; }
    /** What a click on the A/B button does. */
    void compare();

    ModulePresetDisplay& getPresetDisplay() { return presetDisplay; }
    Button& getABButton() { return abButton; }

    void resized() override;

private:
    void showMemoryState();

    ModulePresetDisplay presetDisplay;
    Button abButton {"A/B"};
    int memoryState = 0;
};
} // namespace oxa
