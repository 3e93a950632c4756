// MIDI-learned connections: controller timing inside a block, the value a learned
// controller writes per control block, binding and unbinding through the proxy, and
// learning the next controller that moves.
#include "EngineTestRig.h"
#include "element/ConnectionSpec.h"
#include "engine/EngineProxy.h"
#include "engine/MidiControllers.h"
#include "engine/MidiLearn.h"
#include "engine/SignalConnection.h"

#include <gtest/gtest.h>

using namespace oxa;
using test::GainEffect;

namespace
{
EngineEvent controller(uint32_t number, uint32_t value, uint64_t offset)
{
    return test::engineEvent(EventType::controller, number, value, offset);
}

struct LearnRig : test::EngineRig
{
    LearnRig() : learn(proxy, String("/Fx"), GainEffect::gainId()) {}

    void renderWith(std::initializer_list<EngineEvent> controllers, uint32_t n)
    {
        effect->calls.clear();
        effect->gainsSeen.clear();
        for (const EngineEvent& e : controllers)
            events.push_back(e);
        render(n);
    }

    EngineProxy proxy {nullptr, engine.get(), true};
    MidiLearn learn;
};
} // namespace

TEST(MidiControllerNames, SourcesLabelsAndListEntries)
{
    EXPECT_EQ(MidiControllers::sourceFor(74), String("@MIDI CC 74"));
    EXPECT_EQ(MidiControllers::listEntry(74), String("MIDI CC 74 (Brightness)"));
    EXPECT_EQ(MidiControllers::bindingLabel(-1), String("None"));
    EXPECT_EQ(MidiControllers::bindingLabel(7), String("MIDI CC 7"));

    const struct
    {
        const char* source;
        int controller;
        bool midi;
    } cases[] = {{"@MIDI CC 0", 0, true},     {"@MIDI CC 127", 127, true}, {"@MIDI CC 128", -1, true},
                 {"@MIDI CC 7x", -1, true},   {"@MIDI CC ", -1, true},     {"@MIDI PitchBend", -1, true},
                 {"@MIDI CC 0074", -1, true}, {"Amp. Env", -1, false},     {"", -1, false}};
    for (const auto& c : cases)
    {
        EXPECT_EQ(MidiControllers::controllerOfSource(String(c.source)), c.controller) << c.source;
        EXPECT_EQ(MidiControllers::isMidiSource(String(c.source)), c.midi) << c.source;
    }
}

TEST(MidiState, ControllerValuesFollowTheirTimingInsideTheBlock)
{
    MidiState state;
    EXPECT_EQ(state.controllerAt(74, 0), -1) << "never received";

    state.beginBlock();
    for (const EngineEvent& e : {controller(74, 10, 0), controller(74, 20, 40), controller(7, 99, 41),
                                 controller(74, 30, 64), controller(74, 200, 100)})
        state.handle(e);
    // control block i starts at sample 32 i and sees the changes up to that sample
    const int expected[] = {10, 10, 30, 30, 127};
    for (uint32_t i = 0; i < 5; ++i)
        EXPECT_EQ(state.controllerAt(74, i), expected[i]) << "control block " << i;
    EXPECT_EQ(state.controllerAt(7, 1), -1);
    EXPECT_EQ(state.controllerAt(7, 2), 99);
    EXPECT_EQ(state.controllerAt(128, 0), -1);

    state.beginBlock(); // the next block starts where this one ended
    EXPECT_EQ(state.controllerAt(74, 0), 127);
    EXPECT_EQ(state.controllerMessageCount(), 5u);
    EXPECT_EQ(state.lastController(), 74);
}

TEST(MidiLearnRendering, LearnedControllerSetsTheParameterPerControlBlock)
{
    LearnRig rig;
    ASSERT_TRUE(rig.learn.bind(74));
    EXPECT_EQ(rig.learn.boundController(), 74);

    // Until the controller speaks the parameter keeps its own value.
    rig.renderWith({}, 64);
    EXPECT_EQ(rig.effect->gainsSeen, (std::vector<float>{1.0f, 1.0f}));

    // Full scale at sample 40 reaches the control block at 64; the range is 0..2.
    rig.renderWith({controller(74, 127, 40)}, 128);
    ASSERT_EQ(rig.effect->calls, (std::vector<uint32_t>{32u, 32u, 32u, 32u}));
    EXPECT_EQ(rig.effect->gainsSeen, (std::vector<float>{1.0f, 1.0f, 2.0f, 2.0f}));

    // Other controllers and the host's value do not move it; the controller holds.
    rig.effect->setFloatParameter(GainEffect::gainId(), 0.5f);
    rig.renderWith({controller(75, 0, 0)}, 32);
    EXPECT_EQ(rig.effect->gainsSeen, std::vector<float>{2.0f});
    rig.renderWith({controller(74, 0, 0)}, 32);
    EXPECT_EQ(rig.effect->gainsSeen, std::vector<float>{0.0f});

    // Unlearned: back to the parameter's own value and to whole blocks.
    EXPECT_EQ(rig.learn.unbind(), 1);
    rig.renderWith({controller(74, 127, 0)}, 64);
    EXPECT_EQ(rig.effect->calls, std::vector<uint32_t>{64u});
    EXPECT_EQ(rig.effect->gainsSeen, std::vector<float>{0.5f});
}

TEST(MidiLearnBinding, RebindingReplacesOnlyMidiConnections)
{
    LearnRig rig;
    ConnectionSpec other;
    other.source = String("Somewhere");
    other.parameter = GainEffect::gainId();
    ASSERT_TRUE(rig.effect->addConnection(other, true));
    EXPECT_EQ(rig.learn.boundController(), -1);
    EXPECT_FALSE(rig.learn.hasMidiConnection());

    ASSERT_TRUE(rig.learn.bind(1));
    ASSERT_TRUE(rig.learn.bind(74, true));
    EXPECT_EQ(rig.learn.boundController(), 74);
    std::vector<String> names;
    rig.effect->connectionNames(GainEffect::gainId(), names);
    ASSERT_EQ(names.size(), 2u) << "the older controller went, the other source stayed";
    auto* midi = dynamic_cast<SignalConnection*>(rig.effect->gainEnvelope().findElement(names[1]));
    ASSERT_NE(midi, nullptr);
    EXPECT_EQ(midi->source(), String("@MIDI CC 74"));
    EXPECT_FALSE(midi->isEdition()) << "bound as modulation";

    EXPECT_EQ(rig.learn.unbind(), 1);
    EXPECT_EQ(rig.learn.unbind(), 0);
    names.clear();
    rig.effect->connectionNames(GainEffect::gainId(), names);
    EXPECT_EQ(names.size(), 1u);

    // Nothing to bind to: refused, no crash.
    for (int bad : {-1, 128})
        EXPECT_FALSE(rig.learn.bind(bad));
    MidiLearn missing(rig.proxy, String("/Nowhere"), GainEffect::gainId());
    EXPECT_FALSE(missing.canBind());
    EXPECT_FALSE(missing.bind(74));
    EXPECT_EQ(missing.boundController(), -1);
    EXPECT_EQ(missing.unbind(), 0);
}

TEST(MidiLearnBinding, NextLearnableControllerThatMovesIsBound)
{
    LearnRig rig;
    rig.renderWith({controller(20, 5, 0)}, 32); // before listening: not taken
    int learned = -1;
    NextControllerLearner learner(rig.proxy, String("/Fx"), GainEffect::gainId(), [&](int n) { learned = n; });
    learner.start();
    learner.poll();
    EXPECT_TRUE(learner.isListening());
    EXPECT_EQ(rig.learn.boundController(), -1);

    rig.renderWith({controller(118, 127, 0)}, 32); // the transport's own controller
    learner.poll();
    EXPECT_EQ(rig.learn.boundController(), -1);

    rig.renderWith({controller(21, 64, 0)}, 32);
    learner.poll();
    EXPECT_EQ(learned, 21);
    EXPECT_EQ(rig.learn.boundController(), 21);
    EXPECT_FALSE(learner.isListening());
}
