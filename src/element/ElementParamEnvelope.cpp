#include "element/ElementParamEnvelope.h"

#include "element/ConnectionSpec.h"
#include "element/ElementFactory.h"

#include <tinyxml2.h>

#include <algorithm>
#include <cmath>

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

void ElementParamEnvelope::connectionsChanged()
{
    mainEnvelopeState_.isStatic = false;
    secondEnvelopeState_.isStatic = false;
}

void ElementParamEnvelope::restoreBaseValue()
{
    ElementParamEnvelopeState& es = mainEnvelopeState_;
    if (!es.hasWritten)
        return;
    es.hasWritten = false;
    const float base = es.plainBase;
    for (ElementState* state : {owner_->mainState(), owner_->secondState()})
    {
        switch (parameter_.kind())
        {
        case ParameterKind::Float:
            static_cast<ParameterInfo<float>&>(parameter_).set(state, base);
            break;
        case ParameterKind::Int:
            static_cast<ParameterInfo<int>&>(parameter_).set(state, static_cast<int>(std::floor(base + 0.5f)));
            break;
        case ParameterKind::Bool:
            static_cast<ParameterInfo<bool>&>(parameter_).set(state, !(base < 0.5f));
            break;
        default:
            break;
        }
    }
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

// ---- connections ---------------------------------------------------------------------

namespace
{
const char* const connectionType = "SignalConnection";

void setStringByName(Element& element, const char* name, const String& value)
{
    if (uint32_t id = element.parameterId(name))
        element.setStringParameter(id, value);
}
} // namespace

bool ElementParamEnvelope::addConnection(const ConnectionSpec& spec)
{
    if (!spec.name.isEmpty() && findElement(spec.name) != nullptr)
        return false;
    std::shared_ptr<Element> connection = ElementFactory::instance().create(String(connectionType));
    if (!connection)
        return false;
    // By name: the connection's class lives with the engine, above this layer.
    if (uint32_t id = connection->parameterId("Ratio"))
        connection->setFloatParameter(id, spec.ratio);
    if (uint32_t id = connection->parameterId("ConnectionMode"))
        connection->setIntParameter(id, spec.mode);
    if (uint32_t id = connection->parameterId("Bypass"))
        connection->setBoolParameter(id, !spec.enabled);
    if (uint32_t id = connection->parameterId("Inverted"))
        connection->setBoolParameter(id, spec.inverted);
    setStringByName(*connection, "Destination", parameter_.name());
    connection->setName(spec.name);
    attachConnection(connection);
    // after attaching, so that the source is looked up from the target element
    setStringByName(*connection, "Source", spec.source);
    return true;
}

void ElementParamEnvelope::attachConnection(const std::shared_ptr<Element>& connection)
{
    if (!connection)
        return;
    if (connection->name().text().isEmpty() || findElement(connection->name().text()) != nullptr)
        connection->setName(owner_->uniqueConnectionName(parameter_.id()));
    if (uint32_t id = connection->parameterId("Destination"); id != 0 && connection->stringParameter(id).isEmpty())
        connection->setStringParameter(id, parameter_.name());
    addChild(connection);

    auto& connected = owner_->connectedEnvelopes();
    if (std::find(connected.begin(), connected.end(), this) == connected.end())
        connected.push_back(this);
    connectionsChanged();
}

bool ElementParamEnvelope::removeConnection(const String& name)
{
    Element* connection = findElement(name);
    if (connection == nullptr || connection->parent() != this)
        return false;
    removeChild(connection);
    if (!isConnected())
    {
        auto& connected = owner_->connectedEnvelopes();
        connected.erase(std::remove(connected.begin(), connected.end(), this), connected.end());
        restoreBaseValue();
    }
    connectionsChanged();
    return true;
}

void ElementParamEnvelope::clearConnections()
{
    while (!children().empty())
        removeChild(children().back().get());
    auto& connected = owner_->connectedEnvelopes();
    connected.erase(std::remove(connected.begin(), connected.end(), this), connected.end());
    restoreBaseValue();
    connectionsChanged();
}

void ElementParamEnvelope::saveConnections(tinyxml2::XMLElement* target, SaveOptions& options)
{
    if (target == nullptr)
        return;
    for (const auto& connection : children())
        if (connection->isSaved())
            connection->saveXml(target, options);
}

bool ElementParamEnvelope::loadConnection(const tinyxml2::XMLElement* node, SaveOptions& options, int version)
{
    if (node == nullptr)
        return false;
    std::shared_ptr<Element> connection = ElementFactory::instance().create(String(connectionType));
    if (!connection || !connection->loadXml(node, options, version))
        return false;
    attachConnection(connection);
    return true;
}

String ElementParamEnvelope::destinationOf(const tinyxml2::XMLElement* node)
{
    if (node == nullptr)
        return String();
    const char* text = node->Attribute("Destination");
    if (text == nullptr)
        text = node->Attribute("ModulationDestination");
    if (text == nullptr)
        return String();
    if (*text == '>')
        ++text;
    return String(text);
}
} // namespace oxa
