// The rendering contract: whole blocks in place, tail tracking, bypass, and the
// engine's event ring.
#include "EngineTestRig.h"

#include <gtest/gtest.h>

#include <thread>

using namespace oxa;
using test::GainEffect;
using Rig = test::EngineRig;

// Cutting the block under modulation is checked with real connections in test_connections.
TEST(Rendering, WithoutConnectionsTheWholeBlockGoesInPlaceInOneCallAfterTheDeferredWrites)
{
    Rig rig;
    rig.effect->setFloatParameter(GainEffect::gainId(), 0.5f, true);
    EXPECT_EQ(rig.effect->gainValue, 1.0f); // not applied yet
    rig.render(500);
    EXPECT_EQ(rig.effect->calls, std::vector<uint32_t> { 500u });
    EXPECT_EQ(rig.effect->pointers[0], rig.left.data()); // the host's own memory
    EXPECT_EQ(rig.effect->gainsSeen, std::vector<float> { 0.5f }) << "at the head of the block";
    EXPECT_FLOAT_EQ(rig.left[0], 0.5f);
}

TEST(Rendering, SilentInputIsProcessedWhileTheTailLasts)
{
    struct Case
    {
        int tail;
        size_t audioCalls, silenceCalls;
    };
    // endless: every block; 1000 samples: the signal block and two tail blocks
    for (const Case& c : { Case { -1, 5, 0 }, Case { 1000, 3, 2 } })
    {
        Rig rig(c.tail);
        rig.render(512); // signal
        for (int i = 0; i < 4; ++i)
            rig.render(512, true);
        EXPECT_EQ(rig.effect->calls.size(), c.audioCalls) << "tail " << c.tail;
        EXPECT_EQ(rig.effect->silenceCalls.size(), c.silenceCalls) << "tail " << c.tail;
    }
}

TEST(Rendering, BoolWriteEventArrivesBeforeRendering)
{
    Rig rig;
    rig.effect->setBehaviour(ProcessingElement::receivesEvents, true);
    EngineEvent e;
    e.type = EventType::setBool;
    e.data1 = Element::commonIds().bypass;
    e.value.boolValue = 1;
    rig.events.push_back(e);
    rig.render(16);
    EXPECT_TRUE(rig.effect->isBypassed());
    EXPECT_TRUE(rig.effect->calls.empty()); // bypassed in the same block

    rig.effect->heard.clear();
    rig.events.push_back(test::engineEvent(EventType::noteOn, 60));
    rig.render(16);
    EXPECT_TRUE(rig.effect->heard.empty()); // a bypassed element hears nothing
    EXPECT_FLOAT_EQ(rig.left[0], 1.0f);     // and leaves the audio alone
}

TEST(EngineRing, BusyEngineQueuesEventsAndLosesTheOldestOnOverflow)
{
    Rig rig;
    rig.effect->setBehaviour(ProcessingElement::receivesEvents, true);
    {
        std::unique_lock<std::recursive_mutex> busy(rig.engine->engineLock());
        std::thread audio([&] {
            for (uint32_t i = 0; i < 65; ++i)
                rig.events.push_back(test::engineEvent(EventType::controller, 1, i));
            rig.engine->processEvents(rig.context, rig.events, 64);
            rig.events.clear();
        });
        audio.join();
    }
    EXPECT_EQ(rig.engine->pendingRingEvents(), 65u);

    rig.effect->heard.clear();
    rig.effect->heardData.clear();
    rig.render(64);
    ASSERT_EQ(rig.effect->heard.size(), 64u);
    EXPECT_EQ(rig.effect->heardData.front(), 1u); // event 0 was overwritten
    EXPECT_EQ(rig.effect->heardData.back(), 64u); // the newest survived
    EXPECT_EQ(rig.engine->pendingRingEvents(), 0u);
}
