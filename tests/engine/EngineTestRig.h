#pragma once
// A recording gain effect in a small engine, shared by the engine tests.
#include "element/ElementParamEnvelope.h"
#include "element/ParameterRegistry.h"
#include "engine/BasicProcessingElement.h"
#include "engine/Engine.h"
#include "support/EngineRenderRig.h"

#include <memory>
#include <vector>

namespace oxa::test
{
/** Records every render call and event; multiplies the audio by its gain (0..2). It has
    a parameter of each kind: the gain, a choice of four and a switch. */
class GainEffect : public BasicProcessingElement
{
public:
    static uint32_t gainId()
    {
        static const uint32_t id = [] {
            (void) ProcessingElement::syncToHostId(); // the common ids come first
            ParameterDescription<float> gain("TestGain", 1.0f, 0, 2);
            gain.displayName = String("Test Gain");
            return ParameterRegistry::instance().registerFloat(gain);
        }();
        return id;
    }
    static uint32_t choiceId()
    {
        static const uint32_t id = ParameterRegistry::instance().registerInt(ParameterDescription<int>("TestChoice", 1, 0, 3));
        return id;
    }
    static uint32_t switchId()
    {
        static const uint32_t id = ParameterRegistry::instance().registerBool(ParameterDescription<bool>("TestSwitch", false));
        return id;
    }

    explicit GainEffect(const char* name = "Fx", int tail = -1)
        : BasicProcessingElement(String("GainEffect"), String(name)), tail(tail)
    {
        addParameters({new ParameterInfo<float>(gainId(), this, &GainEffect::gain, &GainEffect::setGain)},
                      {new ParameterInfo<int>(choiceId(), this, &GainEffect::choice, &GainEffect::setChoice)},
                      {new ParameterInfo<bool>(switchId(), this, &GainEffect::isOn, &GainEffect::setOn)});
    }

    int getTailSamples() override { return tail; }
    void processAudio(RenderContext&, ElementState*, uint32_t n, float* const* channels, const bool*) override
    {
        calls.push_back(n);
        pointers.push_back(channels[0]);
        gainsSeen.push_back(gainValue);
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

    ElementParamEnvelope& gainEnvelope() { return *findInfo(gainId())->envelope(); }

    std::vector<uint32_t> calls, silenceCalls, heard, heardData;
    std::vector<float*> pointers;
    std::vector<float> gainsSeen;
    float gainValue = 1.0f;
    int choiceValue = 1;
    bool on = false;

private:
    float gain(const ElementState&) const { return gainValue; }
    void setGain(ElementState&, float v) { gainValue = v; }
    int choice(const ElementState&) const { return choiceValue; }
    void setChoice(ElementState&, int v) { choiceValue = v; }
    bool isOn(const ElementState&) const { return on; }
    void setOn(ElementState&, bool v) { on = v; }
    int tail;
};

/** An engine rendering a GainEffect, and optionally one more element, into two channels. */
struct EngineRig : EngineRenderRig
{
    explicit EngineRig(int tail = -1, std::shared_ptr<ProcessingElement> other = nullptr, bool otherFirst = false)
        : EngineRenderRig(512, 1.0f), effect(std::make_shared<GainEffect>("Fx", tail))
    {
        if (other != nullptr && otherFirst)
            engine->addElement(other);
        engine->addElement(effect);
        if (other != nullptr && !otherFirst)
            engine->addElement(other);
        prepare(48000.0, 512);
    }

    std::shared_ptr<GainEffect> effect;
};
} // namespace oxa::test
