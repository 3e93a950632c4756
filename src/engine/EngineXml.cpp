// The engine as XML: its own attributes, its top-level elements by type name, and
// the host parameter bindings, which wait for a prepared engine before they apply.
#include "element/ElementFactory.h"
#include "element/ElementPersistence.h"
#include "engine/ControlSignalSource.h"
#include "engine/Engine.h"
#include "engine/EventProcessor.h"
#include "plugin/AutomationParameterInterface.h"

#include <cstring>
#include <tinyxml2.h>

namespace oxa
{
namespace
{
/** Child tags that the element base reads itself. */
bool isOwnGroup(const char* tag)
{
    for (const char* own : {"Connections", "Mappers", "Properties", "ControlSignalSources", "EventProcessors",
                            "SignalConnection", "ControlSignalMapper"})
        if (std::strcmp(tag, own) == 0)
            return true;
    return false;
}
} // namespace

tinyxml2::XMLElement* Engine::saveXml(tinyxml2::XMLElement* parent, SaveOptions& options)
{
    tinyxml2::XMLElement* node = ProcessingElement::saveXml(parent, options);
    if (node == nullptr)
        return nullptr;
    for (ProcessingElement* child : children_)
        if (child->isSaved())
            child->saveXml(node, options);
    if (automation_ != nullptr)
    {
        tinyxml2::XMLElement* bindings = node->GetDocument()->NewElement("Automation");
        if (automation_->save(bindings))
            node->InsertEndChild(bindings);
        else
            node->GetDocument()->DeleteNode(bindings);
    }
    return node;
}

bool Engine::loadXml(const tinyxml2::XMLElement* node, SaveOptions& options, int version)
{
    bool loaded = ProcessingElement::loadXml(node, options, version);
    // the attributes only fail when a listener vetoed this element: keep the children then
    if (node == nullptr || (!loaded && options.loadListener != nullptr))
        return false;
    removeAllElements();
    heldAutomation_.reset();

    for (auto* child = node->FirstChildElement(); child != nullptr; child = child->NextSiblingElement())
    {
        const char* tag = child->Name();
        if (std::strcmp(tag, "Automation") == 0)
        {
            if (automation_ != nullptr)
            {
                heldAutomation_ = makeXmlDocument();
                heldAutomation_->InsertEndChild(child->DeepClone(heldAutomation_.get()));
            }
            continue;
        }
        if (isOwnGroup(tag))
            continue;

        std::shared_ptr<Element> made = ElementFactory::instance().create(String(tag));
        // An old flat document keeps the engine's sources and event processors among its
        // elements; the base load has taken those over already.
        if (dynamic_cast<ControlSignalSource*>(made.get()) != nullptr
            || dynamic_cast<EventProcessor*>(made.get()) != nullptr)
            continue;
        auto element = std::dynamic_pointer_cast<ProcessingElement>(made);
        if (element == nullptr)
        {
            loaded = false;
            continue;
        }
        if (element->loadXml(child, options, version))
            addElement(element);
        else
            loaded = false;
    }
    return loaded;
}

void Engine::finishLoading()
{
    ProcessingElement::finishLoading();
    if (isPrepared())
        applyHeldAutomation();
}

void Engine::registerType()
{
    static const bool registered = [] {
        ElementFactory::instance().registerType("Engine", "Engine",
                                                [] { return std::shared_ptr<Element>(std::make_shared<Engine>()); });
        return true;
    }();
    (void) registered;
}

void Engine::applyHeldAutomation()
{
    std::unique_ptr<tinyxml2::XMLDocument> held = std::move(heldAutomation_);
    if (held != nullptr && automation_ != nullptr)
        automation_->load(held->RootElement());
}
} // namespace oxa
