#pragma once
// An engine that renders two channels of its main bus in blocks, as the plug-in drives it.
// A test's rig adds its elements, then prepares it.
#include "engine/Engine.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace oxa::test
{
/** A note, controller or other event with its two data bytes, at an offset into the block. */
inline EngineEvent engineEvent(uint32_t type, uint32_t data1, uint32_t data2 = 0, uint64_t offset = 0)
{
    EngineEvent e;
    e.type = type;
    e.data1 = data1;
    e.data2 = data2;
    e.sampleOffset = offset;
    return e;
}

struct EngineRenderRig
{
    EngineRenderRig(uint32_t block, float fill) : bus(2, block), left(block, fill), right(block, fill) {}

    void prepare(double sampleRate, uint32_t block)
    {
        engine->prepare(sampleRate, static_cast<int>(block));
        engine->setBus(0, &bus);
        context.setSampleRate(static_cast<float>(sampleRate));
    }

    void render(uint32_t n, bool silent = false)
    {
        float* channels[] = {left.data(), right.data()};
        bus.setChannels(channels);
        if (silent)
            bus.markSilent(n);
        engine->processEvents(context, events, n);
        engine->render(context, n);
        events.clear();
        context.endOfBlock(n);
    }

    AudioBus bus;
    std::vector<float> left, right;
    std::shared_ptr<Engine> engine = std::make_shared<Engine>();
    RenderContext context;
    EventList events;
};
} // namespace oxa::test
