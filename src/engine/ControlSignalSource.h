#pragma once
// A processing element that makes one control value for each 32-sample control block.
// Connections read those values while their target element updates its state.

#include "engine/ProcessingElement.h"

#include <vector>

namespace oxa
{
class ControlSignalSourceState : public ProcessingElementState
{
public:
    using ProcessingElementState::ProcessingElementState;
    std::unique_ptr<ElementState> clone(StatePool*) const override
    {
        return std::make_unique<ControlSignalSourceState>(*this);
    }
    /** Sizes the value table for blocks of up to `blockSize` samples. Not on the audio thread. */
    void prepare(double sampleRate, int blockSize) override;

    /** Value of control block `index` of the last rendered block; the last one holds beyond. */
    float valueAt(uint32_t index) const
    {
        if (valueCount == 0)
            return lastValue;
        return values[index < valueCount ? index : valueCount - 1];
    }

    std::vector<float> values;
    uint32_t valueCount = 0;
    float lastValue = 0.0f;
    uint64_t renderedBlock = 0; // the context's block counter of the last render
};

class ControlSignalSource : public ProcessingElement
{
public:
    ControlSignalSource(const String& typeName, const String& name);

    /** Renders once per host block: a connection may pull the values before the
        element that owns the source gets to render it, and the second call is free. */
    void render(RenderContext& context, uint32_t numSamples) override;

    /** The state the values of this source are read from in the current context. */
    const ControlSignalSourceState* valuesFor(RenderContext& context);

protected:
    /** The value of one control block of `numSamples` (1 to 32) samples. The base holds the last value. */
    virtual float computeValue(RenderContext& context, ControlSignalSourceState& state, uint32_t numSamples);
};
} // namespace oxa
