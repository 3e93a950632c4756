// The lock-free queue and the message-thread channel of parameter changes.
#include "element/AsyncSignal.h"
#include "element/AsyncUpdateForwarder.h"
#include "element/Element.h"
#include "element/LockFreeIndexQueue.h"

#include <gtest/gtest.h>
#include <juce_events/juce_events.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

using namespace oxa;

namespace
{
void runMessageLoop(int ms) { juce::MessageManager::getInstance()->runDispatchLoopUntil(ms); }

void drainEverything()
{
    ParameterChangedAsyncSignal::drainNow();
    ASSERT_EQ(ParameterChangedAsyncSignal::queuedMessages(), 0u);
}
} // namespace

TEST(LockFreeQueue, KeepsOrderRefusesPastCapacityAndLosesNothingUnderContention)
{
    auto queue = std::make_unique<LockFreeIndexQueue>();
    std::vector<int> values(32770);
    std::size_t pushed = 0;
    for (auto& v : values)
        if (queue->push(&v))
            ++pushed;
    EXPECT_EQ(pushed, 32768u);
    void* out = nullptr;
    for (std::size_t i = 0; i < pushed; ++i)
    {
        ASSERT_TRUE(queue->pop(out));
        ASSERT_EQ(out, &values[i]);
    }
    EXPECT_FALSE(queue->pop(out));
    EXPECT_TRUE(queue->isEmpty());
    // nodes come back: the queue is usable again
    EXPECT_TRUE(queue->push(&values[0]) && queue->pop(out));

    constexpr int producers = 3, perProducer = 20000;
    std::vector<std::vector<int>> items(producers, std::vector<int>(perProducer));
    std::atomic<int> consumed{0};
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    std::vector<std::set<void*>> seen(2);
    for (int c = 0; c < 2; ++c)
        threads.emplace_back([&, c] {
            void* p = nullptr;
            while (!done.load() || !queue->isEmpty())
                if (queue->pop(p))
                {
                    seen[c].insert(p);
                    consumed.fetch_add(1);
                }
        });
    std::vector<std::thread> producerThreads;
    for (int p = 0; p < producers; ++p)
        producerThreads.emplace_back([&, p] {
            for (auto& item : items[p])
                while (!queue->push(&item))
                    std::this_thread::yield();
        });
    for (auto& t : producerThreads)
        t.join();
    done.store(true);
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(consumed.load(), producers * perProducer);
    std::set<void*> all(seen[0]);
    all.insert(seen[1].begin(), seen[1].end());
    EXPECT_EQ(all.size(), static_cast<std::size_t>(producers * perProducer));
}

TEST(AsyncChannel, DeliversOnTheMessageThreadWithinTheTimer)
{
    auto element = std::make_shared<Element>("Plain", "Listener");
    drainEverything();
    std::vector<unsigned> ids;
    bool onMessageThread = true;
    int owner = 0;
    element->signals().parameterChangedAsync.connect(&owner, [&](const Element& e, unsigned id) {
        EXPECT_EQ(&e, element.get());
        onMessageThread = onMessageThread && juce::MessageManager::getInstance()->isThisTheMessageThread();
        ids.push_back(id);
    });
    std::thread poster([&] {
        element->signals().parameterChangedAsync.post(*element, 7);
        element->signals().parameterChangedAsync.post(*element, 9);
    });
    poster.join();
    EXPECT_TRUE(ids.empty());
    for (int i = 0; i < 50 && ids.size() < 2; ++i)
        runMessageLoop(10);
    EXPECT_EQ(ids, (std::vector<unsigned>{7, 9}));
    EXPECT_TRUE(onMessageThread);
}

TEST(AsyncChannel, OverflowDropsTheExcessRecoversAndDeadBodiesAreHarmless)
{
    auto element = std::make_shared<Element>("Plain", "Flooded");
    drainEverything();
    std::size_t delivered = 0;
    int owner = 0;
    element->signals().parameterChangedAsync.connect(&owner, [&](const Element&, unsigned) { ++delivered; });
    for (int i = 0; i < 40000; ++i)
        element->signals().parameterChangedAsync.post(*element, 1);
    EXPECT_EQ(ParameterChangedAsyncSignal::queuedMessages(), ParameterChangedAsyncSignal::messageCapacity);
    for (int i = 0; i < 100 && ParameterChangedAsyncSignal::queuedMessages() > 0; ++i)
        runMessageLoop(10);
    EXPECT_EQ(delivered, ParameterChangedAsyncSignal::messageCapacity);

    // blocks went back to the free list
    element->signals().parameterChangedAsync.post(*element, 2);
    ParameterChangedAsyncSignal::drainNow();
    EXPECT_EQ(delivered, ParameterChangedAsyncSignal::messageCapacity + 1);

    // Posts for a dead or silent body are harmless.
    {
        auto element = std::make_shared<Element>("Plain", "Short");
        element->signals().parameterChangedAsync.post(*element, 3); // no slots: no body
        Signal<const Element&, unsigned> doomed;
        int owner = 0;
        doomed.connect(&owner, [](const Element&, unsigned) { FAIL(); });
        ParameterChangedAsyncSignal::post(doomed.body(), element.get(), 4);
    }
    ParameterChangedAsyncSignal::drainNow();
    EXPECT_EQ(ParameterChangedAsyncSignal::queuedMessages(), 0u);
}

TEST(AsyncForwarder, ManyFiresFromAnyThreadCoalesceIntoOneMessageThreadCall)
{
    AsyncUpdateForwarder forwarder;
    int calls = 0;
    bool onMessageThread = false;
    int owner = 0;
    forwarder.connect(&owner, [&] {
        ++calls;
        onMessageThread = juce::MessageManager::getInstance()->isThisTheMessageThread();
    });
    std::thread other([&] {
        for (int i = 0; i < 10; ++i)
            forwarder.fire();
    });
    other.join();
    EXPECT_EQ(calls, 0);
    for (int i = 0; i < 20 && calls == 0; ++i)
        runMessageLoop(5);
    runMessageLoop(20);
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(onMessageThread);
}
