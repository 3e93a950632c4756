#include "editor/displays/ProcessorLink.h"

#include "tape/FluxDeckProcessor.h"

namespace oxa
{
ProcessorLink::ProcessorLink(EngineProxy* proxy, const String& elementPath, std::function<void(bool)> bound)
    : SimpleElementView(proxy, elementPath), onBound(std::move(bound))
{
    watch(elementPath);
}

ProcessorLink::~ProcessorLink()
{
    stopWatching();
}

void ProcessorLink::elementChanged(const String&)
{
    processor.reset();
    if (Element* e = getElement())
        if (dynamic_cast<FluxDeckProcessor*>(e) != nullptr)
            if (auto owned = e->weak_from_this().lock()) // an element not owned by a shared pointer stays unread
                processor = std::static_pointer_cast<FluxDeckProcessor>(owned);
    if (onBound)
        onBound(!processor.expired());
}
} // namespace oxa
