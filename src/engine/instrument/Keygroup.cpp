#include "engine/instrument/Keygroup.h"

#include "element/ElementFactory.h"
#include "element/ParameterRegistry.h"
#include "engine/AudioBus.h"
#include "engine/instrument/MinBlepGenerator.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace oxa
{
namespace
{
// Loud enough to hear, with room for the effect's drive and feedback.
constexpr float outputLevel = 0.25f;
} // namespace

uint32_t Keygroup::volumeId()
{
    static const uint32_t id = [] {
        (void) ProcessingElement::syncToHostId();
        ParameterDescription<float> description("Volume", 1.0f, 0.0f, 1.0f);
        // a connection scales the volume: an envelope at 0 silences the voice
        description.modulation = MultiplicativeParameterModulation::shared();
        return ParameterRegistry::instance().registerFloat(description);
    }();
    return id;
}

void Keygroup::registerType()
{
    ElementFactory::instance().registerType("Keygroup", "Keygroup", [] { return std::make_shared<Keygroup>(); });
}

Keygroup::Keygroup(const String& name) : BasicSynthElement(String("Keygroup"), name)
{
    setStates(std::make_unique<State>(this), std::make_unique<State>(this));
    addParameters({new ParameterInfo<float>(volumeId(), this, &Keygroup::volume, &Keygroup::setVolume)});
}

void Keygroup::setOscillator(const std::shared_ptr<MinBlepGenerator>& generator)
{
    if (oscillator_ != nullptr)
        removeChild(oscillator_);
    oscillator_ = generator.get();
    if (generator)
        addChild(generator);
}

void Keygroup::adoptLoadedChild(const std::shared_ptr<Element>& child)
{
    if (auto generator = std::dynamic_pointer_cast<MinBlepGenerator>(child))
        setOscillator(generator);
}

void Keygroup::handleEvent(const EngineEvent& event)
{
    queue_.push(event);
    BasicSynthElement::handleEvent(event);
}

void Keygroup::apply(const RenderContext& context, State& s, const NoteMessage& message)
{
    if (message.velocity == 0)
        s.held.release(message.note);
    else
    {
        s.held.press(message.note);
        s.velocityGain = 0.3f + 0.7f * (float) message.velocity / 127.0f;
    }
    if (s.held.empty())
        return; // the envelope's release carries the last pitch out
    const double hz = (double) context.tuning * std::pow(2.0, ((double) s.held.newest() - 69.0) / 12.0);
    const double rate = context.sampleRate > 0.0f ? (double) context.sampleRate : 44100.0;
    s.increment = std::min(hz / rate, 0.45);
}

void Keygroup::renderVoice(RenderContext& context, State& s, uint32_t offset, uint32_t numSamples)
{
    AudioBus* out = bus(0);
    const float target = std::clamp(s.volume, 0.0f, 1.0f);
    const float start = s.appliedVolume;
    if (out == nullptr || (start == 0.0f && target == 0.0f))
    {
        // silent: the bus stays as it is, but keys still change the pitch
        while (const NoteMessage* m = queue_.next((uint64_t) offset + numSamples - 1))
            apply(context, s, *m);
        s.appliedVolume = target;
        return;
    }

    const uint32_t channels = out->channelCount();
    if (out->isSilent())
    {
        float* const* raw = out->getChannels();
        for (uint32_t c = 0; c < channels; ++c)
            if (raw[c] != nullptr)
                std::memset(raw[c], 0, sizeof(float) * out->blockLength);
    }
    float* const* bus = out->getChannels();
    const int waveform = oscillator_ != nullptr ? oscillator_->waveform() : BandLimitedOscillator::sawtooth;
    const float step = (target - start) / (float) numSamples;
    for (uint32_t i = 0; i < numSamples; ++i)
    {
        while (const NoteMessage* m = queue_.next((uint64_t) offset + i))
            apply(context, s, *m);
        const float gain = (start + step * (float) (i + 1)) * s.velocityGain * outputLevel;
        const float v = s.oscillator.next(waveform, s.increment) * gain;
        for (uint32_t c = 0; c < channels; ++c)
            if (bus[c] != nullptr)
                bus[c][offset + i] += v;
    }
    s.appliedVolume = target;
}

void Keygroup::renderAudio(RenderContext& context, uint32_t numSamples, ElementState* state)
{
    auto& s = *static_cast<State*>(state);
    if (state->isFresh())
        renderVoice(context, s, 0, numSamples);
    else
    {
        state->setFresh(true);
        for (uint32_t i = 0, offset = 0; offset < numSamples; ++i, offset += controlBlockSize)
        {
            applyControlBlock(context, state, i);
            renderVoice(context, s, offset, std::min(numSamples - offset, controlBlockSize));
        }
    }
    queue_.endBlock(numSamples);
}
} // namespace oxa
