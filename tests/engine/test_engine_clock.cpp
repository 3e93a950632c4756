// The engine's clock and transport commands.
#include "engine/Engine.h"

#include <gtest/gtest.h>

using namespace oxa;

namespace
{
struct ClockRig
{
    ClockRig()
    {
        engine = std::make_shared<Engine>();
        engine->prepare(48000.0, 512);
        context.setSampleRate(48000.0f);
    }
    void block(uint32_t n = 512)
    {
        context.transport.playing = -1; // no host transport: the engine's own clock rules
        engine->processEvents(context, events, n);
        events.clear();
    }
    void controller(uint32_t number, uint64_t offset = 0)
    {
        EngineEvent e;
        e.type = EventType::controller;
        e.data1 = number;
        e.data2 = 127;
        e.sampleOffset = offset;
        events.push_back(e);
    }
    std::shared_ptr<Engine> engine;
    RenderContext context;
    EventList events;
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
    rig.controller(118); // play
    rig.block();
    EXPECT_TRUE(rig.engine->isPlaying());
    EXPECT_EQ(rig.context.transport.playing, 1);
    rig.controller(118); // and stop again
    rig.block();
    EXPECT_FALSE(rig.engine->isPlaying());

    // rewind while recording stops and ends the take
    rig.controller(118);
    rig.block();
    rig.controller(119);
    rig.block();
    ASSERT_TRUE(rig.engine->isRecording());
    rig.controller(117);
    rig.block();
    EXPECT_FALSE(rig.engine->isPlaying());
    EXPECT_FALSE(rig.engine->isRecording());
    EXPECT_EQ(rig.context.transport.flags & 1u, 1u);
    EXPECT_LT(rig.engine->position(), 1.0); // back at the start, plus this block
}

TEST(EngineClock, RecordWhileStoppedCountsInFourBeats)
{
    ClockRig rig;
    rig.context.transport.tempo = 120.0f; // 24000 samples a beat
    rig.controller(119);
    rig.block(512);
    EXPECT_TRUE(rig.engine->isRecording());
    EXPECT_FALSE(rig.engine->isPlaying());
    for (int i = 0; i < 200 && !rig.engine->isPlaying(); ++i)
        rig.block(512);
    EXPECT_TRUE(rig.engine->isPlaying());
}
