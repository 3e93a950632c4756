#pragma once
// Reading and writing the WAV files that the render tool works on.

#include <juce_audio_basics/juce_audio_basics.h>
#include <juce_core/juce_core.h>

namespace oxa::host
{
/** Audio in memory with the rate it was recorded at. */
struct AudioClip
{
    juce::AudioBuffer<float> samples;
    double sampleRate = 0.0;
};

/** Reads a whole WAV (or AIFF) file. Returns an error message, empty on success. */
juce::String readAudioFile(const juce::File& file, AudioClip& clip);

/** Writes 32-bit float or 24-bit integer WAV. Returns an error message, empty on success. */
juce::String writeWavFile(const juce::File& file, const AudioClip& clip, int bitsPerSample);
} // namespace oxa::host
