// How one element writes itself as XML and reads itself back: attributes from the
// persistent parameters, then connections, mappers and properties as children.
#include "element/Element.h"
#include "element/ElementFactory.h"
#include "element/ElementParamEnvelope.h"
#include "element/ElementPersistence.h"
#include "element/ParameterDescription.h"

#include <cmath>
#include <cstdio>
#include <cstring>

namespace oxa
{
namespace
{

void setFloatText(tinyxml2::XMLElement* node, const char* name, float value)
{
    char text[48];
    std::snprintf(text, sizeof(text), "%.8g", static_cast<double>(value));
    node->SetAttribute(name, text);
}

void setIntText(tinyxml2::XMLElement* node, const char* name, int value)
{
    char text[24];
    std::snprintf(text, sizeof(text), "%d", value);
    node->SetAttribute(name, text);
}

/** A finite number, or nothing: text, NaN and infinities all read as "not given". */
bool readFloat(const tinyxml2::XMLElement* node, const char* name, float& value)
{
    float parsed = 0.0f;
    if (node == nullptr || node->QueryFloatAttribute(name, &parsed) != tinyxml2::XML_SUCCESS || !std::isfinite(parsed))
        return false;
    value = parsed;
    return true;
}

bool readInt(const tinyxml2::XMLElement* node, const char* name, int& value)
{
    return node != nullptr && node->QueryIntAttribute(name, &value) == tinyxml2::XML_SUCCESS;
}

/** Either the wrapper element or, in the old layout, the node itself. */
tinyxml2::XMLElement* openGroup(tinyxml2::XMLElement* node, const char* tag, bool legacy)
{
    return legacy ? node : node->GetDocument()->NewElement(tag);
}

/** Keeps a wrapper that got children, frees one that stayed empty. */
void closeGroup(tinyxml2::XMLElement* node, tinyxml2::XMLElement* group, bool legacy)
{
    if (legacy)
        return;
    if (group->FirstChild() != nullptr)
        node->InsertEndChild(group);
    else
        node->GetDocument()->DeleteNode(group);
}
} // namespace

tinyxml2::XMLElement* Element::saveXml(tinyxml2::XMLElement* parent, SaveOptions& options)
{
    if (parent == nullptr)
        return nullptr;
    tinyxml2::XMLElement* node = parent->InsertNewChildElement(typeName().text().c_str());

    int version = 0;
    saveXmlAttributes(node, version);
    if (version > 0)
        setIntText(node, (typeName().text() + "Version").c_str(), version);

    const bool legacy = options.legacyLayout != 0;
    auto& modulation = ModulationPersistence::instance();
    tinyxml2::XMLElement* connections = openGroup(node, "Connections", legacy);
    for (const auto& record : parameters())
    {
        const ParameterFlags& flags = record->flags();
        if (flags.isOutput() || !flags.isModulatable() || record->envelope() == nullptr)
            continue;
        if (legacy && record->name() == "Pitch")
            continue;
        modulation.saveConnections(*record->envelope(), connections, options);
    }
    closeGroup(node, connections, legacy);

    if (extras_ != nullptr)
    {
        tinyxml2::XMLElement* mappers = openGroup(node, "Mappers", legacy);
        for (const auto& entry : extras_->mappers)
            if (entry.element != nullptr)
                entry.element->saveXml(mappers, options);
        closeGroup(node, mappers, legacy);

        tinyxml2::XMLElement* properties = node->GetDocument()->NewElement("Properties");
        bool wroteProperty = false;
        for (const auto& [key, value] : extras_->properties)
        {
            if (value.isPersistent == 0)
                continue;
            properties->SetAttribute(key.c_str(), value.hasValue ? value.value.c_str() : "");
            wroteProperty = true;
        }
        if (wroteProperty)
            node->InsertEndChild(properties);
        else
            node->GetDocument()->DeleteNode(properties);
    }
    return node;
}

void Element::saveXmlAttributes(tinyxml2::XMLElement* node, int&)
{
    node->SetAttribute("Name", name().text().c_str());
    for (const auto& record : parameters())
    {
        if (!record->flags().isPersistent())
            continue;
        const char* attribute = record->name().c_str();
        const uint32_t id = record->id();
        switch (record->kind())
        {
        case ParameterKind::Float:
            setFloatText(node, attribute, floatParameter(id));
            break;
        case ParameterKind::Int:
            setIntText(node, attribute, intParameter(id));
            break;
        case ParameterKind::Bool:
            node->SetAttribute(attribute, boolParameter(id) ? "1" : "0");
            break;
        case ParameterKind::String:
            node->SetAttribute(attribute, stringParameter(id).c_str());
            break;
        default:
            break;
        }
    }
}

bool Element::loadXml(const tinyxml2::XMLElement* node, SaveOptions& options, int version)
{
    if (node == nullptr)
        return false;
    if (options.loadListener != nullptr && !options.loadListener->onElement(*this, options, version))
        return false;

    int stored = 0;
    if (!readInt(node, (typeName().text() + "Version").c_str(), stored))
        stored = 0;
    const int inForce = version == legacyDocumentVersion ? legacyDocumentVersion : stored;
    const bool legacy = inForce == legacyDocumentVersion;

    const bool loaded = loadXmlAttributes(node, inForce);
    auto& modulation = ModulationPersistence::instance();

    if (options.loadConnections != 0)
    {
        for (ElementParamEnvelope* envelope : envelopes())
            if (envelope != nullptr)
                modulation.clearConnections(*envelope);

        auto loadOne = [&](const tinyxml2::XMLElement* child, const char* destination) {
            const uint32_t id = parameterId(destination);
            if (id == 0)
                return;
            ParameterInfoBase* info = findInfo(id);
            if (info == nullptr || info->kind() > ParameterKind::Bool || !info->flags().isModulatable()
                || info->envelope() == nullptr)
                return;
            modulation.loadConnection(*info->envelope(), child, options, inForce);
        };

        if (!legacy)
        {
            if (const tinyxml2::XMLElement* group = node->FirstChildElement("Connections"))
                for (auto* child = group->FirstChildElement(); child != nullptr; child = child->NextSiblingElement())
                {
                    // Connections are written with their older attribute names, so the
                    // envelope knows where to look for the destination.
                    loadOne(child, ElementParamEnvelope::destinationOf(child).c_str());
                }
        }
        else
        {
            for (auto* child = node->FirstChildElement("SignalConnection"); child != nullptr;
                 child = child->NextSiblingElement("SignalConnection"))
            {
                const char* destination = child->Attribute("ModulationDestination");
                if (destination == nullptr)
                    destination = "";
                if (destination[0] == '>')
                    ++destination;
                loadOne(child, destination);
            }
        }
    }

    // mappers: the old ones go first, each announced
    clearMappers();
    {
        const tinyxml2::XMLElement* group = legacy ? node : node->FirstChildElement("Mappers");
        const char* only = legacy ? "ControlSignalMapper" : nullptr;
        for (auto* child = group != nullptr ? group->FirstChildElement(only) : nullptr; child != nullptr;
             child = child->NextSiblingElement(only))
        {
            std::shared_ptr<Element> made = ElementFactory::instance().create(String(child->Name()));
            if (!made || !modulation.asMapper)
                continue;
            std::shared_ptr<ControlSignalMapper> mapper = modulation.asMapper(made);
            if (mapper && made->loadXml(child, options, inForce))
                addMapperEntry(mapper, made.get());
        }
    }

    // properties: persistent ones are replaced wholesale, the others stay
    if (extras_ != nullptr)
    {
        std::vector<String> dropped;
        for (const auto& [key, value] : extras_->properties)
            if (value.isPersistent != 0)
                dropped.push_back(key);
        for (const String& key : dropped)
            removeProperty(key);
    }
    if (const tinyxml2::XMLElement* group = node->FirstChildElement("Properties"))
        for (const tinyxml2::XMLAttribute* a = group->FirstAttribute(); a != nullptr; a = a->Next())
            setProperty(String(a->Name()), ElementProperty(String(a->Value()), true));

    applyPendingParameters(mainState());
    return loaded;
}

bool Element::loadXmlAttributes(const tinyxml2::XMLElement* node, int)
{
    if (node == nullptr)
        return false;
    const char* storedName = node->Attribute("Name");
    setName(String(storedName != nullptr ? storedName : ""));
    loadParameterValues(node);
    return true;
}

void Element::applyParameterDefaults(uint32_t fromId) { loadParameterValues(nullptr, fromId); }

void Element::loadParameterValues(const tinyxml2::XMLElement* node, uint32_t fromId)
{
    const uint32_t syncId = parameterId("SyncToHost");
    // flags first, so that "SyncToHost" is known when the values it governs are checked
    for (int pass = 0; pass < 2; ++pass)
    {
        for (const auto& record : parameters())
        {
            const ParameterFlags& flags = record->flags();
            if (!flags.isPersistent() || flags.isOutput() || record->id() < fromId)
                continue;
            const bool isBool = record->kind() == ParameterKind::Bool;
            if ((pass == 0) != isBool)
                continue;

            const char* attribute = record->name().c_str();
            const uint32_t id = record->id();
            const bool synced = syncId != 0 && boolParameter(syncId);
            switch (record->kind())
            {
            case ParameterKind::Float:
            {
                const auto& d = static_cast<const ParameterDescription<float>&>(*record->description());
                float value = d.defaultValue;
                if (readFloat(node, attribute, value) && d.hasRange() && !(isSyncDisplayType(d.displayType) && synced))
                    value = std::fmin(std::fmax(value, d.min), d.max);
                setFloatParameter(id, value);
                break;
            }
            case ParameterKind::Int:
            {
                const auto& d = static_cast<const ParameterDescription<int>&>(*record->description());
                int value = d.defaultValue;
                if (readInt(node, attribute, value) && d.hasRange() && !(isSyncDisplayType(d.displayType) && synced))
                    value = value < d.min ? d.min : (value > d.max ? d.max : value);
                setIntParameter(id, value);
                break;
            }
            case ParameterKind::Bool:
            {
                const auto& d = static_cast<const ParameterDescription<bool>&>(*record->description());
                int parsed = 0;
                setBoolParameter(id, readInt(node, attribute, parsed) ? parsed > 0 : d.defaultValue);
                break;
            }
            case ParameterKind::String:
            {
                const auto& d = static_cast<const ParameterDescription<String>&>(*record->description());
                const char* text = node != nullptr ? node->Attribute(attribute) : nullptr;
                setStringParameter(id, text != nullptr ? String(text) : d.defaultValue);
                break;
            }
            default:
                break;
            }
        }
    }
}

void Element::finishLoading()
{
    auto& modulation = ModulationPersistence::instance();
    const bool underEngine = engine() != nullptr;
    // copy: removing a connection changes the child list
    const std::vector<std::shared_ptr<Element>> current = children();
    for (const auto& child : current)
    {
        child->finishLoading();
        if (underEngine && modulation.isUnresolvedConnection && modulation.isUnresolvedConnection(*child))
            removeChild(child.get());
    }
    flushErrors();
}
} // namespace oxa
