// Opening and closing the window while the host renders: the audio thread never
// allocates, and every window built is torn down again. Allocations are counted per
// thread, so only the audio thread's own are seen.
#include "editor/FluxDeckPluginUI.h"
#include "editor/WindowSettings.h"
#include "editor/widgets/ImageLoader.h"
#include "plugin/FluxDeckPlugin.h"
#include "support/AllocationCounter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

TEST(WindowWhileRendering, TwoHundredOpeningsLeaveTheAudioThreadAlone)
{
    using namespace oxa;
    overrideDisplayImageScale(1);
    const bool userExpanded = windowSettings::readBool("ui.expanded", false);
    const int liveBefore = juce::Component::getNumCurrentlyModalComponents();
    {
        FluxDeckPlugin plugin;
        plugin.prepareToPlay(48000.0, 256);
        std::atomic<bool> running {true};
        std::atomic<long> blocks {0};
        std::thread audio([&] {
            juce::AudioBuffer<float> buffer(2, 256);
            juce::MidiBuffer midi;
            midi.ensureSize(1024);
            for (int warm = 0; warm < 8; ++warm)
                plugin.processBlock(buffer, midi);
            juce::Random random(3);
            while (running.load())
            {
                for (int c = 0; c < 2; ++c)
                    for (int i = 0; i < 256; ++i)
                        buffer.setSample(c, i, random.nextFloat() - 0.5f);
                midi.clear();
                test::CountedAllocations audioThread;
                plugin.processBlock(buffer, midi);
                ++blocks;
            }
        });

        for (int i = 0; i < 200; ++i)
        {
            std::unique_ptr<juce::AudioProcessorEditor> editor(plugin.createEditor());
            auto& ui = dynamic_cast<FluxDeckPluginUI&>(*editor);
            ui.setExpanded(i % 2 == 0);
            (void) ui.createComponentSnapshot({0, 0, 64, 64}); // paint a corner of it
            juce::MessageManager::getInstance()->runDispatchLoopUntil(1);
        }
        running = false;
        audio.join();
        EXPECT_GT(blocks.load(), 0);
        EXPECT_EQ(test::CountedAllocations::total(), 0);
    }
    EXPECT_EQ(juce::Component::getNumCurrentlyModalComponents(), liveBefore);
    EXPECT_EQ(oxa::Plugin::liveInstances(), 0);
    overrideDisplayImageScale(0);
    windowSettings::writeBool("ui.expanded", userExpanded);
}
