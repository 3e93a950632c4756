#pragma once
// The effect's element at "/FluxDeck". For now a bypass-able gain stage that holds
// the place (and the name) of the two-deck tape processor.

#include "engine/BasicProcessingElement.h"

namespace oxa
{
class FluxDeckProcessor : public BasicProcessingElement
{
public:
    class State : public ProcessingElementState
    {
    public:
        using ProcessingElementState::ProcessingElementState;
        std::unique_ptr<ElementState> clone(StatePool*) const override { return std::make_unique<State>(*this); }
        float outputGain = 1.0f;
        bool lowLatency = false;
    };

    struct Ids
    {
        uint32_t outputGain, applyLowLatency;
    };
    static const Ids& ids();

    /** Registers the type with the element factory, once per process. */
    static void registerType();

    explicit FluxDeckProcessor(const String& name = String("FluxDeck"));

    void processAudio(RenderContext& context, ElementState* state, uint32_t numSamples, float* const* channels,
                      const bool* inputWasSilent) override;
    void processSilence(RenderContext&, ElementState*, uint32_t) override {}

private:
    float outputGainDb(const State& s) const;
    void setOutputGainDb(State& s, float db);
    bool lowLatency(const State& s) const { return s.lowLatency; }
    void setLowLatency(State& s, bool on) { s.lowLatency = on; }
};
} // namespace oxa
