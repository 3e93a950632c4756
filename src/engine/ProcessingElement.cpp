#include "engine/ProcessingElement.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <tinyxml2.h>
#include "element/ElementFactory.h"
#include "element/ElementParamEnvelope.h"
#include "element/ElementPersistence.h"
#include "element/ParameterRegistry.h"
#include "engine/ControlSignalSource.h"
#include "engine/EnvelopeRunner.h"
#include "engine/EventProcessor.h"

namespace oxa
{
uint32_t ProcessingElement::syncToHostId()
{
    static const uint32_t id = [] {
        (void) Element::commonIds(); // the base's ids come first
        ParameterDescription<bool> description("SyncToHost", true);
        description.auxiliaryText = String("Synchronize to host tempo"); // the host shows the name itself
        return ParameterRegistry::instance().registerBool(description);
    }();
    return id;
}

ProcessingElement::ProcessingElement(const String& typeName, const String& name)
    : Element(typeName, name), defaultName(name)
{
    (void) syncToHostId();
    setStates(std::make_unique<ProcessingElementState>(this), std::make_unique<ProcessingElementState>(this));
    addParameters({}, {}, { new ParameterInfo<bool>(commonIds().bypass, this, &ProcessingElement::bypassValue,
                                                    &ProcessingElement::setBypassValue) });
    workingEvents.reserve(1024 + 64);
}

ProcessingElement::~ProcessingElement() = default;

bool ProcessingElement::bypassValue(const ElementState& state) const
{
    return static_cast<const ProcessingElementState&>(state).bypass;
}

void ProcessingElement::setBypassValue(ElementState& state, bool value)
{
    static_cast<ProcessingElementState&>(state).bypass = value;
}

bool ProcessingElement::isBypassed() const
{
    const auto* state = static_cast<const ProcessingElementState*>(mainState());
    return state != nullptr && state->bypass;
}

namespace
{
/** Prepares an owned element unless the child walk of prepare() already did it with these settings. */
void prepareLike(Element& owned, const Element& owner)
{
    if (owned.isPrepared() && owned.sampleRate() == owner.sampleRate() && owned.maxBlockSize() == owner.maxBlockSize())
        return;
    owned.prepare(owner.sampleRate(), owner.maxBlockSize());
}

} // namespace

void ProcessingElement::prepareToRender()
{
    if (bus(0) != nullptr || buses.empty())
        Element::prepareToRender();
    if (isPrepared())
    {
        for (ControlSignalSource* source : controlSources)
            prepareLike(*source, *this);
        for (EventProcessor* processor : eventProcessors)
            if (processor != nullptr)
                prepareLike(*processor, *this);
    }
    for (AudioBus* b : buses)
        if (b != nullptr && b->blockLength < maxBlockSize())
            b->blockLength = maxBlockSize();
}

void ProcessingElement::setBus(uint32_t index, AudioBus* newBus)
{
    if (buses.size() < index + 1)
        buses.resize(index + 1, nullptr);
    if (index == 0)
    {
        if (buses[0] != nullptr && buses[0]->connectionCount > 0)
            --buses[0]->connectionCount;
        if (newBus != nullptr)
            ++newBus->connectionCount;
    }
    buses[index] = newBus;
    busChanged(this, index);
    if (newBus != nullptr)
    {
        if (mainState() != nullptr)
            mainState()->reset(sampleRate(), maxBlockSize());
        if (secondState() != nullptr)
            secondState()->reset(sampleRate(), maxBlockSize());
    }
}

void ProcessingElement::setEventRingCapacity(size_t capacity)
{
    ring.assign(capacity, EngineEvent {});
    ringRead.store(0);
    ringWrite.store(0);
}

void ProcessingElement::pushToRing(const EngineEvent& event)
{
    if (ring.empty())
        return;
    const uint32_t write = ringWrite.load(std::memory_order_relaxed);
    ring[write % ring.size()] = event;
    ringWrite.store(write + 1, std::memory_order_release);
}

bool ProcessingElement::isOwnControlSource(const Element* element) const
{
    return std::find(controlSources.begin(), controlSources.end(), element) != controlSources.end();
}

void ProcessingElement::forwardEventsToChildren(RenderContext& context, EventList& events, uint32_t numSamples)
{
    for (const auto& child : children())
        if (auto* pe = dynamic_cast<ProcessingElement*>(child.get());
            pe != nullptr && pe->hasBehaviour(receivesEvents) && !isOwnControlSource(pe))
            pe->processEvents(context, events, numSamples);
}

void ProcessingElement::forwardEventsToControlSources(RenderContext& context, EventList& events, uint32_t numSamples)
{
    for (ControlSignalSource* source : controlSources)
        if (source->hasBehaviour(receivesEvents))
            source->processEvents(context, events, numSamples);
}

void ProcessingElement::renderControlSources(RenderContext& context, uint32_t numSamples)
{
    for (ControlSignalSource* source : controlSources)
    {
        source->applyPendingParameters(source->mainState());
        // a polyphonic source renders per voice, from the voice's own path
        if (!source->isPolyphonic())
            source->render(context, numSamples);
    }
}

void ProcessingElement::processEvents(RenderContext& context, EventList& events, uint32_t numSamples)
{
    if (isBypassed())
        return;

    const bool ringEmpty = ringRead.load(std::memory_order_acquire) == ringWrite.load(std::memory_order_acquire);
    if (ringEmpty && eventProcessors.empty() && !hasBehaviour(filtersEvents))
    {
        handleEvents(context, events, numSamples);
        forwardEventsToControlSources(context, events, numSamples);
        forwardEventsToChildren(context, events, numSamples);
        return;
    }

    workingEvents.clear();
    for (const EngineEvent& e : events)
    {
        EngineEvent copy = e;
        if (!hasBehaviour(filtersEvents) || filterEvent(copy))
            workingEvents.push_back(copy);
    }

    // Drain the ring; after an overflow only the newest records are still there.
    uint32_t read = ringRead.load(std::memory_order_relaxed);
    const uint32_t write = ringWrite.load(std::memory_order_acquire);
    if (write - read > ring.size())
        read = write - (uint32_t) ring.size();
    for (; read != write; ++read)
    {
        EngineEvent copy = ring[read % ring.size()];
        if (!hasBehaviour(filtersEvents) || filterEvent(copy))
            workingEvents.push_back(copy);
    }
    ringRead.store(read, std::memory_order_release);

    workingEvents.sortByOffset();
    for (EventProcessor* processor : eventProcessors)
        if (processor != nullptr)
            processor->processEvents(context, workingEvents, numSamples);
    handleEvents(context, workingEvents, numSamples);
    forwardEventsToControlSources(context, workingEvents, numSamples);
    forwardEventsToChildren(context, workingEvents, numSamples);
}

void ProcessingElement::handleEvents(RenderContext& context, EventList& events, uint32_t numSamples)
{
    for (const EngineEvent& e : events)
        handleEvent(e);
}

void ProcessingElement::handleEvent(const EngineEvent& event)
{
    if (event.target != nullptr && event.target != this)
        return;
    if (event.data2 != 0)
        return;
    switch (event.type)
    {
        case EventType::setFloat:
            if (findFloatInfo(event.data1) != nullptr)
                setFloatParameter(event.data1, event.value.floatValue);
            break;
        case EventType::setInt:
            if (findIntInfo(event.data1) != nullptr)
                setIntParameter(event.data1, event.value.intValue);
            break;
        case EventType::setBool:
            if (findBoolInfo(event.data1) != nullptr)
                setBoolParameter(event.data1, event.value.boolValue != 0);
            break;
        default:
            break;
    }
}

void ProcessingElement::updateState(RenderContext& context, ElementState* state, uint32_t numSamples)
{
    applyPendingParameters(mainState());

    bool fresh = true;
    const bool sameCounter = state->updateCounter == updateCounter();
    state->updateCounter = updateCounter();
    if (sameCounter && !state->needsFullUpdate())
    {
        for (ElementParamEnvelope* envelope : connectedEnvelopes())
            fresh = runEnvelope(*envelope, context, numSamples, *state) && fresh;
    }
    else
    {
        state->setNeedsFullUpdate(false);
        for (ElementParamEnvelope* envelope : envelopes())
            fresh = runEnvelope(*envelope, context, numSamples, *state) && fresh;
    }
    state->setFresh(fresh);
}

void ProcessingElement::render(RenderContext& context, uint32_t numSamples)
{
    const ScratchArena::Mark arenaMark = context.arena1.mark();

    ElementState* state = context.stateFor(*this);
    updateState(context, state, numSamples);
    renderControlSources(context, numSamples);

    const bool bypassed = static_cast<ProcessingElementState*>(state)->bypass;
    if (!bypassed || rendersWhenBypassed())
    {
        renderAudio(context, numSamples, state);
    }
    else if (!state->isFresh())
    {
        // Leave the parameters at their last values of the block.
        state->setFresh(true);
        const uint32_t last = numSamples == 0 ? 0 : ((numSamples + 31) >> 5) - 1;
        applyControlBlock(context, state, last);
    }

    context.arena1.restore(arenaMark);
}

void ProcessingElement::renderAudio(RenderContext& context, uint32_t numSamples, ElementState* state)
{
    auto* ps = static_cast<ProcessingElementState*>(state);
    ps->controlOffset = 0;
    if (state->isFresh())
    {
        renderControlBlock(context, state, numSamples);
        return;
    }
    state->setFresh(true);
    for (uint32_t i = 0, offset = 0; offset < numSamples; ++i, offset += controlBlockSize)
    {
        applyControlBlock(context, state, i);
        renderControlBlock(context, state, std::min(numSamples - offset, controlBlockSize));
        ps->controlOffset += controlBlockSize;
    }
}

void ProcessingElement::applyControlBlock(RenderContext& context, ElementState* state, uint32_t index)
{
    for (ElementParamEnvelope* envelope : connectedEnvelopes())
        applyEnvelopeValue(*envelope, *this, state, index);
}

// ---- control sources and event processors -------------------------------------

void ProcessingElement::addControlSource(const std::shared_ptr<ControlSignalSource>& source, bool takeLock)
{
    if (!source)
        return;
    const auto guard = lockIf(takeLock);
    if (isOwnControlSource(source.get()))
        return;
    if (source->parent() != this)
        addChild(source);
    if (isPrepared())
        prepareLike(*source, *this);
    controlSources.push_back(source.get());
    controlSourceAdded(this, source.get());
}

bool ProcessingElement::removeControlSource(ControlSignalSource* source, bool takeLock)
{
    const auto guard = lockIf(takeLock);
    auto it = std::find(controlSources.begin(), controlSources.end(), source);
    if (source == nullptr || it == controlSources.end())
        return false;
    std::shared_ptr<Element> keep = source->shared_from_this(); // alive until listeners were told
    controlSources.erase(it);
    controlSourceRemoved(this, source);
    if (source->parent() == this)
        removeChild(source);
    return true;
}

void ProcessingElement::clearControlSources(bool takeLock)
{
    const auto guard = lockIf(takeLock);
    while (!controlSources.empty())
        removeControlSource(controlSources.back(), false);
}

void ProcessingElement::addEventProcessor(const std::shared_ptr<EventProcessor>& processor, bool takeLock)
{
    const auto guard = lockIf(takeLock);
    if (processor != nullptr)
    {
        if (std::find(eventProcessors.begin(), eventProcessors.end(), processor.get()) != eventProcessors.end())
            return;
        if (processor->parent() != this)
            addChild(processor);
        if (isPrepared())
            prepareLike(*processor, *this);
    }
    eventProcessors.push_back(processor.get());
    eventProcessorAdded(this, processor.get());
}

bool ProcessingElement::removeEventProcessor(EventProcessor* processor, bool takeLock)
{
    const auto guard = lockIf(takeLock);
    auto it = std::find(eventProcessors.begin(), eventProcessors.end(), processor);
    if (it == eventProcessors.end())
        return false;
    std::shared_ptr<Element> keep = processor != nullptr ? processor->shared_from_this() : nullptr;
    eventProcessors.erase(it);
    eventProcessorRemoved(this, processor);
    if (processor != nullptr && processor->parent() == this)
        removeChild(processor);
    return true;
}

void ProcessingElement::clearEventProcessors(bool takeLock)
{
    const auto guard = lockIf(takeLock);
    while (!eventProcessors.empty())
        removeEventProcessor(eventProcessors.back(), false);
}

// ---- persistence ----------------------------------------------------------------

namespace
{
/** Keeps a group that got children, frees one that stayed empty. */
void keepIfFilled(tinyxml2::XMLElement* node, tinyxml2::XMLElement* group)
{
    if (group->FirstChild() != nullptr)
        node->InsertEndChild(group);
    else
        node->GetDocument()->DeleteNode(group);
}

constexpr const char* emptyProcessorTag = "EmptyEventProcessor";
} // namespace

tinyxml2::XMLElement* ProcessingElement::saveXml(tinyxml2::XMLElement* parent, SaveOptions& options)
{
    tinyxml2::XMLElement* node = Element::saveXml(parent, options);
    if (node == nullptr)
        return nullptr;
    // The old flat form has no groups and no way to mark an empty slot.
    const bool flat = options.legacyLayout != 0;

    if (!controlSources.empty())
    {
        tinyxml2::XMLElement* group = flat ? node : node->GetDocument()->NewElement("ControlSignalSources");
        for (ControlSignalSource* source : controlSources)
            if (source->isSaved())
                source->saveXml(group, options);
        if (!flat)
            keepIfFilled(node, group);
    }

    if (!eventProcessors.empty())
    {
        tinyxml2::XMLElement* group = flat ? node : node->GetDocument()->NewElement("EventProcessors");
        for (EventProcessor* processor : eventProcessors)
        {
            if (processor == nullptr)
            {
                if (!flat)
                    group->InsertNewChildElement(emptyProcessorTag);
            }
            else if (processor->isSaved())
                processor->saveXml(group, options);
        }
        if (!flat)
            keepIfFilled(node, group);
    }
    return node;
}

bool ProcessingElement::loadXml(const tinyxml2::XMLElement* node, SaveOptions& options, int version)
{
    clearControlSources();
    clearEventProcessors();
    const bool loaded = Element::loadXml(node, options, version);
    // the base only fails without a node or when a listener vetoed this element
    if (node == nullptr || (!loaded && options.loadListener != nullptr))
        return loaded;
    if (version == legacyDocumentVersion)
        loadFlatSourcesAndProcessors(node, options, version);
    else
        loadSourcesAndProcessors(node, options, version);
    return loaded;
}

void ProcessingElement::loadSourcesAndProcessors(const tinyxml2::XMLElement* node, SaveOptions& options, int version)
{
    auto& factory = ElementFactory::instance();
    if (const tinyxml2::XMLElement* group = node->FirstChildElement("ControlSignalSources"))
        for (auto* child = group->FirstChildElement(); child != nullptr; child = child->NextSiblingElement())
        {
            auto source = std::dynamic_pointer_cast<ControlSignalSource>(factory.create(String(child->Name())));
            if (source != nullptr && source->loadXml(child, options, version))
                addControlSource(source);
        }

    if (const tinyxml2::XMLElement* group = node->FirstChildElement("EventProcessors"))
        for (auto* child = group->FirstChildElement(); child != nullptr; child = child->NextSiblingElement())
        {
            if (std::strcmp(child->Name(), emptyProcessorTag) == 0)
            {
                addEventProcessor(nullptr);
                continue;
            }
            auto processor = std::dynamic_pointer_cast<EventProcessor>(factory.create(String(child->Name())));
            if (processor != nullptr && processor->loadXml(child, options, version))
                addEventProcessor(processor);
        }
}

void ProcessingElement::loadFlatSourcesAndProcessors(const tinyxml2::XMLElement* node, SaveOptions& options,
                                                     int version)
{
    auto& factory = ElementFactory::instance();
    for (auto* child = node->FirstChildElement(); child != nullptr; child = child->NextSiblingElement())
    {
        if (std::strcmp(child->Name(), "SimpleActivationRule") == 0)
            continue;
        std::shared_ptr<Element> made = factory.create(String(child->Name()));
        if (auto source = std::dynamic_pointer_cast<ControlSignalSource>(made))
        {
            if (source->loadXml(child, options, version))
                addControlSource(source);
        }
        else if (auto processor = std::dynamic_pointer_cast<EventProcessor>(made))
        {
            if (processor->loadXml(child, options, version))
                addEventProcessor(processor);
        }
    }
}
} // namespace oxa
