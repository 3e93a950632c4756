#pragma once
// A set of channel pointers that elements render into, in place.

#include <cstdint>
#include <string>
#include <vector>

namespace oxa
{
class ScratchArena;

class AudioBus
{
public:
    enum Flags : uint8_t
    {
        ownsChannels = 1,
        zeroOnRead = 2,
        silent = 4
    };

    AudioBus(uint32_t channelCount, uint32_t blockLength, std::string name = "Main Out");

    /** Channel count of a layout code: 0..8 and 12 are literal, 13 and 14 are quad. */
    static uint32_t channelsForLayout(uint32_t layoutCode);

    uint32_t channelCount() const { return channelsForLayout(layoutCode); }

    /** Points the bus at external channels and clears the silent flag. */
    void setChannels(float* const* channels);

    /** Marks the bus silent for a block; an owning bus takes new sample space from the arena. */
    void markSilent(uint32_t numSamples, ScratchArena* arena = nullptr);

    /** The channels for reading: a silent zero-on-read bus is cleared first. Clears silent. */
    float* const* getChannels();

    bool isSilent() const { return (flags & silent) != 0; }

    uint32_t layoutCode;
    uint32_t connectionCount = 0;
    uint32_t blockLength;
    std::string name;
    uint8_t flags = silent;

private:
    std::vector<float*> pointers; // sized at construction: no allocation while rendering
};
} // namespace oxa
