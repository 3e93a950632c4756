#pragma once
// The small preset bar of the tape settings: the same bar over the tape presets, which
// set only the tape machine's parameters, with its own places, font and colours and
// without the modified mark.

#include "editor/ModulePresetDisplay.h"

namespace oxa
{
class TapeModulePresetDisplay : public ModulePresetDisplay
{
public:
    explicit TapeModulePresetDisplay(EngineProxy* proxy);
};
} // namespace oxa
