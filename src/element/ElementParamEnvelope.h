#pragma once
// The modulation envelope of one modulatable parameter: a child element that
// SignalConnection children attach to. It owns the values of the parameter for each
// control block of the block being rendered; the engine's envelope runner fills them.

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

    // Book-keeping of the runner, after the fields above.
    uint32_t valueCount = 0; // entries written to values
    float plainBase = 0.0f;  // the parameter's own value, before the offset
    float lastWritten = 0.0f; // what the last control block wrote, as the parameter reads it back
    bool hasWritten = false;
};

struct ConnectionSpec;

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
    /** A connection came, went or changed its settings: the values must be rebuilt,
        around the same base value. */
    void connectionsChanged();
    /** Re-reads the parameter's value into the envelope state of voice `index`. */
    void sync(int index);
    void setEnvelopePolyphonic(bool polyphonic) { polyphonic_ = polyphonic; }
    bool isEnvelopePolyphonic() const { return polyphonic_; }
    void setContext(RenderContext* context) { context_ = context; }
    RenderContext* context() const { return context_; }

    /** True when a connection child is attached. */
    bool isConnected() const { return !children().empty(); }

    // ---- connections (message thread; the caller holds the tree lock while rendering runs)
    // The element's own forms address a parameter of the element; these address this envelope.
    using Element::addConnection;
    using Element::removeConnection;
    /** Builds a connection from `spec` through the element factory and attaches it.
        False for a name already taken or when the connection type is unknown. */
    bool addConnection(const ConnectionSpec& spec);
    /** Adds an already built connection; an empty or taken name gets the next free one. */
    void attachConnection(const std::shared_ptr<Element>& connection);
    bool removeConnection(const String& name);
    void clearConnections();

    /** Appends each saved connection to `target` with the connection's own saveXml. */
    void saveConnections(tinyxml2::XMLElement* target, SaveOptions& options);
    /** Builds a connection, lets it read `node` with its own loadXml, and attaches it on success. */
    bool loadConnection(const tinyxml2::XMLElement* node, SaveOptions& options, int version);
    /** The parameter name a saved connection targets: "Destination", else the older
        "ModulationDestination", without a leading ">". Empty when there is neither. */
    static String destinationOf(const tinyxml2::XMLElement* node);

    /** The parameter's current plain value, a bool read as 0 or 1. */
    float readBaseValue() const;

private:
    Element* owner_;
    ParameterInfoBase& parameter_;
    /** With no connection left, puts back the value the parameter had before modulation. */
    void restoreBaseValue();

    uint8_t envelopeFlags_;
    bool polyphonic_ = false;
    RenderContext* context_ = nullptr;
    ElementParamEnvelopeState mainEnvelopeState_;
    ElementParamEnvelopeState secondEnvelopeState_;
};
} // namespace oxa
