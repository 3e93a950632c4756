#pragma once
// A signal without arguments that any thread may trigger and whose slots run on
// the message thread.

#include "element/Signal.h"

#include <juce_events/juce_events.h>

namespace oxa
{
class AsyncUpdateForwarder : public SignalN<dummy_mutex>, private juce::AsyncUpdater
{
public:
    ~AsyncUpdateForwarder() override { cancelPendingUpdate(); }

    /** Any thread; the slots run once on the message thread, however often this was called. */
    void fire() { triggerAsyncUpdate(); }

    /** Message thread: run a pending delivery now. */
    void flush() { handleUpdateNowIfNeeded(); }

private:
    void handleAsyncUpdate() override { (*this)(); }
};
} // namespace oxa
