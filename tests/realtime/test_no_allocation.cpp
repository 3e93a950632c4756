// The audio thread must not touch the heap nor wait on a lock: every allocation
// function and every blocking lock function of the program is replaced by a counting
// one, armed only on the audio thread around a block (with the host's parameter
// writes the wrapper makes on that thread before it).
#include "engine/MidiLearn.h"
#include "plugin/FluxDeckPlugin.h"
#include "support/AllocationCounter.h"
#include "support/ScopedWrapperType.h"
#include "tape/FluxDeckProcessor.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cstdlib>
#include <cmath>
#include <mutex>

namespace
{
// Counts from zero on this thread while it lives.
struct Armed : oxa::test::CountedAllocations
{
    Armed() { reset(); }
};
} // namespace

// Blocking lock calls: a try-lock is what the audio thread may use, these it may not.
namespace
{
thread_local bool lockCountingArmed = false;
std::atomic<long> blockingLocks {0};

// Looked up on first use: locks are taken during static set-up, before any initialiser here.
template <typename Function>
Function realFunction(std::atomic<void*>& cache, const char* name)
{
    void* found = cache.load();
    if (found == nullptr)
    {
        found = dlsym(RTLD_NEXT, name);
        cache.store(found);
    }
    return reinterpret_cast<Function>(found);
}

using MutexLock = int (*)(pthread_mutex_t*);
using RwLock = int (*)(pthread_rwlock_t*);
std::atomic<void*> realMutexLock {nullptr}, realReadLock {nullptr}, realWriteLock {nullptr};

void countLock()
{
    if (lockCountingArmed)
        blockingLocks.fetch_add(1, std::memory_order_relaxed);
}

struct LocksArmed
{
    LocksArmed()
    {
        blockingLocks = 0;
        lockCountingArmed = true;
    }
    ~LocksArmed() { lockCountingArmed = false; }
};
} // namespace

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    countLock();
    return realFunction<MutexLock>(realMutexLock, "pthread_mutex_lock")(mutex);
}
extern "C" int pthread_rwlock_rdlock(pthread_rwlock_t* lock)
{
    countLock();
    return realFunction<RwLock>(realReadLock, "pthread_rwlock_rdlock")(lock);
}
extern "C" int pthread_rwlock_wrlock(pthread_rwlock_t* lock)
{
    countLock();
    return realFunction<RwLock>(realWriteLock, "pthread_rwlock_wrlock")(lock);
}

using namespace oxa;

namespace
{
// Allocations the audio thread makes over blocks of noise, each with that many note events.
long allocationsRendering(FluxDeckPlugin& plugin, int blocks, int blockSize, int eventsPerBlock)
{
    long counted = 0;
    juce::AudioBuffer<float> buffer(2, blockSize);
    juce::MidiBuffer midi;
    midi.ensureSize(8 * (size_t) (eventsPerBlock + 1) * 16);
    juce::Random random(1);
    for (int b = 0; b < blocks; ++b)
    {
        for (int c = 0; c < 2; ++c)
            for (int i = 0; i < blockSize; ++i)
                buffer.setSample(c, i, random.nextFloat() * 2.0f - 1.0f);
        midi.clear();
        for (int e = 0; e < eventsPerBlock; ++e)
            midi.addEvent(juce::MidiMessage::noteOn(1, 60, (uint8_t) 100), e % blockSize);
        Armed guard;
        plugin.processBlock(buffer, midi);
        counted += test::CountedAllocations::total();
    }
    return counted;
}
} // namespace

TEST(AudioThread, ProcessBlockNeverAllocates)
{
    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 512);
    EXPECT_EQ(allocationsRendering(plugin, 400, 512, 0), 0);
    EXPECT_EQ(allocationsRendering(plugin, 50, 512, 16), 0);
    EXPECT_EQ(allocationsRendering(plugin, 50, 100, 0), 0) << "shorter blocks than prepared";
}

TEST(AudioThread, OnlyAFloodOfMidiMayGrowTheEventList)
{
    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 512);
    EXPECT_EQ(allocationsRendering(plugin, 5, 512, 1000), 0) << "within the reserved room";
    EXPECT_GT(allocationsRendering(plugin, 1, 512, 1100), 0) << "past it the list grows once";
    EXPECT_EQ(allocationsRendering(plugin, 5, 512, 1100), 0) << "and keeps its new room";
}

TEST(AudioThread, NeitherHostWritesNorABlockTakeABlockingLock)
{
    {
        LocksArmed guard;
        std::mutex probe;
        probe.lock();
        probe.unlock();
        ASSERT_EQ(blockingLocks.load(), 1) << "the counting itself works";
    }
    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 256);
    juce::AudioBuffer<float> buffer(2, 256);
    juce::MidiBuffer midi;
    juce::Random random(3);
    auto& parameters = plugin.getParameters();
    long locks = 0, heap = 0;
    for (int block = 0; block < 60; ++block)
    {
        for (int c = 0; c < 2; ++c)
            for (int i = 0; i < 256; ++i)
                buffer.setSample(c, i, random.nextFloat() - 0.5f);
        // as a VST3 wrapper does: every parameter written on the audio thread, then the block
        const float offset = random.nextFloat();
        LocksArmed lockGuard;
        Armed heapGuard;
        for (int p = 0; p < parameters.size(); ++p)
            parameters[p]->setValue(std::fmod(offset + 0.37f * (float) p, 1.0f));
        plugin.getBypassParameter()->setValue(block % 20 < 10 ? 0.0f : 1.0f);
        plugin.processBlock(buffer, midi);
        locks += blockingLocks.load();
        heap += test::CountedAllocations::total();
    }
    EXPECT_EQ(locks, 0);
    EXPECT_EQ(heap, 0);
}

TEST(AudioThread, StandaloneVoiceAndLearnedControllersNeitherAllocateNorLock)
{
    std::unique_ptr<FluxDeckPlugin> plugin;
    {
        test::ScopedWrapperType standalone(juce::AudioProcessor::wrapperType_Standalone);
        plugin = std::make_unique<FluxDeckPlugin>();
    }
    const auto& ids = FluxDeckProcessor::ids();
    const std::pair<uint32_t, int> learned[] = {{ids.mix, 1}, {ids.delay, 74}, {ids.flangeMode, 20}, {ids.phaseInvert, 64}};
    for (auto [id, controller] : learned)
        ASSERT_TRUE(MidiLearn(*plugin->getProxy(), oxa::String("/FluxDeck"), id).bind(controller));
    plugin->prepareToPlay(48000.0, 512);

    juce::AudioBuffer<float> buffer(2, 512);
    juce::MidiBuffer midi;
    midi.ensureSize(4096);
    long counted = 0;
    for (int b = 0; b < 200; ++b)
    {
        buffer.clear();
        midi.clear();
        const int key = 48 + b % 24;
        midi.addEvent(juce::MidiMessage::noteOn(1, key, (uint8_t) 100), b % 300);
        midi.addEvent(juce::MidiMessage::noteOn(1, key, (uint8_t) 0), 400); // velocity 0: released
        for (int controller : {1, 74, 20, 64})
            midi.addEvent(juce::MidiMessage::controllerEvent(1, controller, (b * 7 + controller) % 128), b % 512);
        LocksArmed lockGuard;
        Armed guard;
        plugin->processBlock(buffer, midi);
        counted += test::CountedAllocations::total() + blockingLocks.load();
    }
    EXPECT_EQ(counted, 0) << "allocations and blocking locks";
    EXPECT_GT(buffer.getMagnitude(0, 0, 512), 0.0f) << "the voice played";
}

TEST(AudioThread, EveryBlockLoopInEitherSolverKernelRendersWithoutTheHeap)
{
    std::vector<float> left(512), right(512), speed(512), dry(512);
    float* channels[] = {left.data(), right.data()};
    float tempo = 120.0f;
    long counted = 0;
    for (SolverKernel kernel : {SolverKernel::reference, SolverKernel::lanes})
        for (int mode = 0; mode < 2; ++mode)
            for (int encoder = 0; encoder < 4; ++encoder)
                for (int decoder = 0; decoder < 4; ++decoder)
                {
                    TapeEffectState state;
                    state.prepare(48000.0, 512, 2);
                    state.kernel = kernel;
                    state.setFlangeMode(mode);
                    state.forEachDeck([&](TapeDeck& deck) {
                        deck.feedback = 0.9;
                        deck.setDegradeDepth(1.0);
                        deck.setEncoderType(encoder);
                        deck.setDecoderType(decoder);
                    });
                    for (int b = 0; b < 4; ++b)
                    {
                        for (int i = 0; i < 512; ++i)
                            left[i] = right[i] = 0.5f * std::sin(0.05f * static_cast<float>(b * 512 + i));
                        if (b == 2) // the record path fades over to a new drive
                            state.forEachDeck([](TapeDeck& deck) { deck.setDrive(10.0); });
                        Armed guard;
                        state.render(channels, 2, 512, TapeHostInfo{}, false, tempo, speed.data(), dry.data());
                        counted += test::CountedAllocations::total();
                    }
                }
    EXPECT_EQ(counted, 0);
}
