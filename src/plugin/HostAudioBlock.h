#pragma once
// A view of the host's buffer for one block: the engine renders in place in it.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace oxa
{
class HostAudioBlock
{
public:
    static constexpr size_t maxChannels = 32;

    explicit HostAudioBlock(bool withAuxBlocks = true);

    /** Points the block at the host's channels. Allocation free up to maxChannels. */
    void init(float* const* channels, uint32_t numChannels, uint32_t numSamples);

    float* const* mainChannels() const { return deinterleaved ? copyPointers.data() : channels.data(); }
    uint32_t channelCount() const { return (uint32_t) channels.size(); }

    uint32_t length = 0;
    const float* interleavedSource = nullptr; // never set by this plug-in
    std::vector<float*> channels;
    std::vector<float> copySamples;
    std::vector<float*> copyPointers;
    bool deinterleaved = false;
    std::vector<HostAudioBlock> inputAux;
    std::vector<HostAudioBlock> outputAux;
    uint32_t inputAuxCount = 0;
    uint32_t outputAuxCount = 0;
    bool silent = false;
};
} // namespace oxa
