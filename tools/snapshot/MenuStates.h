#pragma once
// Pictures of the window's transient states: the open preset menu, the A/B button's
// three looks, the MIDI settings panel and a lockable control's menu.

#include <juce_core/juce_core.h>

namespace oxa::snapshot
{
/** Writes the pictures at one scale into `dir`; the number written, or -1 on failure. */
int writeMenuStates(const juce::File& dir, int scale);
} // namespace oxa::snapshot
