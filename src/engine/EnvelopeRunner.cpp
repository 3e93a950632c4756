#include "engine/EnvelopeRunner.h"

#include "element/ElementParamEnvelope.h"
#include "engine/ControlSignalSource.h"
#include "engine/RenderContext.h"
#include "engine/SignalConnection.h"

#include <algorithm>
#include <cmath>

namespace oxa
{
namespace
{
// A float parameter whose mapping bit is set takes no value from its envelope.
constexpr uint32_t envelopeMappingBit = 0x100;

/** Any connection that is not a known connection with "Bypass" set. */
bool isActive(const Element& child)
{
    const auto* connection = dynamic_cast<const SignalConnection*>(&child);
    return connection == nullptr || !connection->isBypassed();
}

bool hasActiveConnection(const ElementParamEnvelope& envelope)
{
    for (const auto& child : envelope.children())
        if (isActive(*child))
            return true;
    return false;
}

/** Renders the sources of the active connections that have not rendered in this block yet. */
void renderSources(ElementParamEnvelope& envelope, RenderContext& context, uint32_t numSamples)
{
    for (const auto& child : envelope.children())
        if (auto* connection = dynamic_cast<SignalConnection*>(child.get()); connection && !connection->isBypassed())
            if (ControlSignalSource* source = connection->resolvedSource())
                source->render(context, numSamples);
}

/** The value as the parameter will read it back once written. */
float asWritten(ParameterKind kind, float value)
{
    switch (kind)
    {
        case ParameterKind::Int: return std::floor(value + 0.5f);
        case ParameterKind::Bool: return value < 0.5f ? 0.0f : 1.0f;
        default: return value;
    }
}

/** The parameter's own value. What the envelope wrote last is its own doing, not a new base. */
float plainBase(ElementParamEnvelope& envelope, ElementParamEnvelopeState& es, bool counterMoved)
{
    if (!es.needsUpdate && !counterMoved)
        return es.plainBase;
    const float read = envelope.readBaseValue();
    if (!es.needsUpdate && es.hasWritten && read == es.lastWritten)
        return es.plainBase;
    return std::isfinite(read) ? read : es.plainBase;
}

/** Combines the base with the sum of the block's contributions, by the parameter's kind and range. */
class ValueCombiner
{
public:
    ValueCombiner(const ElementParamEnvelope& envelope, float base) : base_(base), owner_(envelope.owner())
    {
        const ParameterInfoBase& info = envelope.parameter();
        if (info.kind() == ParameterKind::Float)
        {
            const auto* d = static_cast<const ParameterDescription<float>*>(info.description());
            if (d->hasRange())
            {
                ranged_ = d;
                normalisedBase_ = std::clamp(d->unmap(owner_, base), 0.0f, 1.0f);
            }
        }
        else if (info.kind() == ParameterKind::Int)
        {
            const auto* d = static_cast<const ParameterDescription<int>*>(info.description());
            if (d->hasRange())
            {
                intMin_ = (float) d->min;
                intSpan_ = (float) (d->max - d->min);
            }
        }
        multiplies_ = !envelope.offsetAdds();
    }

    /** `edit` (normalised) replaces the base when `hasEdit`; `mod` moves around it, or
        for a multiplying parameter scales it (when `hasMod`). */
    float combine(bool hasEdit, float edit, bool hasMod, float mod) const
    {
        if (ranged_ != nullptr && !multiplies_)
        {
            const float n = (hasEdit ? edit : normalisedBase_) + mod;
            return ranged_->map(owner_, std::clamp(n, 0.0f, 1.0f));
        }
        // A list parameter set outright spreads 0..1 over its entries.
        if (hasEdit && intSpan_ > 0.0f)
            edit = intMin_ + std::clamp(edit, 0.0f, 1.0f) * intSpan_;
        const float start = hasEdit ? edit : base_;
        float v = multiplies_ ? (hasMod ? start * mod : start) : start + mod;
        if (ranged_ != nullptr)
            v = ranged_->clamp(v);
        return std::isfinite(v) ? v : base_;
    }

private:
    float base_;
    const Element* owner_;
    const ParameterDescription<float>* ranged_ = nullptr;
    float normalisedBase_ = 0.0f;
    float intMin_ = 0.0f;
    float intSpan_ = 0.0f;
    bool multiplies_ = false;
};

float blockValue(const ElementParamEnvelope& envelope, const ValueCombiner& combiner, RenderContext& context,
                 uint32_t index)
{
    float edit = 0.0f, mod = 0.0f;
    bool hasEdit = false, hasMod = false;
    for (const auto& child : envelope.children())
    {
        const auto* connection = dynamic_cast<const SignalConnection*>(child.get());
        if (connection == nullptr || connection->isBypassed())
            continue;
        float c = 0.0f;
        if (!connection->valueAt(context, index, c))
            continue; // nothing heard from the source yet: the parameter keeps its own value
        if (connection->isEdition())
        {
            edit += c;
            hasEdit = true;
        }
        else
        {
            mod += c;
            hasMod = true;
        }
    }
    return combiner.combine(hasEdit, edit, hasMod, mod);
}
} // namespace

bool runEnvelope(ElementParamEnvelope& envelope, RenderContext& context, uint32_t numSamples, ElementState&)
{
    ElementParamEnvelopeState& es = envelope.mainEnvelopeState();
    const uint16_t counter = envelope.owner()->updateCounter();
    const bool counterMoved = es.updateCounter != counter;

    if (!counterMoved && es.isStatic && !es.needsUpdate)
    {
        es.values = context.arena1.allocateSamples(1);
        es.valueCount = es.values != nullptr ? 1 : 0;
        if (es.values != nullptr)
            es.values[0] = es.baseValue;
        return true;
    }

    const uint32_t blocks = (numSamples + 31) >> 5;
    const bool audioRate = (envelope.envelopeFlags() & ElementParamEnvelope::AudioRate) != 0;
    const uint32_t perBlock = audioRate ? 32 : 1;
    const uint32_t count = (blocks + 1) * perBlock;
    es.values = context.arena1.allocateSamples(count);
    if (es.values == nullptr)
    {
        // No room this block: leave the parameter where it is.
        es.valueCount = 0;
        es.isStatic = true;
        return true;
    }
    es.valueCount = count;

    const bool active = hasActiveConnection(envelope);
    const bool wroteOtherValue = es.hasWritten && es.lastWritten != asWritten(envelope.parameterKind(), es.baseValue);
    if (!es.needsUpdate && !counterMoved && !active && !wroteOtherValue)
    {
        es.isStatic = true;
        es.values[0] = es.baseValue;
        return true;
    }

    es.plainBase = plainBase(envelope, es, counterMoved);
    float base = es.plainBase;
    if (es.hasOffset)
        base = envelope.offsetAdds() ? base + es.offset : base * es.offset;
    es.baseValue = base;
    es.updateCounter = counter;
    es.needsUpdate = false;

    if (!active)
    {
        std::fill(es.values, es.values + count, base);
        // A connection was just bypassed: one more pass puts the parameter back at its base.
        const bool settle = es.hasWritten && es.lastWritten != asWritten(envelope.parameterKind(), base);
        es.isStatic = !settle;
        return !settle;
    }

    renderSources(envelope, context, numSamples);
    const ValueCombiner combiner(envelope, base);
    for (uint32_t b = 0; b <= blocks; ++b)
    {
        // The extra entry past the last block repeats it, for readers that look one ahead.
        const float v = blockValue(envelope, combiner, context, std::min(b, blocks == 0 ? 0 : blocks - 1));
        std::fill(es.values + b * perBlock, es.values + (b + 1) * perBlock, v);
    }
    es.isStatic = false;
    return false;
}

void applyEnvelopeValue(ElementParamEnvelope& envelope, Element&, ElementState* state, uint32_t index)
{
    ElementParamEnvelopeState& es = envelope.mainEnvelopeState();
    if (es.values == nullptr || es.valueCount == 0)
        return;
    const bool audioRate = (envelope.envelopeFlags() & ElementParamEnvelope::AudioRate) != 0;
    const uint32_t at = es.isStatic ? 0 : std::min(audioRate ? index * 32 : index, es.valueCount - 1);
    const float v = es.values[at];
    ParameterInfoBase& info = envelope.parameter();
    switch (info.kind())
    {
        case ParameterKind::Float:
        {
            const auto& d = static_cast<ParameterInfo<float>&>(info).typedDescription();
            if (es.isStatic || (d.mapperFlags & envelopeMappingBit) != 0)
                return;
            static_cast<ParameterInfo<float>&>(info).set(state, v);
            break;
        }
        case ParameterKind::Int:
            static_cast<ParameterInfo<int>&>(info).set(state, static_cast<int>(std::floor(v + 0.5f)));
            break;
        case ParameterKind::Bool:
            static_cast<ParameterInfo<bool>&>(info).set(state, !(v < 0.5f));
            break;
        default:
            return;
    }
    es.lastWritten = asWritten(info.kind(), v);
    es.hasWritten = true;
}
} // namespace oxa
