// Modulation connections on the render path: control-block cutting, values per block,
// bypassed connections, and adding and removing connections.
#include "EngineTestRig.h"
#include "element/ConnectionSpec.h"
#include "element/ElementFactory.h"
#include "engine/ControlSignalSource.h"
#include "engine/SignalConnection.h"

#include <gtest/gtest.h>

using namespace oxa;
using test::GainEffect;

namespace
{
/** Gives 0.1, 0.2, 0.3, ... one step for each control block it renders. */
class StepSource : public ControlSignalSource
{
public:
    StepSource() : ControlSignalSource(String("StepSource"), String("Steps")) {}
    float step = 0.1f;
    int computed = 0;

protected:
    float computeValue(RenderContext&, ControlSignalSourceState&, uint32_t) override { return step * ++computed; }
};

/** The engine rig with a step source beside the effect; each render forgets the last one's calls. */
struct Rig : test::EngineRig
{
    explicit Rig(bool sourceFirst = false, std::shared_ptr<StepSource> steps = std::make_shared<StepSource>())
        : EngineRig(-1, steps, sourceFirst), source(steps)
    {
    }

    bool connect(const String& name = String(), bool enabled = true, float ratio = 1.0f)
    {
        ConnectionSpec spec;
        spec.source = String("Steps");
        spec.parameter = GainEffect::gainId();
        spec.name = name;
        spec.ratio = ratio;
        spec.enabled = enabled;
        return effect->addConnection(spec, true);
    }

    SignalConnection* connection(const char* name)
    {
        return dynamic_cast<SignalConnection*>(effect->gainEnvelope().findElement(String(name)));
    }

    void render(uint32_t n)
    {
        effect->calls.clear();
        effect->gainsSeen.clear();
        EngineRig::render(n);
    }

    std::shared_ptr<StepSource> source;
};
} // namespace

TEST(ConnectionRendering, ConnectionCutsTheBlockAndWritesEachControlBlocksValue)
{
    for (bool sourceFirst : {false, true})
    {
        Rig rig(sourceFirst);
        ASSERT_TRUE(rig.connect());
        ASSERT_NE(rig.connection("SignalConnection 0")->resolvedSource(), nullptr);

        rig.render(33);
        ASSERT_EQ(rig.effect->calls, (std::vector<uint32_t>{32u, 1u}));
        EXPECT_EQ(rig.effect->pointers.back(), rig.left.data() + 32) << "in place, at the cut";
        // gain 1 of 0..2 is 0.5 normalised; the steps add 0.1 and 0.2 to that
        EXPECT_NEAR(rig.effect->gainsSeen[0], 1.2f, 1e-5f);
        EXPECT_NEAR(rig.effect->gainsSeen[1], 1.4f, 1e-5f);
        // the source ran once for each control block, whoever rendered it first
        EXPECT_EQ(rig.source->computed, 2);

        rig.render(32);
        ASSERT_EQ(rig.effect->calls, std::vector<uint32_t>{32u});
        EXPECT_NEAR(rig.effect->gainsSeen[0], 1.6f, 1e-5f) << "modulated around the base, not the last value";
    }
}

TEST(ConnectionRendering, BypassedConnectionLeavesTheBaseValue)
{
    Rig rig;
    ASSERT_TRUE(rig.connect(String(), false));
    rig.render(100);
    EXPECT_EQ(rig.effect->calls, std::vector<uint32_t>{100u});
    EXPECT_EQ(rig.effect->gainsSeen, std::vector<float>{1.0f});

    // switched on and off again: the parameter settles back at its base
    SignalConnection* c = rig.connection("SignalConnection 0");
    c->setBoolParameter(SignalConnection::ids().bypass, false);
    rig.render(64);
    EXPECT_EQ(rig.effect->calls.size(), 2u);
    c->setBoolParameter(SignalConnection::ids().bypass, true);
    for (int block = 0; block < 2; ++block)
    {
        rig.render(64);
        EXPECT_FLOAT_EQ(rig.effect->gainValue, 1.0f);
    }
    EXPECT_EQ(rig.effect->calls, std::vector<uint32_t>{64u});
}

TEST(ConnectionRendering, ABaseValueSetWhileModulatedBecomesTheNewCentre)
{
    Rig rig;
    ASSERT_TRUE(rig.connect());
    rig.render(32);
    rig.effect->setFloatParameter(GainEffect::gainId(), 0.4f); // 0.2 normalised
    rig.render(32);
    EXPECT_NEAR(rig.effect->gainsSeen[0], 2.0f * (0.2f + 0.2f), 1e-5f);

    rig.effect->setFloatParameter(GainEffect::gainId(), 1.0f, true); // deferred, as automation arrives
    rig.render(32);
    EXPECT_NEAR(rig.effect->gainsSeen[0], 2.0f * (0.5f + 0.3f), 1e-5f);
}

TEST(ConnectionRendering, RatioInversionMapperAndRangeShapeTheValue)
{
    Rig rig;
    ASSERT_TRUE(rig.connect(String(), true, 2.0f));
    SignalConnection* c = rig.connection("SignalConnection 0");
    c->setBoolParameter(SignalConnection::ids().inverted, true);
    rig.render(32);
    EXPECT_NEAR(rig.effect->gainsSeen[0], 2.0f * (0.5f - 0.2f), 1e-5f);

    auto mapper = std::make_shared<ControlSignalMapper>();
    mapper->setFloatParameter(ControlSignalMapper::ids().posRatio, 0.5f);
    c->setMapper(mapper);
    rig.render(32); // step 0.2, halved, doubled, inverted
    EXPECT_NEAR(rig.effect->gainsSeen[0], 2.0f * (0.5f - 0.2f), 1e-5f);

    c->setBoolParameter(SignalConnection::ids().inverted, false);
    c->setFloatParameter(SignalConnection::ids().ratio, 100.0f);
    rig.render(32);
    EXPECT_FLOAT_EQ(rig.effect->gainsSeen[0], 2.0f) << "held inside the parameter's range";

    // an edition connection sets the normalised value outright
    c->setFloatParameter(SignalConnection::ids().ratio, 1.0f);
    c->setMapper(nullptr);
    c->setIntParameter(SignalConnection::ids().connectionMode, 1);
    rig.render(32);
    EXPECT_NEAR(rig.effect->gainsSeen[0], 2.0f * 0.4f, 1e-5f);
}

TEST(ConnectionRendering, RemovingTheLastConnectionRestoresTheBaseAndABypassedEffectKeepsTheLastValue)
{
    Rig rig;
    ASSERT_TRUE(rig.connect());
    rig.render(64);
    EXPECT_NE(rig.effect->gainValue, 1.0f);
    ASSERT_TRUE(rig.effect->removeConnection(GainEffect::gainId(), String("SignalConnection 0"), true));
    EXPECT_FLOAT_EQ(rig.effect->gainValue, 1.0f);
    EXPECT_TRUE(rig.effect->connectedEnvelopes().empty());
    rig.render(64);
    EXPECT_EQ(rig.effect->calls, std::vector<uint32_t>{64u});
    EXPECT_EQ(rig.effect->gainsSeen, std::vector<float>{1.0f});

    // Bypassed, the effect renders nothing but its parameter still follows the connection.
    ASSERT_TRUE(rig.connect());
    rig.effect->setBoolParameter(Element::commonIds().bypass, true);
    rig.source->computed = 0;
    rig.render(70); // three control blocks: 0.1, 0.2, 0.3
    EXPECT_TRUE(rig.effect->calls.empty());
    EXPECT_NEAR(rig.effect->gainValue, 2.0f * 0.8f, 1e-5f);
}

TEST(ConnectionManagement, NamesDestinationsAndRefusals)
{
    Rig rig;
    EXPECT_TRUE(ElementFactory::instance().isRegistered(String("SignalConnection")));
    EXPECT_TRUE(ElementFactory::instance().isRegistered(String("ControlSignalMapper")));

    ASSERT_TRUE(rig.connect());
    ASSERT_TRUE(rig.connect());
    EXPECT_FALSE(rig.connect(String("SignalConnection 1"))) << "a taken name is refused";
    ASSERT_TRUE(rig.connect(String("Mine")));

    std::vector<String> names;
    rig.effect->connectionNames(GainEffect::gainId(), names);
    EXPECT_EQ(names, (std::vector<String>{String("Mine"), String("SignalConnection 0"), String("SignalConnection 1")}));
    EXPECT_EQ(rig.effect->uniqueConnectionName(GainEffect::gainId()), String("SignalConnection 2"));
    EXPECT_EQ(rig.connection("Mine")->destination(), String("TestGain"));
    EXPECT_EQ(rig.effect->connectedEnvelopes().size(), 1u);

    EXPECT_FALSE(rig.effect->removeConnection(GainEffect::gainId(), String("Nobody"), true));
    ConnectionSpec toNowhere;
    toNowhere.parameter = 0xFFFFFF;
    EXPECT_FALSE(rig.effect->addConnection(toNowhere, true));
    toNowhere.parameter = Element::commonIds().memorySize; // an output takes no modulation
    EXPECT_FALSE(rig.effect->addConnection(toNowhere, true));
}

TEST(ConnectionManagement, UnresolvedAndVoiceSourcesAddNothing)
{
    Rig rig;
    ConnectionSpec spec;
    spec.parameter = GainEffect::gainId();
    spec.source = String("@VoiceParam Velocity");
    ASSERT_TRUE(rig.effect->addConnection(spec, false));
    spec.source = String("No Such Source");
    ASSERT_TRUE(rig.effect->addConnection(spec, false));
    EXPECT_EQ(rig.connection("SignalConnection 0")->resolvedSource(), nullptr);
    rig.render(40);
    EXPECT_EQ(rig.effect->calls, (std::vector<uint32_t>{32u, 8u}));
    EXPECT_EQ(rig.effect->gainsSeen, (std::vector<float>{1.0f, 1.0f}));

    // a source that goes away is let go, not read
    spec.source = String("Steps");
    spec.name = String("Late");
    ASSERT_TRUE(rig.effect->addConnection(spec, false));
    rig.engine->removeAllElements();
    rig.source.reset();
    EXPECT_EQ(rig.connection("Late")->resolvedSource(), nullptr);
}
