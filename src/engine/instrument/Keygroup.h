#pragma once
// The test instrument's voice: one oscillator, played by the newest key held, and
// multiplied by "Volume", which the amplitude envelope moves through a connection.

#include "engine/instrument/BandLimitedOscillator.h"
#include "engine/instrument/NoteEvents.h"
#include "engine/instrument/SynthElements.h"

namespace oxa
{
class MinBlepGenerator;

class Keygroup : public BasicSynthElement
{
public:
    class State : public ProcessingElementState
    {
    public:
        using ProcessingElementState::ProcessingElementState;
        std::unique_ptr<ElementState> clone(StatePool*) const override { return std::make_unique<State>(*this); }

        BandLimitedOscillator oscillator;
        HeldNotes held;
        double increment = 0.0;   // oscillator phase step of the note sounding
        float velocityGain = 0.0f;
        float volume = 1.0f;      // "Volume" as the control block sets it
        float appliedVolume = 0.0f; // where the last sample ended: the next block ramps from here
    };

    static uint32_t volumeId();
    static void registerType();

    explicit Keygroup(const String& name = String());

    /** Takes the generator as the voice's oscillator (a child; a former one goes). */
    void setOscillator(const std::shared_ptr<MinBlepGenerator>& generator);
    MinBlepGenerator* oscillator() const { return oscillator_; }

    void handleEvent(const EngineEvent& event) override;
    void renderAudio(RenderContext& context, uint32_t numSamples, ElementState* state) override;

protected:
    bool acceptsPart(const Element&) const override { return false; }
    void adoptLoadedChild(const std::shared_ptr<Element>& child) override;

private:
    float volume(const State& s) const { return s.volume; }
    void setVolume(State& s, float v) { s.volume = v; }
    /** One control block: notes reached, then the oscillator ramped from the last volume. */
    void renderVoice(RenderContext& context, State& s, uint32_t offset, uint32_t numSamples);
    void apply(const RenderContext& context, State& s, const NoteMessage& message);

    MinBlepGenerator* oscillator_ = nullptr;
    NoteQueue queue_;
};
} // namespace oxa
