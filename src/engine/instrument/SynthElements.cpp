#include "engine/instrument/SynthElements.h"

#include "element/ElementFactory.h"
#include "engine/ControlSignalSource.h"
#include "engine/EventProcessor.h"
#include "engine/instrument/Keygroup.h"

#include <algorithm>
#include <cstring>
#include <tinyxml2.h>

namespace oxa
{
namespace
{
/** Child nodes the element base reads itself. */
bool isBaseGroup(const char* tag)
{
    for (const char* own : {"Connections", "Mappers", "Properties", "ControlSignalSources", "EventProcessors"})
        if (std::strcmp(tag, own) == 0)
            return true;
    return false;
}

/** Sources and event processors are written by the processing element itself. */
bool savedByBase(const Element& child)
{
    return dynamic_cast<const ControlSignalSource*>(&child) != nullptr
           || dynamic_cast<const EventProcessor*>(&child) != nullptr;
}
} // namespace

BasicSynthElement::BasicSynthElement(const String& typeName, const String& name) : ProcessingElement(typeName, name)
{
    setBehaviour(receivesEvents, true);
}

void BasicSynthElement::setBus(uint32_t index, AudioBus* bus)
{
    ProcessingElement::setBus(index, bus);
    if (index == 0)
        for (ProcessingElement* part : parts_)
            part->setBus(0, bus);
}

void BasicSynthElement::addPart(const std::shared_ptr<ProcessingElement>& part)
{
    if (!part)
        return;
    addChild(part);
    parts_.push_back(part.get());
    if (isPrepared())
        part->prepare(sampleRate(), maxBlockSize());
    part->setBus(0, bus(0));
}

void BasicSynthElement::renderAudio(RenderContext& context, uint32_t numSamples, ElementState*)
{
    for (ProcessingElement* part : parts_)
        part->render(context, numSamples);
}

tinyxml2::XMLElement* BasicSynthElement::saveXml(tinyxml2::XMLElement* parent, SaveOptions& options)
{
    tinyxml2::XMLElement* node = ProcessingElement::saveXml(parent, options);
    if (node == nullptr)
        return nullptr;
    // other children first (the oscillator), then the parts in render order
    for (const auto& child : children())
        if (child->isSaved() && !savedByBase(*child)
            && std::find(parts_.begin(), parts_.end(), child.get()) == parts_.end())
            child->saveXml(node, options);
    for (ProcessingElement* part : parts_)
        if (part->isSaved())
            part->saveXml(node, options);
    return node;
}

bool BasicSynthElement::loadXml(const tinyxml2::XMLElement* node, SaveOptions& options, int version)
{
    const bool loaded = ProcessingElement::loadXml(node, options, version);
    if (node == nullptr || !loaded)
        return loaded;
    while (!parts_.empty())
    {
        removeChild(parts_.back());
        parts_.pop_back();
    }
    for (auto* child = node->FirstChildElement(); child != nullptr; child = child->NextSiblingElement())
    {
        if (isBaseGroup(child->Name()))
            continue;
        std::shared_ptr<Element> made = ElementFactory::instance().create(String(child->Name()));
        if (made == nullptr || savedByBase(*made) || !made->loadXml(child, options, version))
            continue;
        if (acceptsPart(*made))
            addPart(std::static_pointer_cast<ProcessingElement>(made));
        else
            adoptLoadedChild(made);
    }
    return true;
}

// ---- Program and Layer ----------------------------------------------------------------

void Program::registerType()
{
    ElementFactory::instance().registerType("Program", "Program", [] { return std::make_shared<Program>(); });
}

Program::Program() : BasicSynthElement(String("Program"), String("Program")) {}

void Program::addLayer(const std::shared_ptr<Layer>& layer)
{
    if (!layer)
        return;
    layer->setName(uniqueChildName(String("Layer "), 0));
    addPart(layer);
}

bool Program::acceptsPart(const Element& part) const { return dynamic_cast<const Layer*>(&part) != nullptr; }

void Layer::registerType()
{
    ElementFactory::instance().registerType("Layer", "Layer", [] { return std::make_shared<Layer>(); });
}

Layer::Layer(const String& name) : BasicSynthElement(String("Layer"), name) {}

void Layer::addKeygroup(const std::shared_ptr<Keygroup>& keygroup)
{
    if (!keygroup)
        return;
    if (keygroup->name().text().isEmpty())
        keygroup->setName(uniqueChildName(String("Keygroup "), 0));
    addPart(keygroup);
}

bool Layer::acceptsPart(const Element& part) const { return dynamic_cast<const Keygroup*>(&part) != nullptr; }
} // namespace oxa
