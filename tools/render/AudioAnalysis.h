#pragma once
// Level measurements of a render: what a sound designer compares between input and output.

#include <juce_audio_basics/juce_audio_basics.h>

namespace oxa::render
{
/** "No level": silence, or too short to measure. */
constexpr double kNoLevel = -200.0;

struct LevelMeasurement
{
    double peakDb = kNoLevel;       // highest absolute sample, dBFS
    double rmsDb = kNoLevel;        // over all channels and samples, dBFS
    double loudnessLufs = kNoLevel; // integrated, K-weighted and gated (host::measureLoudness)
};

/** Measures the whole buffer at the given rate. */
LevelMeasurement measureLevels(const juce::AudioBuffer<float>& audio, double sampleRate);

/** Three lines for the output, each with its difference to the input:
    "peak      -3.10 dBFS  (+0.42 dB against the input)". */
juce::String describeLevels(const LevelMeasurement& output, const LevelMeasurement& input);
} // namespace oxa::render
