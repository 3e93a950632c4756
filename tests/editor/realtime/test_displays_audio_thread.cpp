// With every live road to the window open (the monitor stream, the flange
// position, the output levels) and the window's side reading them between
// blocks, the audio thread still allocates nothing. Every allocation function of
// the program is replaced by a counting one, armed only around processBlock.
#include "engine/EngineProxy.h"
#include "plugin/FluxDeckPlugin.h"
#include "tape/FluxDeckProcessor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <vector>

namespace
{
std::atomic<bool> armed {false};
std::atomic<long> allocations {0};

void* counted(std::size_t size)
{
    if (armed.load(std::memory_order_relaxed))
        allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size == 0 ? 1 : size))
        return p;
    throw std::bad_alloc();
}
} // namespace

void* operator new(std::size_t size) { return counted(size); }
void* operator new[](std::size_t size) { return counted(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size == 0 ? 1 : size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size == 0 ? 1 : size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

namespace oxa
{
TEST(DisplayFeeds, PublishingForThePicturesAllocatesNothingOnTheAudioThread)
{
    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 512);
    auto* processor = dynamic_cast<FluxDeckProcessor*>(plugin.getProxy()->currentElement(String("/FluxDeck")));
    ASSERT_NE(processor, nullptr);
    auto monitor = processor->getMonitor();
    ASSERT_GT(monitor->capacity(), 0u);
    processor->setBoolParameter(FluxDeckProcessor::ids().applyTransport, true);
    processor->setFloatParameter(FluxDeckProcessor::ids().wowMod, 0.5f);

    juce::AudioBuffer<float> buffer(2, 512);
    juce::MidiBuffer midi;
    juce::Random random(3);
    std::vector<float> drained(480);
    long total = 0;
    float loudest = 0.0f;
    std::uint32_t traced = 0;
    for (int block = 0; block < 300; ++block)
    {
        for (int c = 0; c < 2; ++c)
            for (int i = 0; i < 512; ++i)
                buffer.setSample(c, i, random.nextFloat() - 0.5f);
        allocations = 0;
        armed = true;
        plugin.processBlock(buffer, midi);
        armed = false;
        total += allocations.load();

        // The window's side, as its timers would between blocks.
        loudest = std::max({loudest, processor->outputLevels.take(0), processor->outputLevels.take(1)});
        (void) processor->flangePosition.load();
        while (monitor->available() >= drained.size())
            traced += monitor->read(drained.data(), static_cast<std::uint32_t>(drained.size()));
    }
    EXPECT_EQ(total, 0);
    EXPECT_GT(loudest, 0.01f) << "levels were published";
    EXPECT_GT(traced, 100000u) << "the monitor carried the speed trace";
}
} // namespace oxa
