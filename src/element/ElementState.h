#pragma once
// The run-time data a render works on. Each element type pairs with a subclass.

#include <cstdint>
#include <memory>

namespace oxa
{
class Element;

/** Where cloned states come from; null means the ordinary heap. */
class StatePool;

class ElementState
{
public:
    enum Flags : uint8_t
    {
        IsFresh = 1,
        NeedsFullUpdate = 2
    };

    explicit ElementState(Element* owner) : owner(owner) {}
    ElementState(const ElementState&) = default;
    ElementState& operator=(const ElementState&) = default;
    virtual ~ElementState() = default;

    virtual void prepare(double sampleRate, int blockSize) {}
    virtual void update(int a, int b, int c) {}
    /** A copy of this state. Subclasses return their own type; the base copies its fields. */
    virtual std::unique_ptr<ElementState> clone(StatePool* pool) const { return std::make_unique<ElementState>(*this); }
    /** Clears run-time history for a new sample rate or block size. */
    virtual void reset(double sampleRate, int blockSize) {}

    bool isFresh() const { return (flags & IsFresh) != 0; }
    bool needsFullUpdate() const { return (flags & NeedsFullUpdate) != 0; }
    void setFresh(bool on) { flags = static_cast<uint8_t>(on ? (flags | IsFresh) : (flags & ~IsFresh)); }
    void setNeedsFullUpdate(bool on)
    {
        flags = static_cast<uint8_t>(on ? (flags | NeedsFullUpdate) : (flags & ~NeedsFullUpdate));
    }

    Element* owner;
    uint16_t updateCounter = 0;
    uint8_t flags = IsFresh;
};
} // namespace oxa
