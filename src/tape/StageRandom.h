#pragma once

#include <cstdint>

namespace oxa
{

// Two-word xor-add generator shared by the deck stages. Cheap, deterministic and
// identical on every platform, so decks seeded alike run the same sequence.
struct StageRandom
{
    uint32_t a = 16807u;
    uint32_t b = 282475249u;

    void seed (uint32_t first, uint32_t second) noexcept
    {
        a = first;
        b = second;
    }

    // A value in -0.5..0.5.
    float next() noexcept
    {
        const uint32_t r = b;
        a ^= r;
        b = a + r;
        return static_cast<float> (static_cast<double> (static_cast<int32_t> (r)) * 2.3283064365386963e-10);
    }
};

} // namespace oxa
