#pragma once
// Programme loudness of a rendered clip: K-weighted, gated over 400 ms blocks
// with 75 % overlap, absolute gate -70 LUFS and relative gate -10 LU. Used to
// level-match presets, where only differences between clips matter.

#include <juce_audio_basics/juce_audio_basics.h>

namespace oxa::host
{
struct LoudnessReport
{
    double integratedLufs = -200.0; // -200 for silence or a clip shorter than one block
    double peakDbfs = -200.0;
    bool finite = true;              // no NaN or infinity anywhere
};

LoudnessReport measureLoudness(const juce::AudioBuffer<float>& samples, double sampleRate);
} // namespace oxa::host
