#include "editor/TapeModulePresetDisplay.h"

namespace oxa
{
TapeModulePresetDisplay::TapeModulePresetDisplay(EngineProxy* proxy)
    : ModulePresetDisplay(proxy, std::make_unique<TapePresetBank>(), layout::tapePresetBar(),
                          {juce::Colour(layout::legendColour), 19.0f, juce::Justification::centredLeft, false})
{
}
} // namespace oxa
