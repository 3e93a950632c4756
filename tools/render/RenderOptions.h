#pragma once
// The command line of flux-deck-render.

#include "host/HostedParameters.h"

#include <juce_core/juce_core.h>

#include <vector>

namespace oxa::render
{
struct RenderOptions
{
    juce::String inputPath;   // empty: the built-in demo signal
    juce::String outputPath;
    juce::String bundlePath;  // empty: the bundle of this build
    double sampleRate = 0.0;  // 0: the input's rate, or 48 kHz for the demo
    int blockSize = 512;
    double seconds = 0.0;     // 0: the whole input, or 6 s of demo
    int bitsPerSample = 32;
    juce::String spectrogramPath; // empty: no picture
    bool analyze = false;
    bool listParameters = false;
    bool listPresets = false;
    juce::String presetName;     // a factory preset's name or a file, applied before --set
    juce::String tapePresetName; // the same for the tape bank, applied after the full preset
    bool showHelp = false;
    std::vector<host::ParameterSetting> settings;
};

/** Reads the arguments after the program name. Returns an error message, empty on success. */
juce::String parseRenderOptions(const juce::StringArray& arguments, RenderOptions& options);

juce::String renderUsage();
} // namespace oxa::render
