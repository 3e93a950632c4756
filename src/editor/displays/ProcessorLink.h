#pragma once
// The road from a picture to the live values the processor publishes (flange
// position, output levels). It follows the element at a path through the proxy
// and keeps only a weak reference, so a state load that replaces the element
// never leaves a picture reading freed memory. Message thread only.

#include "engine/ElementView.h"

#include <functional>
#include <memory>

namespace oxa
{
class FluxDeckProcessor;

class ProcessorLink : private SimpleElementView
{
public:
    // bound(true) when a processor appears at the path, bound(false) when it goes.
    ProcessorLink(EngineProxy* proxy, const String& elementPath, std::function<void(bool)> bound = {});
    ~ProcessorLink() override;

    // The processor for the length of one read, or null.
    std::shared_ptr<FluxDeckProcessor> lock() const { return processor.lock(); }

    ProcessorLink(const ProcessorLink&) = delete;
    ProcessorLink& operator=(const ProcessorLink&) = delete;

private:
    void elementChanged(const String& path) override;

    std::weak_ptr<FluxDeckProcessor> processor;
    std::function<void(bool)> onBound;
};
} // namespace oxa
