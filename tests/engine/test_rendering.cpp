// The rendering contract: whole blocks in place, control-block cutting under
// modulation, tail tracking, bypass, and the engine's event ring.
#include "element/ElementParamEnvelope.h"
#include "element/ParameterRegistry.h"
#include "engine/BasicProcessingElement.h"
#include "engine/Engine.h"

#include <gtest/gtest.h>

#include <thread>

using namespace oxa;

namespace
{
class RecordingEffect : public BasicProcessingElement
{
public:
    static uint32_t gainId()
    {
        static const uint32_t id = [] {
            (void) ProcessingElement::syncToHostId();
            return ParameterRegistry::instance().registerFloat(ParameterDescription<float>("TestGain", 1.0f, 0, 2));
        }();
        return id;
    }

    explicit RecordingEffect(int tail = -1) : BasicProcessingElement(String("RecordingEffect"), String("Fx")), tail(tail)
    {
        addParameters({ new ParameterInfo<float>(gainId(), this, &RecordingEffect::gain, &RecordingEffect::setGain) });
    }

    int getTailSamples() override { return tail; }
    void processAudio(RenderContext&, ElementState*, uint32_t n, float* const* channels, const bool*) override
    {
        calls.push_back(n);
        pointers.push_back(channels[0]);
        for (uint32_t c = 0; c < channelCount(); ++c)
            for (uint32_t i = 0; i < n; ++i)
                channels[c][i] *= gainValue;
    }
    void processSilence(RenderContext&, ElementState*, uint32_t n) override { silenceCalls.push_back(n); }
    void handleEvent(const EngineEvent& e) override
    {
        heard.push_back(e.type);
        heardData.push_back(e.data2);
        BasicProcessingElement::handleEvent(e);
    }

    /** Makes the gain's envelope look connected to a sounding source. */
    void connectEnvelope()
    {
        ASSERT_FALSE(envelopes().empty());
        ElementParamEnvelope* envelope = envelopes().front();
        envelope->addChild(std::make_shared<Element>(String("SignalConnection"), String("SignalConnection 0")));
        connectedEnvelopes().push_back(envelope);
        envelope->mainEnvelopeState().isStatic = false;
        envelope->mainEnvelopeState().needsUpdate = true;
    }

    std::vector<uint32_t> calls, silenceCalls, heard, heardData;
    std::vector<float*> pointers;
    float gainValue = 1.0f;

private:
    float gain(const ElementState&) const { return gainValue; }
    void setGain(ElementState&, float v) { gainValue = v; }
    int tail;
};

struct Rig
{
    explicit Rig(int tail = -1, uint32_t blockSize = 512)
        : bus(2, blockSize), left(blockSize, 1.0f), right(blockSize, 1.0f)
    {
        effect = std::make_shared<RecordingEffect>(tail);
        engine = std::make_shared<Engine>();
        engine->addElement(effect);
        engine->prepare(48000.0, (int) blockSize);
        engine->setBus(0, &bus);
        context.setSampleRate(48000.0f);
    }

    void render(uint32_t n, bool silent = false)
    {
        float* channels[] = { left.data(), right.data() };
        bus.setChannels(channels);
        if (silent)
            bus.markSilent(n);
        engine->processEvents(context, events, n);
        engine->render(context, n);
        events.clear();
        context.endOfBlock(n);
    }

    AudioBus bus;
    std::vector<float> left, right;
    std::shared_ptr<RecordingEffect> effect;
    std::shared_ptr<Engine> engine;
    RenderContext context;
    EventList events;
};
} // namespace

TEST(Rendering, WithoutConnectionsTheWholeBlockGoesInPlaceInOneCall)
{
    Rig rig;
    rig.render(500);
    ASSERT_EQ(rig.effect->calls.size(), 1u);
    EXPECT_EQ(rig.effect->calls[0], 500u);
    EXPECT_EQ(rig.effect->pointers[0], rig.left.data()); // the host's own memory
}

TEST(Rendering, ActiveConnectionCutsTheBlockAtMultiplesOf32)
{
    Rig rig;
    rig.effect->connectEnvelope();
    rig.render(33);
    ASSERT_EQ(rig.effect->calls.size(), 2u);
    EXPECT_EQ(rig.effect->calls[0], 32u);
    EXPECT_EQ(rig.effect->calls[1], 1u);
    EXPECT_EQ(rig.effect->pointers[1], rig.left.data() + 32);

    rig.effect->calls.clear();
    rig.render(32);
    EXPECT_EQ(rig.effect->calls, std::vector<uint32_t> { 32u });
}

TEST(Rendering, EndlessTailKeepsProcessingSilence)
{
    Rig rig(-1);
    for (int i = 0; i < 10; ++i)
        rig.render(512, true);
    EXPECT_EQ(rig.effect->calls.size(), 10u);
    EXPECT_TRUE(rig.effect->silenceCalls.empty());
}

TEST(Rendering, FiniteTailRunsOutAfterItsLength)
{
    Rig rig(1000);
    rig.render(512); // signal
    for (int i = 0; i < 4; ++i)
        rig.render(512, true);
    EXPECT_EQ(rig.effect->calls.size(), 3u); // the signal block and two tail blocks
    EXPECT_EQ(rig.effect->silenceCalls.size(), 2u);
}

TEST(Rendering, DeferredWriteLandsAtTheHeadOfTheNextBlock)
{
    Rig rig;
    rig.effect->setFloatParameter(RecordingEffect::gainId(), 0.5f, true);
    EXPECT_EQ(rig.effect->gainValue, 1.0f);                                // not applied yet
    EXPECT_EQ(rig.effect->floatParameter(RecordingEffect::gainId()), 0.5f); // but reads back
    rig.render(8);
    EXPECT_EQ(rig.effect->gainValue, 0.5f);
    EXPECT_FLOAT_EQ(rig.left[0], 0.5f);
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
    EngineEvent note;
    note.type = EventType::noteOn;
    rig.events.push_back(note);
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
            {
                EngineEvent e;
                e.type = EventType::controller;
                e.data1 = 1;
                e.data2 = i;
                rig.events.push_back(e);
            }
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
