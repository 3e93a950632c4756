// The processor frame as a host drives it, without a host in between.
#include "plugin/FluxDeckPlugin.h"
#include "tape/FluxDeckProcessor.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

using namespace oxa;

// Name, tail, layouts (mono in, stereo out among them) and latencies as a host sees them
// are checked through the built bundle in tests/host, the tree in each wrapper beside the
// standalone's; these are the frame's own workings underneath.
TEST(PluginFrame, ARateOfZeroIsIgnored)
{
    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 256);
    plugin.prepareToPlay(0.0, 512);
    EXPECT_EQ(plugin.getLatencySamples(), 2880);
}

TEST(PluginFrame, HostEventsBecomeEngineEventsAndMidiIsAlwaysClearedAndWaitsForABlockThatRenders)
{
    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 512);
    plugin.enqueueHostEvent(0, 3, 144, 60, 0, 7); // note on, velocity 0
    plugin.enqueueHostEvent(0, 0, 240, 1, 2, 0);  // system message: dropped
    plugin.enqueueHostEvent(0, 0, 176, 7, 100, 3);
    ASSERT_EQ(plugin.pendingEvents().size(), 2u);
    EXPECT_EQ(plugin.pendingEvents()[0].type, EventType::noteOff);
    EXPECT_EQ(plugin.pendingEvents()[0].channel, 3);
    EXPECT_EQ(plugin.pendingEvents()[0].sampleOffset, 7u);
    EXPECT_EQ(plugin.pendingEvents()[1].type, EventType::controller);

    juce::AudioBuffer<float> empty(2, 0);
    juce::MidiBuffer midi;
    midi.addEvent(juce::MidiMessage::noteOn(1, 60, (uint8_t) 100), 0);
    plugin.processBlock(empty, midi);
    EXPECT_TRUE(midi.isEmpty());
    EXPECT_EQ(plugin.pendingEvents().size(), 3u) << "an empty block renders nothing and keeps them";

    // more than the reserved room still renders and leaves nothing behind
    juce::AudioBuffer<float> buffer(2, 512);
    buffer.clear();
    for (int i = 0; i < 1100; ++i)
        midi.addEvent(juce::MidiMessage::controllerEvent(1, 1, i % 128), i % 512);
    plugin.processBlock(buffer, midi);
    EXPECT_TRUE(midi.isEmpty());
    EXPECT_EQ(plugin.pendingEvents().size(), 0u);
}

namespace
{
/** Feeds an impulse at sample `at` through blocks of `block` samples; returns `length` samples of channel 0. */
std::vector<float> impulseResponse(FluxDeckPlugin& plugin, int at, int length, int block,
                                   const std::function<void(int blockIndex)>& beforeBlock = {})
{
    std::vector<float> out;
    juce::AudioBuffer<float> buffer(2, block);
    juce::MidiBuffer midi;
    for (int start = 0, index = 0; start < length; start += block, ++index)
    {
        buffer.clear();
        if (at >= start && at < start + block)
            for (int c = 0; c < 2; ++c)
                buffer.setSample(c, at - start, 1.0f);
        if (beforeBlock)
            beforeBlock(index);
        plugin.processBlock(buffer, midi);
        out.insert(out.end(), buffer.getReadPointer(0), buffer.getReadPointer(0) + block);
    }
    return out;
}
} // namespace

TEST(PluginFrame, BusyRenderLockPassesTheBlockDryAndInTime)
{
    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 32);
    juce::AudioBuffer<float> buffer(2, 32);
    buffer.clear();
    buffer.setSample(0, 0, 1.0f);
    juce::MidiBuffer midi;
    {
        const juce::ScopedLock held(plugin.renderLock());
        std::thread audio([&] { plugin.processBlock(buffer, midi); });
        audio.join();
    }
    EXPECT_EQ(buffer.getMagnitude(0, 32), 0.0f) << "the input is held back by the latency, not passed early";
}

TEST(PluginFrame, BypassGivesTheInputDelayedByTheLatencyAndFadesOverAFewMilliseconds)
{
    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 64);
    const int latency = plugin.getLatencySamples();
    ASSERT_EQ(latency, 2880);
    plugin.getBypassParameter()->setValue(1.0f);
    const int at = 1000; // past the fade
    const auto bypassed = impulseResponse(plugin, at, 4096, 64);
    for (size_t i = 0; i < bypassed.size(); ++i)
        ASSERT_EQ(bypassed[i], i == (size_t) (at + latency) ? 1.0f : 0.0f) << "sample " << i;

    // Back on, a steady input: the output moves from the delayed input to the processed
    // signal in steps of at most one fade step per sample, and is fully processed after.
    plugin.getBypassParameter()->setValue(0.0f);
    juce::AudioBuffer<float> ones(2, 64);
    juce::MidiBuffer midi;
    for (int b = 0; b < 80; ++b) // the delayed input reaches 1 everywhere
    {
        for (int c = 0; c < 2; ++c)
            juce::FloatVectorOperations::fill(ones.getWritePointer(c), 1.0f, 64);
        if (b == 60)
            plugin.getBypassParameter()->setValue(1.0f);
        plugin.processBlock(ones, midi);
        if (b == 60)
        {
            EXPECT_GT(std::abs(ones.getSample(0, 63) - 1.0f), 0.0f) << "not a jump to the delayed input";
        }
        if (b == 66)
        {
            EXPECT_EQ(ones.getSample(0, 63), 1.0f) << "fully bypassed after 5 ms";
        }
    }
}
