#pragma once
// An element that takes part in rendering: buses, events, and a render call
// with parameter updates applied at the head of each block.

#include "element/Element.h"
#include "engine/AudioBus.h"
#include "engine/EngineEvent.h"
#include "engine/RenderContext.h"

#include <atomic>
#include <memory>
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

    /** Appends "ControlSignalSources" and "EventProcessors" after the base's children,
        each only when it has an entry to write. */
    tinyxml2::XMLElement* saveXml(tinyxml2::XMLElement* parent, SaveOptions& options) override;
    /** Drops the current sources and event processors, loads the base, then reads them back. */
    bool loadXml(const tinyxml2::XMLElement* node, SaveOptions& options, int version) override;

    // Sources and event processors are children of this element as well: connections
    // find their source by name from here outwards, errors climb from them, and the
    // child list owns them. The two vectors only keep order for rendering, and a null
    // event processor slot lives in the vector alone. Structure changes: message thread,
    // under lock() (taken here when `takeLock` is set), never while the audio side renders.

    /** Adds `source` as a child, rendered before this element from the next block on. Null is ignored. */
    void addControlSource(const std::shared_ptr<ControlSignalSource>& source, bool takeLock = true);
    /** False when `source` is not one of this element's sources. */
    bool removeControlSource(ControlSignalSource* source, bool takeLock = true);
    void clearControlSources(bool takeLock = true);
    size_t controlSourceCount() const { return controlSources.size(); }
    ControlSignalSource* controlSource(size_t index) const
    {
        return index < controlSources.size() ? controlSources[index] : nullptr;
    }

    /** Appends a slot; a null processor keeps an empty slot that is skipped when rendering. */
    void addEventProcessor(const std::shared_ptr<EventProcessor>& processor, bool takeLock = true);
    /** Removes the first slot holding `processor` (null: the first empty slot). */
    bool removeEventProcessor(EventProcessor* processor, bool takeLock = true);
    void clearEventProcessors(bool takeLock = true);
    size_t eventProcessorCount() const { return eventProcessors.size(); }
    EventProcessor* eventProcessor(size_t index) const
    {
        return index < eventProcessors.size() ? eventProcessors[index] : nullptr;
    }

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
    /** Hands the events to every child that wants them, except this element's control
        sources: they hear the events through their own path. */
    virtual void forwardEventsToChildren(RenderContext& context, EventList& events, uint32_t numSamples);
    /** Hands the events to each control source that has `receivesEvents`. */
    void forwardEventsToControlSources(RenderContext& context, EventList& events, uint32_t numSamples);
    /** Applies each source's pending writes and renders the monophonic ones. */
    void renderControlSources(RenderContext& context, uint32_t numSamples);

    std::atomic<uint32_t> ringRead { 0 };
    std::atomic<uint32_t> ringWrite { 0 };
    std::vector<EngineEvent> ring;
    std::vector<EventProcessor*> eventProcessors;
    std::vector<ControlSignalSource*> controlSources;
    std::vector<AudioBus*> buses;
    uint8_t behaviour = constructed;
    EventList workingEvents; // reserved up front: merging the ring never allocates

private:
    bool isOwnControlSource(const Element* element) const;
    void loadSourcesAndProcessors(const tinyxml2::XMLElement* node, SaveOptions& options, int version);
    void loadFlatSourcesAndProcessors(const tinyxml2::XMLElement* node, SaveOptions& options, int version);

    bool bypassValue(const ElementState& state) const;
    void setBypassValue(ElementState& state, bool value);
};
} // namespace oxa
