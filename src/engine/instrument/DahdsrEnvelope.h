#pragma once
// The test instrument's amplitude envelope: delay, attack, hold, decay, sustain and
// release, gated by the keys held down. A control signal source: it gives one level,
// 0..1, for each 32-sample control block, and the keygroup's "Volume" follows it
// through a connection.

#include "engine/ControlSignalSource.h"
#include "engine/instrument/NoteEvents.h"

namespace oxa
{
class DahdsrEnvelope : public ControlSignalSource
{
public:
    /** The shape in seconds, and the sustain level. A test tone: fixed, not parameters. */
    struct Shape
    {
        double delay = 0.0, attack = 0.005, hold = 0.0, decay = 0.25, sustain = 0.7, release = 0.15;
    };

    static void registerType();

    explicit DahdsrEnvelope(const String& name = String("Amp. Env"));

    void handleEvent(const EngineEvent& event) override;
    void render(RenderContext& context, uint32_t numSamples) override;
    void prepareToRender() override;

    /** The level reached so far, for tests. */
    double level() const { return level_; }

protected:
    float computeValue(RenderContext& context, ControlSignalSourceState& state, uint32_t numSamples) override;

private:
    enum class Stage
    {
        idle,
        delay,
        attack,
        hold,
        decay,
        sustain,
        release
    };
    void apply(const NoteMessage& message);
    void advance(uint32_t numSamples);
    void enter(Stage stage);

    Shape shape_;
    NoteQueue queue_;
    HeldNotes held_;
    Stage stage_ = Stage::idle;
    double level_ = 0.0;
    double stageSeconds_ = 0.0;
    double releaseFrom_ = 0.0;
    double rate_ = 44100.0;
};
} // namespace oxa
