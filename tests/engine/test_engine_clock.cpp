// The host's play head read into the transport (defaults, jumps, bar positions), the
// engine's own clock and its transport commands.
#include "engine/Engine.h"
#include "engine/HostTransport.h"
#include "support/EngineRenderRig.h"

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

namespace
{
struct ClockRig : test::EngineRenderRig
{
    ClockRig() : EngineRenderRig(512, 0.0f) { prepare(48000.0, 512); }
    void block(uint32_t n = 512)
    {
        context.transport.playing = -1; // no host transport: the engine's own clock rules
        engine->processEvents(context, events, n);
        events.clear();
    }
    // The transport's controllers: 117 rewinds, 118 toggles play, 119 toggles record.
    void blockWithController(uint32_t number)
    {
        events.push_back(test::engineEvent(EventType::controller, number, 127));
        block();
    }
};
} // namespace

TEST(EngineClock, MeterDenominatorFollowsTheNumeratorQuirk)
{
    ClockRig rig;
    // 4/4 after 6/8: the denominator is compared against the numerator and stays
    for (const auto& [numerator, denominator] : {std::pair {6, 8}, std::pair {4, 4}})
    {
        rig.context.transport.numerator = numerator;
        rig.context.transport.denominator = denominator;
        rig.block();
        EXPECT_EQ(rig.engine->meterNumerator(), numerator);
        EXPECT_EQ(rig.engine->meterDenominator(), 8);
    }
}

TEST(EngineClock, TempoFollowsHostOnlyWhenSyncedAndThePositionAdvancesWhileStopped)
{
    ClockRig rig;
    const auto& ids = Engine::ids();
    rig.context.transport.tempo = 120.0f;
    rig.block(24000); // half a second at 120 bpm
    EXPECT_DOUBLE_EQ(rig.engine->position(), 1.0);
    EXPECT_FALSE(rig.engine->isPlaying());
    rig.context.transport.tempo = 90.0f;
    rig.block();
    EXPECT_DOUBLE_EQ(rig.engine->tempo(), 90.0);

    rig.engine->setFloatParameter(ids.tempo, 150.0f); // kept, not used while synced
    EXPECT_DOUBLE_EQ(rig.engine->tempo(), 90.0);

    rig.engine->setBoolParameter(ProcessingElement::syncToHostId(), false);
    rig.engine->setFloatParameter(ids.tempo, 100.0f);
    EXPECT_DOUBLE_EQ(rig.engine->tempo(), 100.0);
    rig.block();
    EXPECT_EQ(rig.context.transport.tempo, 100.0f); // the engine's tempo drives the context
}

TEST(EngineClock, PlayStopAndRewindWhileRecordingByController)
{
    ClockRig rig;
    rig.blockWithController(118); // play
    EXPECT_TRUE(rig.engine->isPlaying());
    EXPECT_EQ(rig.context.transport.playing, 1);
    rig.blockWithController(118); // and stop again
    EXPECT_FALSE(rig.engine->isPlaying());

    // rewind while recording stops and ends the take
    rig.blockWithController(118);
    rig.blockWithController(119);
    ASSERT_TRUE(rig.engine->isRecording());
    rig.blockWithController(117);
    EXPECT_FALSE(rig.engine->isPlaying());
    EXPECT_FALSE(rig.engine->isRecording());
    EXPECT_EQ(rig.context.transport.flags & 1u, 1u);
    EXPECT_LT(rig.engine->position(), 1.0); // back at the start, plus this block
}

TEST(EngineClock, RecordWhileStoppedCountsInFourBeats)
{
    ClockRig rig;
    rig.context.transport.tempo = 120.0f; // 24000 samples a beat
    rig.blockWithController(119);
    EXPECT_TRUE(rig.engine->isRecording());
    EXPECT_FALSE(rig.engine->isPlaying());
    for (int i = 0; i < 200 && !rig.engine->isPlaying(); ++i)
        rig.block();
    EXPECT_TRUE(rig.engine->isPlaying());
}
