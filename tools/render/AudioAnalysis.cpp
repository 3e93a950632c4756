#include "render/AudioAnalysis.h"

#include "host/Loudness.h"

#include <cmath>

namespace oxa::render
{
namespace
{
juce::String formatLine(const char* label, double value, const char* unit, double inputValue)
{
    auto line = juce::String(label).paddedRight(' ', 10) + juce::String(value, 2) + " " + unit;

    if (value <= kNoLevel || inputValue <= kNoLevel)
        return line + "\n";

    const auto difference = value - inputValue;
    return line + "  (" + (difference >= 0.0 ? "+" : "") + juce::String(difference, 2) + " dB against the input)\n";
}
} // namespace

LevelMeasurement measureLevels(const juce::AudioBuffer<float>& audio, double sampleRate)
{
    LevelMeasurement levels;
    const auto channels = audio.getNumChannels();
    const auto length = audio.getNumSamples();

    if (channels == 0 || length == 0 || sampleRate <= 0.0)
        return levels;

    double sumOfSquares = 0.0;
    for (int channel = 0; channel < channels; ++channel)
        for (int i = 0; i < length; ++i)
            sumOfSquares += (double) audio.getSample(channel, i) * audio.getSample(channel, i);

    const auto meanSquare = sumOfSquares / ((double) channels * length);
    levels.rmsDb = meanSquare > 1e-20 ? juce::jmax(kNoLevel, 10.0 * std::log10(meanSquare)) : kNoLevel;

    const auto loudness = host::measureLoudness(audio, sampleRate);
    levels.peakDb = juce::jmax(kNoLevel, loudness.peakDbfs);
    levels.loudnessLufs = juce::jmax(kNoLevel, loudness.integratedLufs);
    return levels;
}

juce::String describeLevels(const LevelMeasurement& output, const LevelMeasurement& input)
{
    return formatLine("peak", output.peakDb, "dBFS", input.peakDb)
           + formatLine("RMS", output.rmsDb, "dBFS", input.rmsDb)
           + formatLine("loudness", output.loudnessLufs, "LUFS", input.loudnessLufs);
}
} // namespace oxa::render
