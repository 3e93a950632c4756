#pragma once
// The top bar: the effect's preset bar and the A/B compare button sit here. Its look
// (the bar, the name box, the legends) is in the background image.

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

private:
    int memoryState = 0;
};
} // namespace oxa
