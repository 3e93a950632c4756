#pragma once
// The default material of the render tool: a stereo groove that shows a flanger off.

#include <juce_audio_basics/juce_audio_basics.h>

namespace oxa::host
{
/** A bright detuned saw chord pad, kick, snare, hats and swelling noise bursts, stereo,
    peak at -3 dBFS. Always the same for the same rate and length. */
juce::AudioBuffer<float> makeDemoSignal(double sampleRate, double seconds);
} // namespace oxa::host
