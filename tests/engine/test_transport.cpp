// Host play head to transport: defaults, jumps and bar positions.
#include "engine/HostTransport.h"

#include <gtest/gtest.h>

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

TEST(HostTransport, NoPlayHeadLeavesTheContextUntouched)
{
    HostTransportTracker tracker;
    TransportInfo info;
    info.tempo = 99.0f;
    EXPECT_FALSE(tracker.update(std::nullopt, 512, 48000.0, false, info));
    EXPECT_EQ(info.tempo, 99.0f);
    EXPECT_EQ(TransportInfo {}.playing, -1);
    EXPECT_EQ(TransportInfo {}.numerator, 4);
}

TEST(HostTransport, TempoWithoutPositionGivesPositionZero)
{
    HostTransportTracker tracker;
    TransportInfo info;
    HostPosition p;
    p.bpm = 90.0;
    ASSERT_TRUE(tracker.update(p, 512, 48000.0, false, info));
    EXPECT_EQ(info.tempo, 90.0f);
    EXPECT_EQ(info.position, 0.0);
    EXPECT_EQ(info.positionInBar, 0.0);
    EXPECT_EQ(info.playing, 0);
}

TEST(HostTransport, JumpIsFlaggedOnlyBeyondOneQuarterNote)
{
    const double sr = 48000.0;
    HostTransportTracker tracker;
    TransportInfo info;
    tracker.update(playingAt(10.0), 0, sr, false, info); // first block: state change
    EXPECT_EQ(info.flags & 1u, 1u);

    tracker.update(playingAt(10.0), 0, sr, false, info); // continuous
    EXPECT_EQ(info.flags & 1u, 0u);

    tracker.update(playingAt(9.0), 0, sr, false, info); // back by exactly 1.0
    EXPECT_EQ(info.flags & 1u, 0u);

    tracker.update(playingAt(7.99), 0, sr, false, info); // back by 1.01
    EXPECT_EQ(info.flags & 1u, 1u);
}

TEST(HostTransport, ExpectedPositionFollowsTheBlock)
{
    HostTransportTracker tracker;
    TransportInfo info;
    tracker.update(playingAt(0.0, 120.0), 24000, 48000.0, false, info);
    EXPECT_DOUBLE_EQ(tracker.expectedPosition, 1.0); // half a second at 120 bpm
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
