#pragma once
// The --set settings of a render, applied as a user turns one knob after another.

#include "host/HostedParameters.h"
#include "host/OfflineRenderer.h"

#include <vector>

namespace oxa::render
{
/** One line a setting, as the plug-in reads it back: "Mix = 50.00%". */
struct SettingsReport
{
    juce::StringArray lines;
    juce::String error; // empty on success
};

/** Writes the settings in order. Each write reaches the plug-in (one short block and the
    message thread's follow-ups) before the next, so that a later setting is not undone
    by an earlier one's side effects: switching to manual flange takes over the LFO's
    position, and only then may a manual position be set. The renderer must be prepared;
    prepare it again before rendering, so the render starts from rest. Stops at the first
    setting that cannot be read. */
SettingsReport applySettingsInOrder(juce::AudioProcessor& plugin, host::OfflineRenderer& renderer,
                                    const std::vector<host::ParameterSetting>& settings);
} // namespace oxa::render
