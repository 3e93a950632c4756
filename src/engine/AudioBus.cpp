#include "engine/AudioBus.h"
#include "engine/RenderContext.h"

#include <cstring>

namespace oxa
{
AudioBus::AudioBus(uint32_t channelCount, uint32_t length, std::string busName)
    : layoutCode(channelCount), blockLength(length), name(std::move(busName)), pointers(channelCount + 1, nullptr)
{
}

uint32_t AudioBus::channelsForLayout(uint32_t code)
{
    if (code == 13 || code == 14)
        return 4;
    return code;
}

void AudioBus::setChannels(float* const* channels)
{
    const uint32_t n = channelCount();
    for (uint32_t c = 0; c < n && c < pointers.size(); ++c)
        pointers[c] = channels[c];
    flags &= (uint8_t) ~silent;
}

void AudioBus::markSilent(uint32_t numSamples, ScratchArena* arena)
{
    flags |= silent;
    blockLength = numSamples;
    if ((flags & ownsChannels) != 0 && arena != nullptr)
        for (uint32_t c = 0; c < channelCount(); ++c)
            pointers[c] = arena->allocateSamples(numSamples);
}

float* const* AudioBus::getChannels()
{
    if ((flags & silent) != 0 && (flags & zeroOnRead) != 0)
        for (uint32_t c = 0; c < channelCount(); ++c)
            if (pointers[c] != nullptr)
                std::memset(pointers[c], 0, sizeof(float) * blockLength);
    flags &= (uint8_t) ~silent;
    return pointers.data();
}
} // namespace oxa
