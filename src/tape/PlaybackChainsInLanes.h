#pragma once

#include "tape/Lanes.h"
#include "tape/PlaybackFilterChain.h"
#include "tape/TapeCeiling.h"

#include <cstdint>

namespace oxa
{

// The playback chains of two decks side by side for one block: coefficients and
// histories are gathered into lanes when the block starts and the histories given back
// when it ends, so the per-sample work is one pass of lane arithmetic for both decks.
// Each lane computes what its deck's own chain computes, bit for bit. A coefficient a
// setter changes during the block takes effect with the next one; a history a setter
// clears during the block stays cleared.
class PlaybackChainsInLanes
{
public:
    // Takes over the two chains for a block. False (and nothing taken) when either chain
    // is off: those decks then run their own chains.
    bool gather(PlaybackFilterChain& first, PlaybackFilterChain& second) noexcept;

    // Gives the histories back to the chains gathered from.
    void scatter() noexcept;

    // One sample of each deck through its chain.
    Lanes process(Lanes x) noexcept
    {
        x = FifthOrderSection::step(spacing.b, spacing.a, spacing.xHistory, spacing.yHistory, x);
        x = ThicknessFilter::step(thicknessB0, thicknessB1, thicknessA1, thicknessX1, thicknessY1, x);
        x = FifthOrderSection::step(trackWidth.b, trackWidth.a, trackWidth.xHistory, trackWidth.yHistory, x);
        return azimuth(x);
    }

private:
    struct Section
    {
        Lanes b[FifthOrderSection::order + 1], a[FifthOrderSection::order + 1];
        Lanes xHistory[FifthOrderSection::order], yHistory[FifthOrderSection::order];
    };

    Lanes azimuth(Lanes x) noexcept
    {
        // Each deck keeps its own ring and position; only the arithmetic is shared.
        std::uint32_t older[2], oldest[2];
        for (int lane = 0; lane < 2; ++lane)
        {
            older[lane] = AzimuthFilter::olderTap(positions[lane], delays[lane]);
            oldest[lane] = AzimuthFilter::oldestTap(older[lane]);
        }
        const Lanes y = AzimuthFilter::combine(g0, g1, g2, p1, p2, x, Lanes(rings[0][older[0]], rings[1][older[1]]),
                                               Lanes(rings[0][oldest[0]], rings[1][oldest[1]]), y1, y2);
        rings[0][positions[0]] = x.first();
        rings[1][positions[1]] = x.second();
        for (std::uint32_t& position : positions)
            position = AzimuthFilter::nextPosition(position);
        return y;
    }

    PlaybackFilterChain* chains[2] = {};
    unsigned clearsAtGather[2] = {};
    Section spacing, trackWidth;
    Lanes thicknessB0, thicknessB1, thicknessA1, thicknessX1, thicknessY1;
    Lanes g0, g1, g2, p1, p2, y1, y2;
    double* rings[2] = {};
    std::uint32_t delays[2] = {};
    std::uint32_t positions[2] = {};
};

// TapeCeiling::apply on each lane: the bend only where a lane passes the knee.
[[gnu::always_inline]] inline Lanes applyTapeCeiling(Lanes x) noexcept
{
    const LaneMask below = abs(x) <= Lanes(TapeCeiling::knee);
    if (below.every())
        return x;
    return Lanes(TapeCeiling::apply(x.first()), TapeCeiling::apply(x.second()));
}

} // namespace oxa
