// Signals: disconnection and reconnection while firing, trackable lifetimes.
#include "element/Signal.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace oxa;

namespace
{
struct Recorder : Trackable
{
    Recorder(std::vector<int>& l, int t = 0) : log(&l), tag(t) {}
    std::vector<int>* log;
    int tag;
    void onFire(int value) { log->push_back(tag * 100 + value); }
};

int plainCalls = 0;
void plainSlot(int) { ++plainCalls; }
} // namespace

TEST(SignalFiring, SlotThatDisconnectsItselfRunsOnceAndIsSweptAfter)
{
    Signal<int> signal;
    int calls = 0;
    int owner = 0;
    signal.connect(&owner, [&](int) {
        ++calls;
        signal.disconnect(&owner);
        // still in the ring until the firing ends
        EXPECT_EQ(signal.sharedBody()->slotCount(), 1u);
        EXPECT_EQ(signal.sharedBody()->pendingRemovals(), 1u);
    });
    signal(1);
    signal(2);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(signal.sharedBody()->slotCount(), 0u);
    EXPECT_EQ(signal.sharedBody()->pendingRemovals(), 0u);
}

TEST(SignalFiring, ALaterSlotDisconnectedInAFiringIsSkippedAndOneAppendedIsReached)
{
    Signal<int> signal;
    int first = 0, second = 0;
    int a = 0, b = 0;
    signal.connect(&a, [&](int) {
        ++first;
        signal.disconnect(&b);
    });
    signal.connect(&b, [&](int) { ++second; });
    signal(0);
    signal(0);
    EXPECT_EQ(first, 2);
    EXPECT_EQ(second, 0);

    Signal<int> growing;
    std::vector<int> order;
    growing.connect(&a, [&](int) {
        order.push_back(1);
        if (order.size() == 1)
            growing.connect(&b, [&](int) { order.push_back(2); });
    });
    growing(0);
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST(SignalFiring, ReconnectingInTheSameFiringRevivesWithoutASecondEntry)
{
    Signal<int> signal;
    int calls = 0;
    signal.connect(&plainSlot);
    int owner = 0;
    signal.connect(&owner, [&](int) {
        ++calls;
        signal.disconnect(&plainSlot);
        signal.connect(&plainSlot);
    });
    plainCalls = 0;
    signal(0);
    EXPECT_EQ(plainCalls, 1); // ran before it was disconnected
    EXPECT_EQ(signal.sharedBody()->slotCount(), 2u);
    signal(0);
    EXPECT_EQ(plainCalls, 2);
    EXPECT_EQ(calls, 2);
}

TEST(SignalFiring, SameKeyTwiceIsCalledTwiceDisconnectRemovesBothEmptyDoesNothing)
{
    Signal<int> signal;
    plainCalls = 0;
    signal.connect(&plainSlot);
    signal.connect(&plainSlot);
    signal(0);
    EXPECT_EQ(plainCalls, 2);
    signal.disconnect(&plainSlot);
    signal(0);
    EXPECT_EQ(plainCalls, 2);
    EXPECT_FALSE(signal.hasSlots());

    Signal<int> empty;
    empty(1);
    EXPECT_FALSE(empty.hasSlots());
    EXPECT_TRUE(empty.body().expired());
}

TEST(SignalFiring, NestedFiringDoesNotFreeEntriesTheOuterWalkUses)
{
    Signal<int> signal;
    int a = 0, b = 0;
    int innerCalls = 0;
    signal.connect(&a, [&](int depth) {
        if (depth == 0)
        {
            signal.disconnect(&a);
            signal(1);
            // the inner firing must leave the marked entry for the outer sweep
            EXPECT_EQ(signal.sharedBody()->slotCount(), 2u);
        }
    });
    signal.connect(&b, [&](int) { ++innerCalls; });
    signal(0);
    EXPECT_EQ(innerCalls, 2);
    EXPECT_EQ(signal.sharedBody()->slotCount(), 1u);
}

TEST(SignalTrackable, DestroyedObjectLosesItsSlotsEvenDuringAFiring)
{
    Signal<int> signal;
    std::vector<int> log;
    {
        Recorder recorder(log, 1);
        signal.connect(&recorder, &Recorder::onFire);
        EXPECT_EQ(recorder.trackableTable().size(), 1u);
        signal(5);
    }
    signal(6);
    EXPECT_EQ(log, (std::vector<int>{105}));
    EXPECT_FALSE(signal.hasSlots());

    log.clear();
    auto victim = std::make_unique<Recorder>(log, 2);
    int killer = 0;
    signal.connect(&killer, [&](int) { victim.reset(); });
    signal.connect(victim.get(), &Recorder::onFire);
    signal(1);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(signal.slotCount(), 1u);
}

TEST(SignalTrackable, SignalDyingFirstOrExplicitDisconnectCleansTheTable)
{
    std::vector<int> log;
    Recorder recorder(log);
    {
        Signal<int> dying;
        dying.connect(&recorder, &Recorder::onFire);
        EXPECT_EQ(recorder.trackableTable().size(), 1u);
    }
    EXPECT_EQ(recorder.trackableTable().size(), 0u);

    Signal<int> signal;
    signal.connect(&recorder, &Recorder::onFire);
    signal.disconnect(&recorder, &Recorder::onFire);
    EXPECT_EQ(recorder.trackableTable().size(), 0u);
    signal(1);
    EXPECT_TRUE(log.empty());
}
