#pragma once
// One modulation connection: a child of a parameter's envelope that names a control
// signal source and says how much of it reaches the parameter.

#include "element/Element.h"

#include "engine/ControlSignalMapper.h"

#include <memory>

namespace oxa
{
class ControlSignalSource;
class ElementParamEnvelope;
class RenderContext;

class SignalConnection : public Element
{
public:
    struct Ids
    {
        uint32_t ratio, connectionMode, bypass, inverted, source, name, destination;
    };
    static const Ids& ids();
    /** Makes "SignalConnection" known to the element factory; safe to call again. */
    static void registerType();

    /** Voice sources are named by text; files from older builds call velocity by another name. */
    static constexpr const char* velocitySource = "@VoiceParam Velocity";
    static constexpr const char* legacyVelocitySource = "@VoiceParam OriginalVelocity";

    explicit SignalConnection(const String& name = String());

    float ratio() const { return ratio_; }
    int connectionMode() const { return mode_; }
    bool isEdition() const { return mode_ > 0; }
    bool isBypassed() const { return bypass_; }
    bool isInverted() const { return inverted_; }
    String source() const { return source_; }
    String destination() const { return destination_; }
    bool hasSource() const { return !source_.isEmpty(); }

    /** The envelope this connection is attached to, or null. */
    ElementParamEnvelope* envelope() const;
    /** First mapper kept by this connection, or null. */
    ControlSignalMapper* mapper() const;
    /** Gives the connection its shaping mapper, named "Mapper". */
    void setMapper(const std::shared_ptr<ControlSignalMapper>& mapper);

    /** Looks the source up again from the target element; message thread. */
    void resolveSource();
    /** The resolved source if it still lives. Audio thread safe. */
    ControlSignalSource* resolvedSource() const;

    /** The MIDI controller named by a "@MIDI CC <n>" source, or -1. */
    int midiController() const { return midiController_; }

    /** The source's value of control block `index`, shaped, scaled and signed. False when
        the source has nothing to say yet: a controller never received, or a source that
        cannot be found here (voice parameters among them). */
    bool valueAt(RenderContext& context, uint32_t index, float& value) const;
    /** valueAt, with 0 for a source that has nothing to say. */
    float contribution(RenderContext& context, uint32_t index) const;

    void setParent(Element* parent) override;
    void finishLoading() override;
    void saveXmlAttributes(tinyxml2::XMLElement* node, int& version) override;
    bool loadXmlAttributes(const tinyxml2::XMLElement* node, int version) override;

private:
    void setRatio(float v);
    void setConnectionMode(int v);
    void setBypass(bool v);
    void setInverted(bool v);
    void setSource(String v);
    void setDestination(String v);
    String nameText() const { return name().text(); }
    void setNameText(String v) { setName(v); }
    /** Settings changed: the envelope must rebuild its values. */
    void touchEnvelope();

    float ratio_ = 1.0f;
    int mode_ = 0;
    bool bypass_ = false;
    bool inverted_ = false;
    String source_;
    String destination_;
    std::weak_ptr<Element> sourceElement_;
    ControlSignalSource* sourceRaw_ = nullptr;
    int midiController_ = -1;
    KeptAttributes kept_;
};
} // namespace oxa
