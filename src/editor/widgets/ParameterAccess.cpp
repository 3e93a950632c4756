#include "editor/widgets/ParameterAccess.h"

#include "element/ParameterRegistry.h"
#include "engine/EngineProxy.h"

#include <map>
#include <string>

namespace oxa
{
uint32_t parameterIdByName(const char* name)
{
    // Ids count from 1 in declaration order; the table is small and asked once per widget.
    static std::map<std::string, uint32_t> known;
    if (auto it = known.find(name); it != known.end())
        return it->second;
    const ParameterRegistry& registry = ParameterRegistry::instance();
    for (uint32_t id = 1; id < 4096; ++id)
    {
        const ParameterKind kind = registry.kindOf(id);
        if (kind == ParameterKind::Invalid)
            continue;
        if (registry.nameOf(id).str() == name)
        {
            known.emplace(name, id);
            return id;
        }
    }
    return 0;
}

void GestureBracket::begin()
{
    Element* element = view.getElement();
    if (open || element == nullptr || view.getProxy() == nullptr)
        return;
    open = true;
    view.getProxy()->beginGesture(*element, view.resolvedId());
}

void GestureBracket::end()
{
    if (!open)
        return;
    open = false;
    Element* element = view.getElement();
    if (element != nullptr && view.getProxy() != nullptr)
        view.getProxy()->endGesture(*element, view.resolvedId());
}

juce::String floatText(const Element* element, uint32_t id, float plain)
{
    if (const auto* d = ParameterRegistry::instance().floatDescription(id))
        return toJuce(d->valueToText(element, plain));
    return juce::String(plain, 2);
}

juce::String intText(const Element* element, uint32_t id, int value)
{
    if (const auto* d = ParameterRegistry::instance().intDescription(id))
        return toJuce(d->valueToText(element, value));
    return juce::String(value);
}

juce::String boolText(const Element* element, uint32_t id, bool value)
{
    if (const auto* d = ParameterRegistry::instance().boolDescription(id))
        return toJuce(d->valueToText(element, value));
    return value ? "On" : "Off";
}
} // namespace oxa
