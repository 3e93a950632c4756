#include "tape/PlaybackChainsInLanes.h"

namespace oxa
{
namespace
{
// Lane i of every field from the i-th of the two sections, and back.
template <class Section>
void gatherSection(Section& lanes, const FifthOrderSection& first, const FifthOrderSection& second) noexcept
{
    for (int i = 0; i <= FifthOrderSection::order; ++i)
    {
        lanes.b[i] = Lanes(first.b[i], second.b[i]);
        lanes.a[i] = Lanes(first.a[i], second.a[i]);
    }
    for (int i = 0; i < FifthOrderSection::order; ++i)
    {
        lanes.xHistory[i] = Lanes(first.xHistory[i], second.xHistory[i]);
        lanes.yHistory[i] = Lanes(first.yHistory[i], second.yHistory[i]);
    }
}

template <class Section>
void scatterSection(const Section& lanes, FifthOrderSection& section, bool second) noexcept
{
    for (int i = 0; i < FifthOrderSection::order; ++i)
    {
        section.xHistory[i] = second ? lanes.xHistory[i].second() : lanes.xHistory[i].first();
        section.yHistory[i] = second ? lanes.yHistory[i].second() : lanes.yHistory[i].first();
    }
}

double laneOf(Lanes x, int lane) noexcept { return lane == 0 ? x.first() : x.second(); }
} // namespace

bool PlaybackChainsInLanes::gather(PlaybackFilterChain& first, PlaybackFilterChain& second) noexcept
{
    chains[0] = chains[1] = nullptr;
    if (!first.on || !second.on)
        return false;
    chains[0] = &first;
    chains[1] = &second;
    for (int lane = 0; lane < 2; ++lane)
        clearsAtGather[lane] = chains[lane]->clears;
    gatherSection(spacing, first.spacing.section, second.spacing.section);
    gatherSection(trackWidth, first.trackWidth.section, second.trackWidth.section);

    const ThicknessFilter& t0 = first.thickness;
    const ThicknessFilter& t1 = second.thickness;
    thicknessB0 = Lanes(t0.b0, t1.b0);
    thicknessB1 = Lanes(t0.b1, t1.b1);
    thicknessA1 = Lanes(t0.a1, t1.a1);
    thicknessX1 = Lanes(t0.x1, t1.x1);
    thicknessY1 = Lanes(t0.y1, t1.y1);

    AzimuthFilter& z0 = first.azimuth;
    AzimuthFilter& z1 = second.azimuth;
    g0 = Lanes(z0.g0, z1.g0);
    g1 = Lanes(z0.g1, z1.g1);
    g2 = Lanes(z0.g2, z1.g2);
    p1 = Lanes(z0.p1, z1.p1);
    p2 = Lanes(z0.p2, z1.p2);
    y1 = Lanes(z0.y1, z1.y1);
    y2 = Lanes(z0.y2, z1.y2);
    rings[0] = z0.ring;
    rings[1] = z1.ring;
    delays[0] = z0.delay;
    delays[1] = z1.delay;
    positions[0] = z0.position;
    positions[1] = z1.position;
    return true;
}

void PlaybackChainsInLanes::scatter() noexcept
{
    for (int lane = 0; lane < 2; ++lane)
    {
        PlaybackFilterChain* chain = chains[lane];
        if (chain == nullptr || chain->clears != clearsAtGather[lane])
            continue;
        const bool second = lane == 1;
        scatterSection(spacing, chain->spacing.section, second);
        scatterSection(trackWidth, chain->trackWidth.section, second);
        chain->thickness.x1 = laneOf(thicknessX1, lane);
        chain->thickness.y1 = laneOf(thicknessY1, lane);
        chain->azimuth.y1 = laneOf(y1, lane);
        chain->azimuth.y2 = laneOf(y2, lane);
        chain->azimuth.position = positions[lane];
    }
    chains[0] = chains[1] = nullptr;
}

} // namespace oxa
