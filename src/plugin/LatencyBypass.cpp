#include "plugin/LatencyBypass.h"

#include <algorithm>
#include <cmath>

namespace oxa
{
void LatencyBypass::prepare(int channelCount, double sampleRate, int maxBlockSize, int maxLatency)
{
    // A state load rebuilds the buses with the same settings: the held input stays.
    if (channelCount == preparedChannels && sampleRate == preparedRate && maxBlockSize == maxBlock
        && maxLatency == preparedLatency)
        return;
    preparedChannels = channelCount;
    preparedRate = sampleRate;
    preparedLatency = maxLatency;
    unsigned size = 1;
    while (size < (unsigned) std::max(maxLatency, 0) + (unsigned) std::max(maxBlockSize, 1) + 1)
        size <<= 1;
    rings.assign((size_t) std::max(channelCount, 0), std::vector<float>(size, 0.0f));
    mask = size - 1;
    writePosition = 0;
    blockStart = 0;
    maxBlock = std::max(maxBlockSize, 1);
    step = (float) (1.0 / std::max(1.0, std::round(sampleRate * fadeSeconds)));
}

bool LatencyBypass::canHandle(int numChannels, int numSamples, int latency) const
{
    return numChannels <= (int) rings.size() && numSamples <= maxBlock && latency >= 0
           && (unsigned) latency + (unsigned) numSamples <= mask;
}

void LatencyBypass::pushInput(const float* const* channels, int numChannels, int numSamples)
{
    blockStart = writePosition;
    for (size_t c = 0; c < rings.size(); ++c)
    {
        float* ring = rings[c].data();
        const float* in = c < (size_t) numChannels ? channels[c] : nullptr;
        for (int i = 0; i < numSamples; ++i)
            ring[(blockStart + (unsigned) i) & mask] = in != nullptr ? in[i] : 0.0f;
    }
    writePosition = (blockStart + (unsigned) numSamples) & mask;
}

void LatencyBypass::mixOutput(float* const* channels, int numChannels, int numSamples, int latency, bool bypassed,
                              bool rendered)
{
    // Nothing processed to fade from: the delayed input is all there is, and the
    // next rendered block fades back from it.
    const float target = bypassed || !rendered ? 1.0f : 0.0f;
    if (!rendered)
        gain = 1.0f;
    const float start = gain;
    const unsigned readStart = (blockStart - (unsigned) latency) & mask;
    for (int c = 0; c < numChannels && c < (int) rings.size(); ++c)
    {
        const float* ring = rings[(size_t) c].data();
        float* out = channels[c];
        float g = start;
        for (int i = 0; i < numSamples; ++i)
        {
            g = g < target ? std::min(target, g + step) : std::max(target, g - step);
            const float dry = ring[(readStart + (unsigned) i) & mask];
            if (g >= 1.0f)
                out[i] = dry;
            else if (g > 0.0f)
                out[i] = out[i] + g * (dry - out[i]);
        }
        gain = g;
    }
    if (numChannels <= 0 || rings.empty())
        gain = target;
}
} // namespace oxa
