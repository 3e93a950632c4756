// Host parameter traffic from several threads at once: host writes and reads, a
// render loop on its own thread, and the message thread delivering notifications.
// Under ThreadSanitizer this shows the path is race-free; in any build it checks
// the output stays finite and the last write of every parameter sticks.
#include "plugin/ExportedPluginParameter.h"
#include "plugin/FluxDeckPlugin.h"
#include "support/RenderLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <functional>
#include <limits>
#include <thread>
#include <vector>

using namespace oxa;
using oxa::test::RenderLoop;

namespace
{
constexpr int blockSize = 256;
constexpr auto stormLength = std::chrono::milliseconds(3000);

// Rounding in the log and skewed mappings leaves values a hair outside the ends.
bool inUnitRange(float v)
{
    return std::isfinite(v) && v >= -1e-6f && v <= 1.0f + 1e-6f;
}

/** What a host sees through the parameter listeners, from whichever thread calls. */
struct HostListener : juce::AudioProcessorParameter::Listener
{
    void parameterValueChanged(int index, float value) override
    {
        if (!inUnitRange(value))
        {
            badValues.fetch_add(1, std::memory_order_relaxed);
            lastBadIndex.store(index);
            lastBadValue.store(value);
        }
    }
    void parameterGestureChanged(int, bool) override { gestures.fetch_add(1, std::memory_order_relaxed); }

    std::atomic<long> badValues {0};
    std::atomic<long> gestures {0};
    std::atomic<int> lastBadIndex {-1};
    std::atomic<float> lastBadValue {0.0f};
};

/** One host write: mostly random, now and then an end of the range or a broken value. */
float hostValue(juce::Random& random)
{
    switch (random.nextInt(20))
    {
        case 0: return 0.0f;
        case 1: return 1.0f;
        case 2: return std::numeric_limits<float>::quiet_NaN();
        case 3: return -0.25f;
        default: return random.nextFloat();
    }
}

/** Problems seen by the host's threads; all must stay zero. */
struct Tally
{
    std::atomic<long> writes {0};
    std::atomic<long> badReads {0};
    std::atomic<long> emptyTexts {0};
};

/** A host thread moving one parameter inside a gesture, reading it back and showing it. */
void touch(juce::AudioProcessorParameter& p, juce::Random& random, Tally& tally)
{
    p.beginChangeGesture();
    for (int step = 0; step < 3; ++step)
        p.setValue(hostValue(random));
    const float now = p.getValue();
    if (!inUnitRange(now))
        tally.badReads.fetch_add(1, std::memory_order_relaxed);
    if (p.getText(now, 64).isEmpty())
        tally.emptyTexts.fetch_add(1, std::memory_order_relaxed);
    p.endChangeGesture();
    tally.writes.fetch_add(3, std::memory_order_relaxed);
}

class HostParameterThreads : public ::testing::Test
{
protected:
    void SetUp() override
    {
        plugin.prepareToPlay(48000.0, blockSize);
        params.assign(plugin.getParameters().begin(), plugin.getParameters().end());
        ASSERT_EQ(params.size(), 45u);
        for (auto* p : params)
            p->addListener(&listener);
    }
    void TearDown() override
    {
        for (auto* p : params)
            p->removeListener(&listener);
    }

    /** Runs the message loop until the producers are done, reading every parameter
        between slices as a host's view would. The producers keep their own deadlines:
        a message-thread callback may not return while they are still busy. Then checks
        everything the storm could have broken. */
    void pumpAndCheck(RenderLoop& audio, const std::function<bool()>& producersDone,
                      const std::function<void()>& eachSlice = {})
    {
        long badMainReads = 0;
        while (!producersDone())
        {
            juce::MessageManager::getInstance()->runDispatchLoopUntil(20);
            if (eachSlice)
                eachSlice();
            for (auto* p : params)
                if (const float v = p->getValue(); !inUnitRange(v) && ++badMainReads <= 3)
                    ADD_FAILURE() << "slot " << p->getParameterIndex() << " reads " << v;
        }
        audio.stop();
        EXPECT_GT(audio.blocks.load(), 10) << "the render loop must have run alongside the writes";
        EXPECT_EQ(audio.nonFinite.load(), 0);
        EXPECT_EQ(tally.badReads.load(), 0);
        EXPECT_EQ(tally.emptyTexts.load(), 0);
        EXPECT_EQ(badMainReads, 0);
        EXPECT_EQ(listener.badValues.load(), 0)
            << "last: slot " << listener.lastBadIndex.load() << " sent " << listener.lastBadValue.load();
        expectLastWritesStick();
    }

    /** Each parameter set to its default must read back as that. Two passes, as some
        ranges hang on other parameters (a synced rate is a note length); a parameter
        that moves by itself between blocks is a live readout and is left out. */
    void expectLastWritesStick()
    {
        juce::AudioBuffer<float> buffer(2, blockSize);
        juce::MidiBuffer midi;
        auto renderOne = [&] {
            buffer.clear();
            plugin.processBlock(buffer, midi);
        };
        for (int pass = 0; pass < 2; ++pass)
        {
            for (auto* p : params)
                p->setValue(p->getDefaultValue());
            renderOne();
        }
        juce::MessageManager::getInstance()->runDispatchLoopUntil(50);
        std::vector<float> settled;
        for (auto* p : params)
            settled.push_back(p->getValue());
        for (int n = 0; n < 8; ++n)
            renderOne();
        int checked = 0;
        for (size_t i = 0; i < params.size(); ++i)
        {
            auto* p = params[i];
            // "Manual Flange" reads where the LFO last put the flange; it is no setting then.
            if (p->getValue() != settled[i] || p->getName(64) == "Manual Flange")
                continue;
            ++checked;
            const int steps = p->getNumSteps();
            float tolerance = p->isDiscrete() && steps > 1 ? 0.5f / (float) (steps - 1) : 1e-3f;
            // Synced to the host, "LFO Rate" snaps to one of 30 note lengths.
            if (p->getName(64) == "LFO Rate")
                tolerance = 0.5f / 29.0f;
            EXPECT_NEAR(settled[i], p->getDefaultValue(), tolerance)
                << "slot " << p->getParameterIndex() << " (" << p->getName(64) << ")";
        }
        EXPECT_GE(checked, 40) << "only a few live readouts may move on their own";
    }

    FluxDeckPlugin plugin;
    std::vector<juce::AudioProcessorParameter*> params;
    HostListener listener;
    Tally tally;
};
} // namespace

TEST_F(HostParameterThreads, HostThreadAudioThreadAutomationAndEditorAllAtOnce)
{
    // Hosts apply automation on the audio thread just before the block, while
    // another host thread and an editor on the message thread move the same parameters.
    std::atomic<long> automationWrites {0};
    RenderLoop audio(plugin, stormLength, [&](juce::Random& random) {
        for (int n = 0; n < 8; ++n)
            params[(size_t) random.nextInt((int) params.size())]->setValue(hostValue(random));
        automationWrites.fetch_add(8, std::memory_order_relaxed);
    });
    std::atomic<bool> writing {true};
    std::thread host([&] {
        juce::Random random(11);
        const auto end = std::chrono::steady_clock::now() + stormLength;
        while (std::chrono::steady_clock::now() < end)
            for (auto* p : params)
                touch(*p, random, tally);
        writing.store(false);
    });
    juce::Random random(23);
    pumpAndCheck(audio, [&] { return !writing.load() && audio.done.load(); }, [&] {
        for (int n = 0; n < 8; ++n)
            touch(*params[(size_t) random.nextInt((int) params.size())], random, tally);
    });
    host.join();
    EXPECT_GT(tally.writes.load(), (long) params.size() * 3);
    EXPECT_GT(automationWrites.load(), 0);
    EXPECT_GT(listener.gestures.load(), 0);
}

TEST_F(HostParameterThreads, PluginGoesAwayCleanlyAfterTheStorm)
{
    // Writes queued for the audio thread and notifications queued for the
    // message thread must not outlive the plug-in that made them.
    auto local = std::make_unique<FluxDeckPlugin>();
    local->prepareToPlay(48000.0, blockSize);
    {
        RenderLoop audio(*local, std::chrono::milliseconds(60000));
        std::thread host([&] {
            juce::Random random(5);
            for (int round = 0; round < 20; ++round)
                for (auto* p : local->getParameters())
                    touch(*p, random, tally);
        });
        host.join();
        audio.stop();
        EXPECT_EQ(audio.nonFinite.load(), 0);
    }
    for (auto* p : local->getParameters())
        p->setValue((float) (p->getParameterIndex() % 10) / 10.0f);
    local.reset(); // queued notifications now point at nothing
    juce::MessageManager::getInstance()->runDispatchLoopUntil(100);
}
