#include "element/ElementParamEnvelope.h"

namespace oxa
{
namespace
{
uint8_t flagsFor(const ParameterInfoBase& parameter)
{
    auto kind = static_cast<uint8_t>(parameter.kind());
    uint8_t flags = static_cast<uint8_t>(kind & ElementParamEnvelope::KindMask);
    bool additive = true;
    switch (parameter.kind())
    {
    case ParameterKind::Float:
        additive = static_cast<const ParameterDescription<float>*>(parameter.description())->modulation->isAdditive();
        break;
    case ParameterKind::Int:
        additive = static_cast<const ParameterDescription<int>*>(parameter.description())->modulation->isAdditive();
        break;
    case ParameterKind::Bool:
        additive = static_cast<const ParameterDescription<bool>*>(parameter.description())->modulation->isAdditive();
        break;
    default:
        break;
    }
    if (additive)
        flags |= ElementParamEnvelope::OffsetAdds;
    return flags;
}
} // namespace

ElementParamEnvelope::ElementParamEnvelope(Element* owner, ParameterInfoBase& parameter)
    : Element("ElementParamEnvelope", parameter.name()), owner_(owner), parameter_(parameter),
      envelopeFlags_(flagsFor(parameter))
{
    // connections are written through the owner's "Connections", not as a child element
    setSaved(false);
}

float ElementParamEnvelope::readBaseValue() const
{
    const uint32_t id = parameter_.id();
    switch (parameter_.kind())
    {
    case ParameterKind::Float:
        return owner_->floatParameter(id);
    case ParameterKind::Int:
        return static_cast<float>(owner_->intParameter(id));
    case ParameterKind::Bool:
        return owner_->boolParameter(id) ? 1.0f : 0.0f;
    default:
        return 0.0f;
    }
}

void ElementParamEnvelope::baseValueChanged()
{
    mainEnvelopeState_.needsUpdate = true;
    secondEnvelopeState_.needsUpdate = true;
}

void ElementParamEnvelope::sync(int)
{
    const float value = readBaseValue();
    for (auto* state : {&mainEnvelopeState_, &secondEnvelopeState_})
    {
        state->baseValue = value;
        state->needsUpdate = true;
        state->updateCounter = owner_->updateCounter();
    }
}
} // namespace oxa
