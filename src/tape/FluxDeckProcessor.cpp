#include "tape/FluxDeckProcessor.h"
#include "element/ElementFactory.h"
#include "element/ParameterRegistry.h"

#include <cmath>

namespace oxa
{
const FluxDeckProcessor::Ids& FluxDeckProcessor::ids()
{
    static const Ids made = [] {
        (void) ProcessingElement::syncToHostId();
        auto& registry = ParameterRegistry::instance();
        Ids ids {};
        ParameterDescription<float> gain("OutputGain", 0.0f, -40.0f, 40.0f, 9);
        gain.displayName = String("Output Gain");
        ids.outputGain = registry.registerFloat(gain);
        ParameterDescription<bool> lowLatency("ApplyLowLatency", false);
        lowLatency.displayName = String("Low Latency Mode");
        ids.applyLowLatency = registry.registerBool(lowLatency);
        return ids;
    }();
    return made;
}

void FluxDeckProcessor::registerType()
{
    static const bool registered = [] {
        ElementFactory::instance().registerType(
            "Flux Deck", "FluxDeck", [] { return std::shared_ptr<Element>(std::make_shared<FluxDeckProcessor>()); },
            String::fromInt(2), 256);
        return true;
    }();
    (void) registered;
}

FluxDeckProcessor::FluxDeckProcessor(const String& name) : BasicProcessingElement(String("FluxDeck"), name)
{
    setStates(std::make_unique<State>(this), std::make_unique<State>(this));
    const Ids& id = ids();
    addParameters({ new ParameterInfo<float>(id.outputGain, this, &FluxDeckProcessor::outputGainDb,
                                             &FluxDeckProcessor::setOutputGainDb) },
                  {}, { new ParameterInfo<bool>(id.applyLowLatency, this, &FluxDeckProcessor::lowLatency,
                                                &FluxDeckProcessor::setLowLatency) });
}

float FluxDeckProcessor::outputGainDb(const State& s) const
{
    return s.outputGain < 1e-20f ? -400.0f : std::log(s.outputGain) * 8.6858892f;
}

void FluxDeckProcessor::setOutputGainDb(State& s, float db)
{
    s.outputGain = std::exp(db * 0.115129254758358f);
}

void FluxDeckProcessor::processAudio(RenderContext&, ElementState* state, uint32_t numSamples, float* const* channels,
                                     const bool*)
{
    const float gain = static_cast<State*>(state)->outputGain;
    for (uint32_t c = 0; c < channelCount(); ++c)
        for (uint32_t i = 0; i < numSamples; ++i)
            channels[c][i] *= gain;
}
} // namespace oxa
