#pragma once
// An element that takes part in rendering: buses, events, and a render call
// with parameter updates applied at the head of each block.

#include "element/Element.h"
#include "engine/AudioBus.h"
#include "engine/EngineEvent.h"
#include "engine/RenderContext.h"

#include <atomic>
#include <utility>
#include <vector>

namespace oxa
{
class EventProcessor;
class ControlSignalSource;

class ProcessingElementState : public ElementState
{
public:
    using ElementState::ElementState;
    std::unique_ptr<ElementState> clone(StatePool*) const override
    {
        return std::make_unique<ProcessingElementState>(*this);
    }

    uint32_t controlOffset = 0;
    bool bypass = false;
};

class ProcessingElement : public Element
{
public:
    static constexpr uint32_t controlBlockSize = 32;

    enum BehaviourFlags : uint8_t
    {
        filtersEvents = 1,
        receivesEvents = 2,
        noOutputTap = 4,
        constructed = 8
    };

    /** Ids of parameters that processing elements declare. */
    static uint32_t syncToHostId();

    ProcessingElement(const String& typeName, const String& name);
    ~ProcessingElement() override;

    virtual bool rendersWhenBypassed() const { return false; }
    /** -1: the tail never ends. */
    virtual int getTailSamples() { return -1; }
    virtual void resetTail() {}
    virtual void processEvents(RenderContext& context, EventList& events, uint32_t numSamples);
    virtual uint32_t busCount() const { return 1; }
    virtual void busCounts(std::pair<uint32_t, uint32_t>& inputsOutputs) const { inputsOutputs = { 1, 1 }; }
    virtual void setBus(uint32_t index, AudioBus* bus);
    virtual void render(RenderContext& context, uint32_t numSamples);
    virtual void renderHook() {}
    virtual void handleEvent(const EngineEvent& event);
    virtual void handleEvents(RenderContext& context, EventList& events, uint32_t numSamples);
    virtual bool filterEvent(EngineEvent& event) { return true; }
    virtual void renderAudio(RenderContext& context, uint32_t numSamples, ElementState* state);
    virtual void renderControlBlock(RenderContext& context, ElementState* state, uint32_t numSamples) {}

    void prepareToRender() override;

    /** Writes the per-control-block values of connected envelopes into the parameters. */
    void applyControlBlock(RenderContext& context, ElementState* state, uint32_t index);

    /** Applies pending writes and runs the envelopes; sets the state's isFresh. */
    void updateState(RenderContext& context, ElementState* state, uint32_t numSamples);

    /** Sizes the event ring (the engine uses 64). Message thread, before rendering. */
    void setEventRingCapacity(size_t capacity);
    /** Appends to the ring; a full ring loses its oldest record, never the new one. */
    void pushToRing(const EngineEvent& event);
    size_t pendingRingEvents() const { return ringWrite.load() - ringRead.load(); }

    AudioBus* bus(size_t index) const { return index < buses.size() ? buses[index] : nullptr; }
    bool isBypassed() const;
    bool hasBehaviour(uint8_t flag) const { return (behaviour & flag) != 0; }
    void setBehaviour(uint8_t flag, bool on) { behaviour = on ? (behaviour | flag) : (behaviour & ~flag); }

    Signal<ProcessingElement*, EventProcessor*> eventProcessorAdded, eventProcessorRemoved;
    Signal<ProcessingElement*, ControlSignalSource*> controlSourceAdded, controlSourceRemoved;
    Signal<ProcessingElement*, unsigned int> busChanged;
    NameSymbol defaultName;

protected:
    /** Hands the events to every child that wants them. */
    virtual void forwardEventsToChildren(RenderContext& context, EventList& events, uint32_t numSamples);

    std::atomic<uint32_t> ringRead { 0 };
    std::atomic<uint32_t> ringWrite { 0 };
    std::vector<EngineEvent> ring;
    std::vector<EventProcessor*> eventProcessors;
    std::vector<ControlSignalSource*> controlSources;
    std::vector<AudioBus*> buses;
    uint8_t behaviour = constructed;
    EventList workingEvents; // reserved up front: merging the ring never allocates

private:
    bool bypassValue(const ElementState& state) const;
    void setBypassValue(ElementState& state, bool value);
};
} // namespace oxa
