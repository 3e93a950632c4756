#include "render/AudioAnalysis.h"

#include <cmath>
#include <vector>

namespace oxa::render
{
namespace
{
constexpr double kNoLevel = -400.0;
constexpr double kPi = 3.14159265358979323846;

double toDb(double power)
{
    return power > 1e-40 ? 10.0 * std::log10(power) : kNoLevel;
}

/** A biquad in direct form I, coefficients normalised by a0. */
struct Biquad
{
    double b0 = 1, b1 = 0, b2 = 0, a1 = 0, a2 = 0;
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

    double process(double x)
    {
        const auto y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
        x2 = x1, x1 = x, y2 = y1, y1 = y;
        return y;
    }
};

// The K-weighting of BS.1770 as its analog prototypes (a high shelf for the head, a
// high-pass for the low end), mapped to the rate by the bilinear transform, so that
// any rate gets the response the standard's 48 kHz coefficients describe.
Biquad headShelf(double rate)
{
    const auto gainDb = 3.999843853973347, f0 = 1681.974450955533, q = 0.7071752369554196;
    const auto k = std::tan(kPi * f0 / rate);
    const auto vh = std::pow(10.0, gainDb / 20.0);
    const auto vb = std::pow(vh, 0.4996667741545416);
    const auto a0 = 1.0 + k / q + k * k;
    Biquad f;
    f.b0 = (vh + vb * k / q + k * k) / a0;
    f.b1 = 2.0 * (k * k - vh) / a0;
    f.b2 = (vh - vb * k / q + k * k) / a0;
    f.a1 = 2.0 * (k * k - 1.0) / a0;
    f.a2 = (1.0 - k / q + k * k) / a0;
    return f;
}

Biquad lowCut(double rate)
{
    const auto f0 = 38.13547087602444, q = 0.5003270373238773;
    const auto k = std::tan(kPi * f0 / rate);
    const auto a0 = 1.0 + k / q + k * k;
    Biquad f;
    f.b0 = 1.0, f.b1 = -2.0, f.b2 = 1.0;
    f.a1 = 2.0 * (k * k - 1.0) / a0;
    f.a2 = (1.0 - k / q + k * k) / a0;
    return f;
}

/** Mean square of the K-weighted signal in 400 ms blocks that overlap by 75 %, summed
    over the channels (front channels all weigh 1). */
std::vector<double> weightedBlockPowers(const juce::AudioBuffer<float>& audio, double rate)
{
    const auto length = audio.getNumSamples();
    const auto blockLength = (int) std::lround(0.4 * rate);
    const auto hop = juce::jmax(1, blockLength / 4);
    std::vector<double> squares((size_t) length, 0.0);

    for (int channel = 0; channel < audio.getNumChannels(); ++channel)
    {
        auto shelf = headShelf(rate);
        auto cut = lowCut(rate);
        const auto* samples = audio.getReadPointer(channel);

        for (int i = 0; i < length; ++i)
        {
            const auto y = cut.process(shelf.process(samples[i]));
            squares[(size_t) i] += y * y;
        }
    }

    std::vector<double> powers;
    for (int start = 0; blockLength > 0 && start + blockLength <= length; start += hop)
    {
        double sum = 0.0;
        for (int i = start; i < start + blockLength; ++i)
            sum += squares[(size_t) i];
        powers.push_back(sum / blockLength);
    }
    return powers;
}

double gatedLoudness(const std::vector<double>& powers)
{
    const auto loudnessOf = [](double power) { return -0.691 + toDb(power); };
    const auto meanAbove = [&](double gateLufs, double& mean) {
        double sum = 0.0;
        int count = 0;
        for (auto p : powers)
            if (loudnessOf(p) > gateLufs)
                sum += p, ++count;
        mean = count > 0 ? sum / count : 0.0;
        return count > 0;
    };

    double absoluteMean = 0.0;
    if (!meanAbove(-70.0, absoluteMean))
        return kNoLevel;

    double relativeMean = 0.0;
    if (!meanAbove(loudnessOf(absoluteMean) - 10.0, relativeMean))
        return kNoLevel;

    return loudnessOf(relativeMean);
}

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

    double peak = 0.0, sumOfSquares = 0.0;
    for (int channel = 0; channel < channels; ++channel)
        for (int i = 0; i < length; ++i)
        {
            const double x = audio.getSample(channel, i);
            peak = juce::jmax(peak, std::abs(x));
            sumOfSquares += x * x;
        }

    levels.peakDb = toDb(peak * peak);
    levels.rmsDb = toDb(sumOfSquares / ((double) channels * length));
    levels.loudnessLufs = gatedLoudness(weightedBlockPowers(audio, sampleRate));
    return levels;
}

juce::String describeLevels(const LevelMeasurement& output, const LevelMeasurement& input)
{
    return formatLine("peak", output.peakDb, "dBFS", input.peakDb)
           + formatLine("RMS", output.rmsDb, "dBFS", input.rmsDb)
           + formatLine("loudness", output.loudnessLufs, "LUFS", input.loudnessLufs);
}
} // namespace oxa::render
