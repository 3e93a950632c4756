#include "tape/OutputLevels.h"

#include <cmath>

namespace oxa
{

namespace
{
float blockPeak(const float* samples, std::uint32_t count) noexcept
{
    float peak = 0.0f;
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const float level = std::fabs(samples[i]);
        if (level > peak && std::isfinite(level))
            peak = level;
    }
    return peak;
}
} // namespace

void OutputLevels::publish(const float* const* channels, std::uint32_t numChannels, std::uint32_t numSamples) noexcept
{
    if (channels == nullptr || numChannels == 0 || numSamples == 0)
        return;
    float levels[channelCount] {};
    for (std::uint32_t c = 0; c < channelCount && c < numChannels; ++c)
        if (channels[c] != nullptr)
            levels[c] = blockPeak(channels[c], numSamples);
    if (numChannels == 1)
        levels[1] = levels[0];
    for (std::uint32_t c = 0; c < channelCount; ++c)
        raise(peaks[c], levels[c]);
}

void OutputLevels::raise(std::atomic<float>& peak, float level) noexcept
{
    // Only the reader competes, and it only ever writes zero: the loop ends within
    // a retry or two.
    float current = peak.load(std::memory_order_relaxed);
    while (level > current && !peak.compare_exchange_weak(current, level, std::memory_order_release,
                                                           std::memory_order_relaxed))
    {
    }
}

float OutputLevels::take(std::uint32_t channel) noexcept
{
    if (channel >= channelCount)
        return 0.0f;
    return peaks[channel].exchange(0.0f, std::memory_order_acquire);
}

} // namespace oxa
