#pragma once
// --preset, --tape-preset and --list-presets of flux-deck-render.

#include "render/RenderOptions.h"

namespace oxa::render
{
/** Applies the chosen full preset, then the tape preset. Returns an error message, empty on success. */
juce::String applyPresetOptions(juce::AudioProcessor& plugin, const RenderOptions& options);

/** Both factory banks, one preset a line, as --preset and --tape-preset accept them. */
juce::String describeFactoryPresets();
} // namespace oxa::render
