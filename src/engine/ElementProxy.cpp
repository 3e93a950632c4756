#include "engine/ElementProxy.h"

namespace oxa
{
ElementProxy::ElementProxy(const String& pattern) : Element(String("ElementProxy"), pattern) {}

void ElementProxy::setMatches(const std::vector<Element*>& matches)
{
    if (matches == matches_)
        return;
    matches_ = matches;
    matchesChanged(this);
}

uint32_t ElementProxy::mapParameterId(uint32_t id) const
{
    Element* e = first();
    return e != nullptr ? e->mapParameterId(id) : id;
}

uint32_t ElementProxy::parameterId(const char* name) const
{
    Element* e = first();
    return e != nullptr ? e->parameterId(name) : 0;
}

void ElementProxy::setStringParameter(uint32_t id, const String& value, bool deferred)
{
    for (Element* e : matches_)
        e->setStringParameter(id, value, deferred);
}
void ElementProxy::setIntParameter(uint32_t id, int value, bool deferred)
{
    for (Element* e : matches_)
        e->setIntParameter(id, value, deferred);
}
void ElementProxy::setBoolParameter(uint32_t id, bool value, bool deferred)
{
    for (Element* e : matches_)
        e->setBoolParameter(id, value, deferred);
}
void ElementProxy::setFloatParameter(uint32_t id, float value, bool deferred)
{
    for (Element* e : matches_)
        e->setFloatParameter(id, value, deferred);
}

namespace
{
template <typename T, typename Read>
T readFirst(Element* e, bool* error, Read read)
{
    if (e == nullptr)
    {
        if (error != nullptr)
            *error = true;
        return T();
    }
    return read(*e);
}
} // namespace

float ElementProxy::floatParameter(uint32_t id, bool* error) const
{
    return readFirst<float>(first(), error, [&](Element& e) { return e.floatParameter(id, error); });
}
bool ElementProxy::boolParameter(uint32_t id, bool* error) const
{
    return readFirst<bool>(first(), error, [&](Element& e) { return e.boolParameter(id, error); });
}
int ElementProxy::intParameter(uint32_t id, bool* error) const
{
    return readFirst<int>(first(), error, [&](Element& e) { return e.intParameter(id, error); });
}
String ElementProxy::stringParameter(uint32_t id, bool* error) const
{
    return readFirst<String>(first(), error, [&](Element& e) { return e.stringParameter(id, error); });
}

ParameterInfo<float>* ElementProxy::findFloatInfo(uint32_t id) const
{
    return first() != nullptr ? first()->findFloatInfo(id) : nullptr;
}
ParameterInfo<bool>* ElementProxy::findBoolInfo(uint32_t id) const
{
    return first() != nullptr ? first()->findBoolInfo(id) : nullptr;
}
ParameterInfo<int>* ElementProxy::findIntInfo(uint32_t id) const
{
    return first() != nullptr ? first()->findIntInfo(id) : nullptr;
}
ParameterInfo<String>* ElementProxy::findStringInfo(uint32_t id) const
{
    return first() != nullptr ? first()->findStringInfo(id) : nullptr;
}
} // namespace oxa
