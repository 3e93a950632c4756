#pragma once
// An element that reworks the events of one block before the processing element
// that owns it hears them: transposing notes, filtering channels, remapping values.

#include "element/Element.h"
#include "engine/EngineEvent.h"

#include <cstdint>

namespace oxa
{
class RenderContext;

class EventProcessor : public Element
{
public:
    EventProcessor(const String& typeName, const String& name);
    ~EventProcessor() override;

    /** Works on `events` in place, on the audio thread, before the owner's handleEvents.
        Events may be rewritten, reordered or dropped; new ones may be appended only while
        size() is below capacity(), so the list never allocates. The owner's own state
        lookup gives this element's render state: `context.stateFor(*this)`. Prepared
        like any element, by its owner: `prepare` sizes both states for the block size. */
    virtual void processEvents(RenderContext& context, EventList& events, uint32_t numSamples) = 0;
};
} // namespace oxa
