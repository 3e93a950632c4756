#pragma once

#include <cstdint>

namespace oxa
{

// The cheap two-word generator every deck stage draws from. Deterministic
// seeds let two decks (or channels) run the same sequence on purpose.
struct RandomPair
{
    std::uint32_t a = 16807;
    std::uint32_t b = 282475249;

    // Returns a value in -0.5..0.5.
    float next() noexcept
    {
        const std::uint32_t r = b;
        a ^= r;
        b = a + r;
        return static_cast<float>(static_cast<double>(static_cast<std::int32_t>(r)) * 2.3283064365386963e-10);
    }

    void seed(std::uint32_t first, std::uint32_t second) noexcept
    {
        a = first;
        b = second;
    }
};

} // namespace oxa
