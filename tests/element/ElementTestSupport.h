#pragma once
// Small elements with a state of their own, used by the element tests.

#include "element/Element.h"
#include "element/ElementPersistence.h"
#include "engine/ProcessingElement.h"

#include <memory>
#include <string>

namespace oxa::test
{
/** An element's document, written and read back in memory. */
inline std::string save(Element& element, SaveOptions options = {})
{
    std::string bytes;
    saveToBytes(element, bytes, options);
    return bytes;
}

inline bool load(Element& element, const std::string& bytes, SaveOptions options = {})
{
    return loadFromBytes(element, bytes, options);
}

/** Options for the old layout, which writes groups flat under a "HarrierProgram" root. */
inline SaveOptions legacyLayout()
{
    SaveOptions options;
    options.legacyLayout = 1;
    return options;
}

struct ProbeState : ElementState
{
    using ElementState::ElementState;
    float gain = 0.0f;
    float bands[3] = {0.0f, 0.0f, 0.0f};
    int mode = 0;
    bool enabled = false;
    String label;

    std::unique_ptr<ElementState> clone(StatePool*) const override { return std::make_unique<ProbeState>(*this); }
};

class ProbeElement : public Element
{
public:
    struct Ids
    {
        uint32_t gain, band, level, mode, enabled, label;
    };

    static const Ids& ids()
    {
        static const Ids made = [] {
            auto& r = ParameterRegistry::instance();
            Ids i{};
            i.gain = r.registerFloat(ParameterDescription<float>("Gain", 0.5f, 0.0f, 1.0f));
            i.band = r.registerFloat(ParameterDescription<float>("Band", 0.0f, -1.0f, 1.0f));
            ParameterDescription<float> level("Level", 0.0f, 0.0f, 1.0f, 0, 0, nullptr, true, false);
            level.flags.set(ParameterFlags::IsPersistent, false);
            i.level = r.registerFloat(level);
            i.mode = r.registerInt(ParameterDescription<int>("Mode", 0, 0, 3));
            i.enabled = r.registerBool(ParameterDescription<bool>("Enabled", false));
            i.label = r.registerString(ParameterDescription<String>("Label", "none", false, true));
            return i;
        }();
        return made;
    }

    explicit ProbeElement(const String& name, const String& type = "Probe") : Element(type, name)
    {
        setStates(std::make_unique<ProbeState>(this), std::make_unique<ProbeState>(this));
        const Ids& i = ids();
        addParameters({new ParameterInfo<float>(i.gain, this, &ProbeElement::gain, &ProbeElement::setGain),
                       new ParameterInfo<float>(i.band, this, &ProbeElement::band, &ProbeElement::setBand, 2),
                       new ParameterInfo<float>(i.level, this, &ProbeElement::level, nullptr)},
                      {new ParameterInfo<int>(i.mode, this, &ProbeElement::mode, &ProbeElement::setMode)},
                      {new ParameterInfo<bool>(i.enabled, this, &ProbeElement::enabled, &ProbeElement::setEnabled)},
                      {new ParameterInfo<String>(i.label, this, &ProbeElement::label, &ProbeElement::setLabel)});
    }

    ProbeState& main() { return static_cast<ProbeState&>(*mainState()); }
    ProbeState& second() { return static_cast<ProbeState&>(*secondState()); }

    float gain(const ProbeState& s) const { return s.gain; }
    void setGain(ProbeState& s, float v) { s.gain = v; }
    float band(const ProbeState& s, int index) const { return s.bands[index]; }
    void setBand(ProbeState& s, int index, float v) { s.bands[index] = v; }
    float level() const { return meter; }
    int mode(const ProbeState& s) const { return s.mode; }
    void setMode(ProbeState& s, int v) { s.mode = v; }
    bool enabled(const ProbeState& s) const { return s.enabled; }
    void setEnabled(ProbeState& s, bool v) { s.enabled = v; }
    String label() const { return labelText; }
    void setLabel(const String& v) { labelText = v; }

    float meter = 0.25f;
    String labelText = "none";
};

/** A probe with a tempo-synced rate, a version of its own and a record of what it was loaded with. */
class SyncedProbe : public ProbeElement
{
public:
    static uint32_t rateId()
    {
        static const uint32_t id = ParameterRegistry::instance().registerFloat(
            ParameterDescription<float>("PersistRate", 0.5f, 0.0f, 1.0f, 4));
        return id;
    }

    explicit SyncedProbe(const String& name = "probe") : ProbeElement(name, "SyncedProbe")
    {
        addParameters({new ParameterInfo<float>(rateId(), this, &SyncedProbe::rate, &SyncedProbe::setRate)}, {},
                      {new ParameterInfo<bool>(ProcessingElement::syncToHostId(), this, &SyncedProbe::synced,
                                               &SyncedProbe::setSynced)});
    }

    void saveXmlAttributes(tinyxml2::XMLElement* node, int& version) override
    {
        version = savedVersion;
        ProbeElement::saveXmlAttributes(node, version);
    }
    bool loadXmlAttributes(const tinyxml2::XMLElement* node, int version) override
    {
        loadedVersion = version;
        return ProbeElement::loadXmlAttributes(node, version);
    }

    float rate() const { return rateValue; }
    void setRate(float v) { rateValue = v; }
    bool synced() const { return syncValue; }
    void setSynced(bool v) { syncValue = v; }

    float rateValue = 0.5f;
    bool syncValue = false;
    int savedVersion = 3;
    int loadedVersion = -100;
};
} // namespace oxa::test
