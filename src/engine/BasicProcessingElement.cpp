#include "engine/BasicProcessingElement.h"

#include <algorithm>

namespace oxa
{
void BasicProcessingElement::prepareToRender()
{
    ProcessingElement::prepareToRender();
    tailUnknown = true;
    silentSamples = 0;
    tailPassed = true;
}

void BasicProcessingElement::setBus(uint32_t index, AudioBus* bus)
{
    ProcessingElement::setBus(index, bus);
    if (index != 0)
        return;
    mainBus = bus;
    layoutCode = bus != nullptr ? bus->layoutCode : 0;
    channelCount_ = bus != nullptr ? bus->channelCount() : 0;
}

void BasicProcessingElement::renderAudio(RenderContext& context, uint32_t numSamples, ElementState* state)
{
    if (mainBus == nullptr)
        return;
    auto* ps = static_cast<ProcessingElementState*>(state);
    const bool inputWasSilent = mainBus->isSilent();

    if (inputWasSilent)
    {
        if (tailUnknown)
        {
            tailLength = getTailSamples();
            tailUnknown = false;
        }
        else if (silentSamples == 0)
            tailLength = getTailSamples();

        if (tailLength == -1)
        {
            silentSamples += numSamples;
            tailPassed = false;
        }
        else
        {
            if (!tailPassed && silentSamples >= (uint64_t) tailLength)
                tailPassed = true;
            silentSamples += numSamples;
            if (tailPassed)
            {
                if (state->isFresh())
                    processSilence(context, state, numSamples);
                else
                {
                    state->setFresh(true);
                    for (uint32_t i = 0, offset = 0; offset < numSamples; ++i, offset += controlBlockSize)
                    {
                        applyControlBlock(context, state, i);
                        processSilence(context, state, std::min(numSamples - offset, controlBlockSize));
                    }
                }
                return;
            }
        }
    }
    else
    {
        silentSamples = 0;
        tailPassed = false;
    }

    ps->controlOffset = 0;
    float* const* channels = mainBus->getChannels();

    if (state->isFresh())
    {
        processAudio(context, state, numSamples, channels, &inputWasSilent);
        return;
    }

    state->setFresh(true);
    float* table[HostChannelLimit];
    const uint32_t n = std::min<uint32_t>(channelCount_, HostChannelLimit);
    for (uint32_t i = 0, offset = 0; offset < numSamples; ++i, offset += controlBlockSize)
    {
        for (uint32_t c = 0; c < n; ++c)
            table[c] = channels[c] + ps->controlOffset;
        applyControlBlock(context, state, i);
        processAudio(context, state, std::min(numSamples - offset, controlBlockSize), table, &inputWasSilent);
        ps->controlOffset += controlBlockSize;
    }
}
} // namespace oxa
