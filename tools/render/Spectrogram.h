#pragma once
// A picture of a render: the input's and the output's spectrograms side by side.

#include <juce_audio_basics/juce_audio_basics.h>
#include <juce_graphics/juce_graphics.h>

namespace oxa::render
{
struct SpectrogramPicture
{
    juce::String title;           // first line above the panels
    juce::StringArray settings;   // "Mix = 50.00%", shown under the title
    int width = 1600;
    int height = 760;
};

/** Time to the right, frequency upwards on a log axis from 20 Hz to half the rate, level
    in dBFS as colour with its scale beside the panels. Both channels are summed to mid
    first, as the ear hears a flanger's comb. */
juce::Image drawSpectrograms(const juce::AudioBuffer<float>& input, const juce::AudioBuffer<float>& output,
                             double sampleRate, const SpectrogramPicture& picture);

/** Writes the image as PNG. Returns an error message, empty on success. */
juce::String writePng(const juce::Image& image, const juce::File& file);
} // namespace oxa::render
