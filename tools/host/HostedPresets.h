#pragma once
// Module presets for a hosted plug-in: the factory banks of the build's
// resource archive (or a file), applied through the plug-in's state chunk the
// way the editor's preset bars apply them. The plug-in's own state loading does
// the per-parameter work (defaults for missing values, clamping, the older
// scale of "Hysteresis"); this side chooses which values the preset may change.

#include <juce_audio_processors/juce_audio_processors.h>

namespace oxa::host
{
enum class PresetKind
{
    full, // every value except name, bypass and locked values
    tape  // only the tape machine's 26 values
};

struct PresetSource
{
    juce::String text;     // the file's XML
    juce::String pathText; // what the plug-in records as the preset's path
    juce::String error;    // why there is none
};

/** The factory preset files packed in a resource archive, sorted by name:
    "resource/presets/<bank>/<name>.fxps" or "resource/tapepresets/<name>.fxps". */
juce::StringArray listFactoryPresets(const juce::File& archive, PresetKind kind);

/** A factory preset by its name ("Jet Tape", "06 Cassette Type I", "Cassette Type I",
    "01 Classic/Jet Tape") or, failing that, a file. */
PresetSource findPreset(const juce::File& archive, PresetKind kind, const juce::String& nameOrPath);

/** Returns an error message, empty on success; on error the plug-in is unchanged. */
juce::String applyPreset(juce::AudioProcessor& plugin, const PresetSource& preset, PresetKind kind);

/** The names a tape preset sets. */
const juce::StringArray& tapeParameterNames();
} // namespace oxa::host
