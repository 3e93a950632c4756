#pragma once
// The audio thread of a test that races the host's other threads against it.
#include <juce_audio_processors/juce_audio_processors.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <functional>
#include <thread>

namespace oxa::test
{
/** Renders noise through the plug-in until stopped or the length has passed, counting
    its blocks and every sample that comes out not finite. The optional hook runs before
    each block, as a host applying automation there. */
class RenderLoop
{
public:
    RenderLoop(juce::AudioProcessor& plugin, std::chrono::milliseconds length, std::function<void(juce::Random&)> hook = {},
               int blockSize = 256)
        : deadline(std::chrono::steady_clock::now() + length)
    {
        thread = std::thread([this, &plugin, hook, blockSize] {
            juce::AudioBuffer<float> buffer(2, blockSize);
            juce::MidiBuffer midi;
            juce::Random random(7);
            while (running.load() && std::chrono::steady_clock::now() < deadline)
            {
                if (hook)
                    hook(random);
                for (int c = 0; c < 2; ++c)
                    for (int i = 0; i < blockSize; ++i)
                        buffer.setSample(c, i, random.nextFloat() - 0.5f);
                midi.clear();
                plugin.processBlock(buffer, midi);
                for (int c = 0; c < 2; ++c)
                    for (int i = 0; i < blockSize; ++i)
                        if (!std::isfinite(buffer.getSample(c, i)))
                            nonFinite.fetch_add(1, std::memory_order_relaxed);
                blocks.fetch_add(1, std::memory_order_relaxed);
            }
            done.store(true);
        });
    }
    ~RenderLoop() { stop(); }

    void stop()
    {
        running.store(false);
        if (thread.joinable())
            thread.join();
    }

    std::chrono::steady_clock::time_point deadline;
    std::thread thread;
    std::atomic<bool> running {true};
    std::atomic<bool> done {false};
    std::atomic<long> blocks {0};
    std::atomic<long> nonFinite {0};
};
} // namespace oxa::test
