#pragma once
// The modulation envelope of one modulatable parameter: a child element that
// SignalConnection children attach to. It carries its state; rendering comes later.

#include "element/Element.h"

namespace oxa
{
struct ElementParamEnvelopeState
{
    uint16_t updateCounter = 0;
    float* values = nullptr;
    float baseValue = 0.0f;
    float offset = 0.0f;
    bool hasOffset = false;
    bool isStatic = true;
    bool needsUpdate = true;
};

class ElementParamEnvelope : public Element
{
public:
    enum Flags : uint8_t
    {
        KindMask = 3,
        OffsetAdds = 8,
        AudioRate = 32
    };

    ElementParamEnvelope(Element* owner, ParameterInfoBase& parameter);

    ParameterInfoBase& parameter() const { return parameter_; }
    Element* owner() const { return owner_; }
    uint8_t envelopeFlags() const { return envelopeFlags_; }
    ParameterKind parameterKind() const { return static_cast<ParameterKind>(envelopeFlags_ & KindMask); }
    bool offsetAdds() const { return (envelopeFlags_ & OffsetAdds) != 0; }

    ElementParamEnvelopeState& mainEnvelopeState() { return mainEnvelopeState_; }
    ElementParamEnvelopeState& secondEnvelopeState() { return secondEnvelopeState_; }

    /** The parameter's plain value moved: both states must recompute. */
    void baseValueChanged();
    /** Re-reads the parameter's value into the envelope state of voice `index`. */
    void sync(int index);
    void setEnvelopePolyphonic(bool polyphonic) { polyphonic_ = polyphonic; }
    bool isEnvelopePolyphonic() const { return polyphonic_; }
    void setContext(RenderContext* context) { context_ = context; }
    RenderContext* context() const { return context_; }

    /** True when a connection child is attached. */
    bool isConnected() const { return !children().empty(); }

    /** The parameter's current plain value, a bool read as 0 or 1. */
    float readBaseValue() const;

private:
    Element* owner_;
    ParameterInfoBase& parameter_;
    uint8_t envelopeFlags_;
    bool polyphonic_ = false;
    RenderContext* context_ = nullptr;
    ElementParamEnvelopeState mainEnvelopeState_;
    ElementParamEnvelopeState secondEnvelopeState_;
};
} // namespace oxa
