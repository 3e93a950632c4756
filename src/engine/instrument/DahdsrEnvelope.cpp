#include "engine/instrument/DahdsrEnvelope.h"

#include "element/ElementFactory.h"

#include <algorithm>

namespace oxa
{
void DahdsrEnvelope::registerType()
{
    ElementFactory::instance().registerType("DAHDSR Envelope", "DahdsrEnvelope",
                                            [] { return std::make_shared<DahdsrEnvelope>(); });
}

DahdsrEnvelope::DahdsrEnvelope(const String& name) : ControlSignalSource(String("DahdsrEnvelope"), name)
{
    setBehaviour(receivesEvents, true);
}

void DahdsrEnvelope::prepareToRender()
{
    ControlSignalSource::prepareToRender();
    if (sampleRate() > 0.0f)
        rate_ = sampleRate();
}

void DahdsrEnvelope::handleEvent(const EngineEvent& event)
{
    queue_.push(event);
    ControlSignalSource::handleEvent(event);
}

void DahdsrEnvelope::render(RenderContext& context, uint32_t numSamples)
{
    const auto* state = static_cast<const ControlSignalSourceState*>(context.stateFor(*this));
    const bool again = state != nullptr && state->renderedBlock == context.blockCounter;
    ControlSignalSource::render(context, numSamples);
    if (!again)
        queue_.endBlock(numSamples);
}

void DahdsrEnvelope::enter(Stage stage)
{
    stage_ = stage;
    stageSeconds_ = 0.0;
}

void DahdsrEnvelope::apply(const NoteMessage& message)
{
    if (message.velocity > 0)
    {
        held_.press(message.note);
        enter(Stage::delay); // every new key starts the shape again, from the level reached
        return;
    }
    held_.release(message.note);
    if (held_.empty() && stage_ != Stage::idle && stage_ != Stage::release)
    {
        releaseFrom_ = level_;
        enter(Stage::release);
    }
}

void DahdsrEnvelope::advance(uint32_t numSamples)
{
    double left = (double) numSamples / rate_;
    while (left > 0.0)
    {
        auto spend = [&](double length) {
            const double used = std::min(left, std::max(length - stageSeconds_, 0.0));
            stageSeconds_ += used;
            left -= used;
            return stageSeconds_ >= length;
        };
        switch (stage_)
        {
            case Stage::idle:
            case Stage::sustain:
                if (stage_ == Stage::sustain)
                    level_ = shape_.sustain;
                return;
            case Stage::delay:
                if (spend(shape_.delay))
                    enter(Stage::attack);
                break;
            case Stage::attack:
            {
                const double start = level_;
                const double before = stageSeconds_;
                const bool done = spend(shape_.attack);
                // rise linearly from wherever the last key left the level
                const double remaining = std::max(shape_.attack - before, 1e-9);
                level_ = done ? 1.0 : start + (1.0 - start) * (stageSeconds_ - before) / remaining;
                if (done)
                    enter(Stage::hold);
                break;
            }
            case Stage::hold:
                if (spend(shape_.hold))
                    enter(Stage::decay);
                break;
            case Stage::decay:
            {
                const bool done = spend(shape_.decay);
                level_ = 1.0 - (1.0 - shape_.sustain) * std::min(stageSeconds_ / shape_.decay, 1.0);
                if (done)
                    enter(Stage::sustain);
                break;
            }
            case Stage::release:
            {
                const bool done = spend(shape_.release);
                level_ = releaseFrom_ * (1.0 - std::min(stageSeconds_ / shape_.release, 1.0));
                if (done)
                {
                    level_ = 0.0;
                    enter(Stage::idle);
                }
                break;
            }
        }
    }
}

float DahdsrEnvelope::computeValue(RenderContext&, ControlSignalSourceState& state, uint32_t numSamples)
{
    // A key counts from the first control block that starts at or after it; the block's
    // value is the level at its end, so the voice ramps towards it.
    while (const NoteMessage* message = queue_.next(state.controlOffset))
        apply(*message);
    advance(numSamples);
    return (float) level_;
}
} // namespace oxa
