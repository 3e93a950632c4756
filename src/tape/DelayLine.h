#pragma once

#include <cstdint>
#include <vector>

namespace oxa
{

// An interpolating delay for blocks of floats. The buffer carries a mirrored
// tail (the overlap) so that a block read never has to wrap around.
struct DelayLine
{
    enum Interpolation : std::int32_t
    {
        nearest = 0,
        linear = 1,
        catmullRom = 2,
        bSpline = 3
    };

    std::vector<float> buffer;
    std::uint32_t allocated = 0;
    std::uint32_t writePosition = 0;
    std::uint32_t length = 0;
    std::uint32_t overlap = 0;
    std::uint32_t maxDelay = 0;
    std::int32_t interpolation = linear;

    // Allocates; not for the audio thread. Blocks must not exceed maxBlock.
    void configure(std::uint32_t maxBlock, std::uint32_t wantedMaxDelay);
    void clear() noexcept;

    // Stores a block at the write position; the position moves only in advance().
    void write(const float* samples, std::uint32_t count) noexcept;

    // Reads count samples whose delay runs linearly from startDelay to
    // endDelay (in samples, relative to the block just written).
    void read(float* out, double startDelay, double endDelay, std::uint32_t count) const noexcept;

    void advance(std::uint32_t count) noexcept;

private:
    float sampleAt(double position) const noexcept;
    float at(std::int64_t index) const noexcept;
};

} // namespace oxa
