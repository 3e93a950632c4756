// Host play head to transport: defaults, jumps and bar positions.
#include "engine/HostTransport.h"

#include <gtest/gtest.h>

#include <utility>

using namespace oxa;

namespace
{
HostPosition playingAt(double ppq, double bpm = 120.0)
{
    HostPosition p;
    p.bpm = bpm;
    p.ppqPosition = ppq;
    p.playing = true;
    p.numerator = 4;
    p.denominator = 4;
    return p;
}
} // namespace

TEST(HostTransport, NoPlayHeadLeavesTheContextAndTempoAloneGivesPositionZero)
{
    HostTransportTracker tracker;
    TransportInfo info;
    info.tempo = 99.0f;
    EXPECT_FALSE(tracker.update(std::nullopt, 512, 48000.0, false, info));
    EXPECT_EQ(info.tempo, 99.0f);

    HostPosition p;
    p.bpm = 90.0;
    ASSERT_TRUE(tracker.update(p, 512, 48000.0, false, info));
    EXPECT_EQ(info.tempo, 90.0f);
    EXPECT_EQ(info.position, 0.0);
    EXPECT_EQ(info.positionInBar, 0.0);
    EXPECT_EQ(info.playing, 0);
}

TEST(HostTransport, JumpIsFlaggedOnlyBeyondOneQuarterNoteFromWhereTheBlockLeftOff)
{
    HostTransportTracker tracker;
    TransportInfo info;
    // the first block is a state change; then continuous, back by exactly 1.0, back by 1.01
    const std::pair<double, uint32_t> steps[] = {{10.0, 1u}, {10.0, 0u}, {9.0, 0u}, {7.99, 1u}};
    for (const auto& [ppq, jump] : steps)
    {
        tracker.update(playingAt(ppq), 0, 48000.0, false, info);
        EXPECT_EQ(info.flags & 1u, jump) << "at " << ppq;
    }
    // Half a second at 120 bpm: the next block is expected a beat later, and is no jump there.
    tracker.update(playingAt(0.0, 120.0), 24000, 48000.0, false, info);
    EXPECT_DOUBLE_EQ(tracker.expectedPosition, 1.0);
    tracker.update(playingAt(1.0, 120.0), 24000, 48000.0, false, info);
    EXPECT_EQ(info.flags & 1u, 0u);
}

TEST(HostTransport, BarPositionUsesLastBarStartOnlyAboveZero)
{
    HostTransportTracker tracker;
    TransportInfo info;
    HostPosition p = playingAt(9.5);
    p.ppqLastBarStart = 8.0;
    tracker.update(p, 0, 44100.0, false, info);
    EXPECT_DOUBLE_EQ(info.positionInBar, 1.5);

    p.ppqLastBarStart = 0.0; // zero falls back to the modulo
    p.ppqPosition = 13.0;
    tracker.update(p, 0, 44100.0, false, info);
    EXPECT_DOUBLE_EQ(info.positionInBar, 1.0);

    const double spb = 60.0 / 120.0 * 44100.0;
    EXPECT_DOUBLE_EQ(info.samplesToNextBar, 3.0 * spb);
    EXPECT_DOUBLE_EQ(info.samplesToNextBeat, 1.0 * spb);
}
