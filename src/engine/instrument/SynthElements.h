#pragma once
// The instrument path, as far as a one-voice test instrument needs it: a Program holds
// Layers, a Layer holds Keygroups, and each of them renders its parts in order onto the
// bus it was given, adding to what is there.

#include "engine/ProcessingElement.h"

#include <vector>

namespace oxa
{
class BasicSynthElement : public ProcessingElement
{
public:
    BasicSynthElement(const String& typeName, const String& name);

    void setBus(uint32_t index, AudioBus* bus) override;
    void renderAudio(RenderContext& context, uint32_t numSamples, ElementState* state) override;

    /** The base's XML, then each part as a child node. */
    tinyxml2::XMLElement* saveXml(tinyxml2::XMLElement* parent, SaveOptions& options) override;
    /** The base's XML, then the parts rebuilt through the element factory. */
    bool loadXml(const tinyxml2::XMLElement* node, SaveOptions& options, int version) override;

    const std::vector<ProcessingElement*>& parts() const { return parts_; }

protected:
    /** Attaches a part that renders after the ones before it. Message thread, before rendering. */
    void addPart(const std::shared_ptr<ProcessingElement>& part);
    /** Whether a loaded child node of this type is one of this element's parts. */
    virtual bool acceptsPart(const Element& part) const = 0;
    /** A loaded child that is not a part (the keygroup's oscillator); the base drops it. */
    virtual void adoptLoadedChild(const std::shared_ptr<Element>&) {}

private:
    std::vector<ProcessingElement*> parts_;
};

class Layer;
class Keygroup;

class Program : public BasicSynthElement
{
public:
    static void registerType();
    Program();
    /** Names the layer "Layer <n>" with the first free number, and attaches it. */
    void addLayer(const std::shared_ptr<Layer>& layer);

protected:
    bool acceptsPart(const Element& part) const override;
};

class Layer : public BasicSynthElement
{
public:
    static void registerType();
    explicit Layer(const String& name = String());
    void addKeygroup(const std::shared_ptr<Keygroup>& keygroup);

protected:
    bool acceptsPart(const Element& part) const override;
};
} // namespace oxa
