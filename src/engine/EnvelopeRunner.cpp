#include "engine/EnvelopeRunner.h"
#include "element/ElementParamEnvelope.h"
#include "engine/RenderContext.h"

#include <cmath>

namespace oxa
{
namespace
{
float plainValue(const ElementParamEnvelope& envelope)
{
    const Element* owner = envelope.owner();
    const uint32_t id = envelope.parameter().id();
    switch (envelope.parameter().kind())
    {
        case ParameterKind::Float: return owner->floatParameter(id);
        case ParameterKind::Int: return (float) owner->intParameter(id);
        case ParameterKind::Bool: return owner->boolParameter(id) ? 1.0f : 0.0f;
        default: return 0.0f;
    }
}

/** A connection takes part unless its "Bypass" is set. */
bool hasActiveConnection(const ElementParamEnvelope& envelope)
{
    for (const auto& child : envelope.children())
    {
        const uint32_t bypassId = child->parameterId("Bypass");
        if (bypassId == 0 || !child->boolParameter(bypassId))
            return true;
    }
    return false;
}
} // namespace

bool runEnvelope(ElementParamEnvelope& envelope, RenderContext& context, uint32_t numSamples, ElementState& state)
{
    ElementParamEnvelopeState& es = envelope.mainEnvelopeState();
    const uint16_t counter = envelope.owner()->updateCounter();

    if (es.updateCounter == counter && es.isStatic)
    {
        es.values = context.arena1.allocateSamples(1);
        es.values[0] = es.baseValue;
        return true;
    }

    const uint32_t blocks = (numSamples + 31) >> 5;
    const bool audioRate = (envelope.envelopeFlags() & ElementParamEnvelope::AudioRate) != 0;
    const uint32_t count = audioRate ? (blocks + 1) * 32 : blocks + 1;
    es.values = context.arena1.allocateSamples(count);

    const bool active = hasActiveConnection(envelope);
    if (!es.needsUpdate && es.updateCounter == counter && !active)
    {
        es.isStatic = true;
        es.values[0] = es.baseValue;
        return true;
    }

    float base = plainValue(envelope);
    if (es.hasOffset)
        base = envelope.offsetAdds() ? base + es.offset : base * es.offset;
    es.baseValue = base;
    es.updateCounter = counter;
    es.needsUpdate = false;

    // Sources write into these values; without a source sounding the base value holds.
    for (uint32_t i = 0; i < count; ++i)
        es.values[i] = base;

    es.isStatic = !active;
    return !active;
}

void applyEnvelopeValue(ElementParamEnvelope& envelope, Element& element, ElementState* state, uint32_t index)
{
    const ElementParamEnvelopeState& es = envelope.mainEnvelopeState();
    if (es.values == nullptr)
        return;
    ParameterInfoBase& info = envelope.parameter();
    const float v = es.isStatic ? es.values[0] : es.values[index];
    switch (info.kind())
    {
        case ParameterKind::Float:
            if (!es.isStatic)
                static_cast<ParameterInfo<float>&>(info).set(state, v);
            break;
        case ParameterKind::Int:
            static_cast<ParameterInfo<int>&>(info).set(state, (int) std::floor(v + 0.5f));
            break;
        case ParameterKind::Bool:
            static_cast<ParameterInfo<bool>&>(info).set(state, !(v < 0.5f));
            break;
        default:
            break;
    }
}
} // namespace oxa
