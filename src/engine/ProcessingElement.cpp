#include "engine/ProcessingElement.h"

#include <algorithm>
#include "element/ElementParamEnvelope.h"
#include "element/ParameterRegistry.h"
#include "engine/EnvelopeRunner.h"

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

void ProcessingElement::prepareToRender()
{
    if (bus(0) != nullptr || buses.empty())
        Element::prepareToRender();
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

void ProcessingElement::forwardEventsToChildren(RenderContext& context, EventList& events, uint32_t numSamples)
{
    for (const auto& child : children())
        if (auto* pe = dynamic_cast<ProcessingElement*>(child.get()); pe != nullptr && pe->hasBehaviour(receivesEvents))
            pe->processEvents(context, events, numSamples);
}

void ProcessingElement::processEvents(RenderContext& context, EventList& events, uint32_t numSamples)
{
    if (isBypassed())
        return;

    const bool ringEmpty = ringRead.load(std::memory_order_acquire) == ringWrite.load(std::memory_order_acquire);
    if (ringEmpty && eventProcessors.empty() && !hasBehaviour(filtersEvents))
    {
        handleEvents(context, events, numSamples);
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
    handleEvents(context, workingEvents, numSamples);
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
} // namespace oxa
