// A host-validation run, in-process: passes in random order of state loads read
// straight back, parameter storms from several threads, processing switched off and
// on, all while an audio thread renders and the message thread runs its timers. Under
// ThreadSanitizer or AddressSanitizer no report may appear; in any build every state
// set reads back exactly when setStateInformation returns.
#include "plugin/FluxDeckPlugin.h"
#include "support/RenderLoop.h"
#include "support/StateChunks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>
#include <vector>

using namespace oxa;
using oxa::test::hostValues;

namespace
{
using Clock = std::chrono::steady_clock;
constexpr auto runLength = std::chrono::seconds(12);
constexpr auto passLength = std::chrono::milliseconds(400);
constexpr int blockSize = 256;

/** A state with every parameter somewhere random, and what a host reads after loading it. */
struct KnownState
{
    juce::MemoryBlock chunk;
    std::vector<float> values;
};

KnownState randomState(juce::Random& random)
{
    FluxDeckPlugin source;
    for (auto* p : source.getParameters())
        p->setValue(random.nextFloat());
    source.applyPendingWrites();
    KnownState state;
    source.getStateInformation(state.chunk);
    FluxDeckPlugin reference;
    reference.setStateInformation(state.chunk.getData(), (int) state.chunk.getSize());
    state.values = hostValues(reference);
    return state;
}

/** Runs `body` on its own thread until the flag drops. */
class Worker
{
public:
    template <typename Body>
    Worker(std::atomic<bool>& running, Body body)
        : thread([&running, body]() mutable {
              juce::Random random((juce::int64) std::hash<std::thread::id>()(std::this_thread::get_id()));
              while (running.load())
                  body(random);
          })
    {
    }
    ~Worker() { thread.join(); }

private:
    std::thread thread;
};

void storm(juce::AudioProcessor& plugin, juce::Random& random)
{
    auto& parameters = plugin.getParameters();
    auto* p = parameters[random.nextInt(parameters.size())];
    p->setValue(random.nextFloat());
    const float now = p->getValue();
    const juce::String text = p->getText(now, 64);
    (void) p->getValueForText(text);
}

void toggleProcessing(FluxDeckPlugin& plugin, juce::Random& random)
{
    switch (random.nextInt(4))
    {
        case 0: plugin.reset(); break;
        case 1: plugin.releaseResources(); break;
        case 2: plugin.prepareToPlay(random.nextBool() ? 44100.0 : 48000.0, blockSize); break;
        default: plugin.getBypassParameter()->setValue(random.nextBool() ? 1.0f : 0.0f); break;
    }
}
} // namespace

TEST(StateLoadRaces, HostCallsInAnyOrderFromAnyThread)
{
    juce::Random random(11);
    std::vector<KnownState> states;
    for (int i = 0; i < 4; ++i)
        states.push_back(randomState(random));

    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, blockSize);
    std::atomic<long> mismatches {0}, stateSets {0}, blocks {0}, nonFinite {0};
    std::atomic<bool> finished {false};

    std::thread host([&] {
        test::RenderLoop audio(plugin, 2 * runLength);

        const auto end = Clock::now() + runLength;
        juce::Random order(5);
        while (Clock::now() < end)
        {
            std::atomic<bool> pass {true};
            const auto passEnd = Clock::now() + passLength;
            switch (order.nextInt(3))
            {
                case 0: // states set and read straight back, processing toggled meanwhile
                {
                    Worker toggler(pass, [&](juce::Random& r) {
                        if (r.nextInt(3) == 0)
                            plugin.reset();
                        std::this_thread::sleep_for(std::chrono::milliseconds(1));
                    });
                    while (Clock::now() < passEnd)
                    {
                        const KnownState& s = states[(size_t) order.nextInt((int) states.size())];
                        plugin.setStateInformation(s.chunk.getData(), (int) s.chunk.getSize());
                        if (hostValues(plugin) != s.values)
                            mismatches.fetch_add(1);
                        stateSets.fetch_add(1);
                    }
                    pass = false;
                    break;
                }
                case 1: // parameter storms from two threads while states load
                {
                    Worker first(pass, [&](juce::Random& r) { storm(plugin, r); });
                    Worker second(pass, [&](juce::Random& r) { storm(plugin, r); });
                    while (Clock::now() < passEnd)
                    {
                        const KnownState& s = states[(size_t) order.nextInt((int) states.size())];
                        plugin.setStateInformation(s.chunk.getData(), (int) s.chunk.getSize());
                        juce::MemoryBlock saved;
                        if (order.nextInt(4) == 0)
                            plugin.getStateInformation(saved);
                    }
                    pass = false;
                    break;
                }
                default: // processing switched while parameters move
                {
                    Worker writer(pass, [&](juce::Random& r) { storm(plugin, r); });
                    while (Clock::now() < passEnd)
                        toggleProcessing(plugin, order);
                    pass = false;
                    break;
                }
            }
        }
        audio.stop();
        blocks = audio.blocks.load();
        nonFinite = audio.nonFinite.load();
        finished = true;
    });

    while (!finished.load())
        juce::MessageManager::getInstance()->runDispatchLoopUntil(5);
    host.join();
    juce::MessageManager::getInstance()->runDispatchLoopUntil(20);

    EXPECT_GT(stateSets.load(), 0);
    EXPECT_GT(blocks.load(), 0);
    EXPECT_EQ(mismatches.load(), 0) << "of " << stateSets.load() << " state sets";
    EXPECT_EQ(nonFinite.load(), 0);
}
