#include "engine/ElementView.h"
#include "element/ParameterRegistry.h"
#include "engine/EngineProxy.h"

namespace oxa
{
void SimpleElementView::watch(const String& path)
{
    stopWatching();
    elementPath = path;
    if (proxy == nullptr)
        return;
    watching = true;
    proxy->addElementBoundListener(this, path, [this](Element* e) {
        element = e;
        elementChanged(elementPath);
    });
}

void SimpleElementView::stopWatching()
{
    if (watching && proxy != nullptr)
        proxy->removeElementBoundListener(this, elementPath);
    watching = false;
    element = nullptr;
}

void SimpleElementView::detachFromProxy()
{
    stopWatching();
    proxy = nullptr;
}

void SimpleElementParameterView::setParameter(const String& path, unsigned id)
{
    dropSubscription();
    elementPath = path;
    askedId = id;
    if (proxy == nullptr)
        return;
    subscribed = true;
    proxy->addElementBoundListener(this, path, [this](Element* e) { elementBound(e); });
    proxy->addParameterChangeListener(this, path, id, [this](Element* e, unsigned changedId) {
        if (e != nullptr && e == element)
            notifyAll(elementPath, e, changedId);
    });
}

void SimpleElementParameterView::elementBound(Element* e)
{
    element = e;
    parameterKind = ParameterKind::Invalid;
    mappedId = askedId;
    if (e != nullptr)
    {
        const ParameterRegistry& registry = ParameterRegistry::instance();
        if (registry.kindOf(askedId) == ParameterKind::Alias)
            mappedId = e->mapParameterId(askedId);
        if (ParameterInfoBase* info = e->findInfo(mappedId))
            parameterKind = info->kind();
    }
    elementChanged(elementPath);
    if (e != nullptr)
        notifyAll(elementPath, e, askedId);
}

void SimpleElementParameterView::notifyAll(const String& path, Element* e, unsigned id)
{
    if (e == nullptr)
        return;
    switch (parameterKind)
    {
        case ParameterKind::Float: floatChanged(path, id, e->floatParameter(mappedId)); break;
        case ParameterKind::Int: intChanged(path, id, e->intParameter(mappedId)); break;
        case ParameterKind::Bool: boolChanged(path, id, e->boolParameter(mappedId)); break;
        case ParameterKind::String: stringChanged(path, id, e->stringParameter(mappedId)); break;
        default: break;
    }
}

void SimpleElementParameterView::dropSubscription()
{
    if (subscribed && proxy != nullptr)
    {
        proxy->removeElementBoundListener(this, elementPath);
        proxy->removeParameterChangeListener(this, elementPath, askedId);
    }
    subscribed = false;
    element = nullptr;
    parameterKind = ParameterKind::Invalid;
}

void SimpleElementParameterView::detachFromProxy()
{
    dropSubscription();
    proxy = nullptr;
}
} // namespace oxa
