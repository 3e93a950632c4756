// With every live road to the window open (the monitor stream, the flange
// position, the output levels) and the window's side reading them between
// blocks, the audio thread still allocates nothing. Every allocation function of
// the program is replaced by a counting one, armed only around processBlock.
#include "engine/EngineProxy.h"
#include "plugin/FluxDeckPlugin.h"
#include "support/AllocationCounter.h"
#include "tape/FluxDeckProcessor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

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
        test::CountedAllocations::reset();
        {
            test::CountedAllocations audioThread;
            plugin.processBlock(buffer, midi);
        }
        total += test::CountedAllocations::total();

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
