#pragma once
// Level measurements of a render: what a sound designer compares between input and output.

#include <juce_audio_basics/juce_audio_basics.h>

namespace oxa::render
{
struct LevelMeasurement
{
    double peakDb = -400.0;     // highest absolute sample, dBFS
    double rmsDb = -400.0;      // over all channels and samples, dBFS
    double loudnessLufs = -400.0; // integrated, K-weighted and gated (ITU-R BS.1770)
};

/** Measures the whole buffer at the given rate. Silence gives -400 everywhere, the
    value the rest of the project uses for "no level". */
LevelMeasurement measureLevels(const juce::AudioBuffer<float>& audio, double sampleRate);

/** Three lines for the output, each with its difference to the input:
    "peak      -3.10 dBFS  (+0.42 dB against the input)". */
juce::String describeLevels(const LevelMeasurement& output, const LevelMeasurement& input);
} // namespace oxa::render
