#pragma once

#include <cstdint>

namespace oxa
{

// Hands out the seeds of the record heads' noise and of unsynchronised drift.
// Every deck gets its own numbers, but the sequence restarts at prepare and at
// reset, so the same settings played from the same start give the same audio
// in every instance, as a bounce must. It is the 31-bit minimal standard
// generator: no lock and no shared state, unlike the C library's rand().
class SeedSequence
{
public:
    static constexpr std::uint32_t start = 20170609u;

    void restart() noexcept { state = start; }

    // A value in 1 .. 2^31 - 2.
    std::uint32_t next() noexcept
    {
        state = static_cast<std::uint32_t>((static_cast<std::uint64_t>(state) * 48271u) % 2147483647u);
        return state;
    }

private:
    std::uint32_t state = start;
};

} // namespace oxa
