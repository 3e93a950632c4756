#include "host/Loudness.h"

#include <cmath>
#include <vector>

namespace oxa::host
{
namespace
{
struct Biquad
{
    double b0 = 1, b1 = 0, b2 = 0, a1 = 0, a2 = 0;
    double z1 = 0, z2 = 0;

    double process(double x)
    {
        const double y = b0 * x + z1;
        z1 = b1 * x - a1 * y + z2;
        z2 = b2 * x - a2 * y;
        return y;
    }
};

// The two stages of the K weighting, designed for any sample rate from their
// analogue prototypes: a +4 dB shelf above about 1.7 kHz and a high-pass near 38 Hz.
Biquad shelfStage(double sampleRate)
{
    const double f0 = 1681.974450955533, gainDb = 3.999843853973347, q = 0.7071752369554196;
    const double k = std::tan(juce::MathConstants<double>::pi * f0 / sampleRate);
    const double vh = std::pow(10.0, gainDb / 20.0);
    const double vb = std::pow(vh, 0.4996667741545416);
    const double a0 = 1.0 + k / q + k * k;
    Biquad s;
    s.b0 = (vh + vb * k / q + k * k) / a0;
    s.b1 = 2.0 * (k * k - vh) / a0;
    s.b2 = (vh - vb * k / q + k * k) / a0;
    s.a1 = 2.0 * (k * k - 1.0) / a0;
    s.a2 = (1.0 - k / q + k * k) / a0;
    return s;
}

Biquad highPassStage(double sampleRate)
{
    const double f0 = 38.13547087602444, q = 0.5003270373238773;
    const double k = std::tan(juce::MathConstants<double>::pi * f0 / sampleRate);
    const double a0 = 1.0 + k / q + k * k;
    Biquad s;
    s.b0 = 1.0;
    s.b1 = -2.0;
    s.b2 = 1.0;
    s.a1 = 2.0 * (k * k - 1.0) / a0;
    s.a2 = (1.0 - k / q + k * k) / a0;
    return s;
}

double toLufs(double meanSquare)
{
    return meanSquare > 0.0 ? -0.691 + 10.0 * std::log10(meanSquare) : -200.0;
}
} // namespace

LoudnessReport measureLoudness(const juce::AudioBuffer<float>& samples, double sampleRate)
{
    LoudnessReport report;
    const int channels = samples.getNumChannels();
    const int length = samples.getNumSamples();
    if (channels == 0 || length == 0 || sampleRate <= 0.0)
        return report;

    // Squared K-weighted signal summed over channels, one value a sample.
    std::vector<double> power((size_t) length, 0.0);
    float peak = 0.0f;
    for (int c = 0; c < channels; ++c)
    {
        Biquad shelf = shelfStage(sampleRate), highPass = highPassStage(sampleRate);
        const float* data = samples.getReadPointer(c);
        for (int i = 0; i < length; ++i)
        {
            if (!std::isfinite(data[i]))
            {
                report.finite = false;
                continue;
            }
            peak = std::max(peak, std::abs(data[i]));
            const double y = highPass.process(shelf.process(data[i]));
            power[(size_t) i] += y * y;
        }
    }
    report.peakDbfs = peak > 0.0f ? 20.0 * std::log10((double) peak) : -200.0;

    const int block = (int) std::lround(0.4 * sampleRate);
    const int hop = block / 4;
    std::vector<double> blocks;
    for (int start = 0; start + block <= length; start += hop)
    {
        double sum = 0.0;
        for (int i = start; i < start + block; ++i)
            sum += power[(size_t) i];
        blocks.push_back(sum / block);
    }

    auto gatedMean = [&blocks](double gateLufs) {
        double sum = 0.0;
        int count = 0;
        for (double b : blocks)
            if (toLufs(b) > gateLufs)
            {
                sum += b;
                ++count;
            }
        return count > 0 ? sum / count : 0.0;
    };
    const double absoluteGated = gatedMean(-70.0);
    if (absoluteGated > 0.0)
        report.integratedLufs = toLufs(gatedMean(toLufs(absoluteGated) - 10.0));
    return report;
}
} // namespace oxa::host
