#include "plugin/HostAudioBlock.h"

namespace oxa
{
HostAudioBlock::HostAudioBlock(bool withAuxBlocks)
{
    channels.reserve(maxChannels);
    (void) withAuxBlocks; // aux blocks are sized when the buses are rebuilt
}

void HostAudioBlock::init(float* const* hostChannels, uint32_t numChannels, uint32_t numSamples)
{
    if (numChannels > maxChannels)
        numChannels = maxChannels;
    channels.clear();
    for (uint32_t c = 0; c < numChannels; ++c)
        channels.push_back(hostChannels[c]);
    length = numSamples;
    deinterleaved = false;
    silent = false;
}
} // namespace oxa
