#pragma once
// The parameter-change signal of the message-thread side. Any thread, the audio
// thread included, may post to it; a process-wide channel delivers the posts on
// the message thread every 10 ms.

#include "element/Signal.h"

#include <cstddef>
#include <cstdint>

namespace oxa
{
class Element;

template <typename... Args>
class AsyncSignal;

template <>
class AsyncSignal<const Element&, unsigned> : public SignalN<dummy_mutex, const Element&, unsigned>
{
public:
    class Channel;

    /** Makes sure the channel exists. Call on the message thread before anyone may post. */
    static void ensureChannel();

    /** Queues (element, id) for delivery to `body` on the message thread. Wait-free and
        allocation-free once the channel exists; dropped silently when every block is queued. */
    static void post(const std::weak_ptr<SignalBodyBase>& body, const Element* element, unsigned id);

    /** Posts for this signal. */
    void post(const Element& element, unsigned id) const { post(body(), &element, id); }

    /** Messages waiting now (diagnostics and tests). */
    static std::size_t queuedMessages();

    /** Delivers all waiting messages at once. Message thread only. */
    static void drainNow();

    static constexpr std::size_t messageCapacity = 32768;
    static constexpr int drainIntervalMs = 10;
};

using ParameterChangedAsyncSignal = AsyncSignal<const Element&, unsigned>;
} // namespace oxa
