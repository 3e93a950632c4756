#pragma once

#include "tape/Lanes.h"
#include "tape/RecordHead.h"

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace oxa
{

// The hiss of a stereo pair's four record heads for one block, side by side: the four
// pink noise generators in one register each of integers and floats, the four gate
// followers in two registers, taken from the heads when the block starts and given back
// when it ends. Each lane draws the same random sequence and rounds exactly as its head's
// own nextNoise() and gate do, so the heads sound as they would alone.
class FourRecordHeads
{
public:
    // Takes the four heads over for a block. False (and nothing taken) where they cannot
    // run side by side: a head switched off (it then runs alone), or pink filters standing
    // at different counts (their rows change on different samples).
    bool gather(RecordHead* const* heads) noexcept;

    // Gives the generators and followers back to the heads gathered from.
    void scatter() noexcept;

    // H plus gated hiss for each head, as RecordHead::process() drives its solve: the four
    // inputs in h, the results in driven (heads 0, 1 in the first, 2, 3 in the second).
    void drive(const double* h, Lanes* driven) noexcept;

    // What the solve takes from the heads' settings, fixed for the block: hardness a and
    // sample rate over resistance, pairs (0, 1) and (2, 3).
    Lanes hardness[2], fsOverK[2];

private:
    void gatherConstants() noexcept;

    RecordHead* heads[4] = {};
#if defined(__SSE2__)
    // Four pink noise values, each as its head's nextNoise() gives it.
    __m128 nextNoise() noexcept;
    // The rare sample where a head's sum would leave its bounds: each head draws alone.
    __m128 nextNoiseOneByOne() noexcept;
    void scatterNoise() noexcept;
    void gatherNoise() noexcept;

    __m128i randomA, randomB;
    __m128 rows[5];
    __m128 sum;
    std::uint32_t counter = 1;
    Lanes envelope[2], keep[2], coefficient[2];
    __m128d gateOn[2];
    __m128 gateOff;
#endif
};

} // namespace oxa
