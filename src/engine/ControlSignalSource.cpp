#include "engine/ControlSignalSource.h"

#include <algorithm>

namespace oxa
{
void ControlSignalSourceState::prepare(double, int blockSize)
{
    const uint32_t blocks = (static_cast<uint32_t>(std::max(blockSize, 1)) + 31) >> 5;
    values.assign(blocks + 1, lastValue);
    valueCount = 0;
}

ControlSignalSource::ControlSignalSource(const String& typeName, const String& name)
    : ProcessingElement(typeName, name)
{
    setStates(std::make_unique<ControlSignalSourceState>(this), std::make_unique<ControlSignalSourceState>(this));
}

float ControlSignalSource::computeValue(RenderContext&, ControlSignalSourceState& state, uint32_t)
{
    return state.lastValue;
}

void ControlSignalSource::render(RenderContext& context, uint32_t numSamples)
{
    auto* state = static_cast<ControlSignalSourceState*>(context.stateFor(*this));
    if (state == nullptr || state->renderedBlock == context.blockCounter)
        return;
    state->renderedBlock = context.blockCounter;

    const ScratchArena::Mark arenaMark = context.arena1.mark();
    updateState(context, state, numSamples);

    // A block longer than prepared keeps its last value for the blocks that do not fit.
    const uint32_t blocks = (numSamples + 31) >> 5;
    const uint32_t stored = std::min<uint32_t>(blocks, static_cast<uint32_t>(state->values.size()));
    uint32_t count = 0;
    for (uint32_t i = 0, offset = 0; offset < numSamples; ++i, offset += controlBlockSize)
    {
        if (!state->isFresh())
            applyControlBlock(context, state, i);
        state->controlOffset = offset;
        const float v = computeValue(context, *state, std::min(numSamples - offset, controlBlockSize));
        state->lastValue = v;
        if (i < stored)
            state->values[count++] = v;
    }
    state->valueCount = count;
    state->setFresh(true);
    context.arena1.restore(arenaMark);
}

const ControlSignalSourceState* ControlSignalSource::valuesFor(RenderContext& context)
{
    return static_cast<const ControlSignalSourceState*>(context.stateFor(*this));
}
} // namespace oxa
