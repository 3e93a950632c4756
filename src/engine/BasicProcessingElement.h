#pragma once
// Base of every insert effect: one main bus rendered in place, tail tracking,
// and 32-sample control blocks while a modulation connection moves a parameter.

#include "engine/ProcessingElement.h"

namespace oxa
{
class BasicProcessingElement : public ProcessingElement
{
public:
    using ProcessingElement::ProcessingElement;

    /** The effect's DSP: read and overwrite `numSamples` of every channel in place. */
    virtual void processAudio(RenderContext& context, ElementState* state, uint32_t numSamples,
                              float* const* channels, const bool* inputWasSilent) = 0;
    /** Called instead of processAudio once the input is silent and the tail has run out. */
    virtual void processSilence(RenderContext& context, ElementState* state, uint32_t numSamples) {}

    void prepareToRender() override;
    void resetTail() override { tailUnknown = true; }
    void setBus(uint32_t index, AudioBus* bus) override;
    void renderAudio(RenderContext& context, uint32_t numSamples, ElementState* state) override;

    uint32_t channelCount() const { return channelCount_; }

    static constexpr uint32_t HostChannelLimit = 32;

protected:
    AudioBus* mainBus = nullptr;
    uint32_t channelCount_ = 0;
    uint32_t layoutCode = 0;
    bool tailPassed = true;
    uint64_t silentSamples = 0;
    int32_t tailLength = -1;
    bool tailUnknown = true;
};
} // namespace oxa
