#pragma once

#include <atomic>
#include <cstdint>

namespace oxa
{

// The output peaks of the last blocks, handed from the audio thread to the
// window's meters without a lock. The audio thread raises each channel's peak;
// a meter takes it and leaves zero behind, so no peak between two meter reads is
// lost however short the blocks are. One reader per channel.
class OutputLevels
{
public:
    static constexpr std::uint32_t channelCount = 2;

    // Audio thread. A mono output shows on both channels; samples that are not
    // finite are left out.
    void publish(const float* const* channels, std::uint32_t numChannels, std::uint32_t numSamples) noexcept;

    // Reader: the highest absolute sample since the last take (0 for an unknown channel).
    float take(std::uint32_t channel) noexcept;

private:
    void raise(std::atomic<float>& peak, float level) noexcept;

    std::atomic<float> peaks[channelCount] {};
};

static_assert(std::atomic<float>::is_always_lock_free, "the meters must never make the audio thread wait");

} // namespace oxa
