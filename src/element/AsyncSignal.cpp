#include "element/AsyncSignal.h"

#include "element/LockFreeIndexQueue.h"

#include <juce_events/juce_events.h>

#include <cstdlib>
#include <mutex>
#include <new>

namespace oxa
{
namespace
{
struct MessageBlock
{
    std::weak_ptr<SignalBodyBase> body;
    unsigned id = 0;
    const Element* element = nullptr;
};
static_assert(sizeof(MessageBlock) <= 32, "message blocks are 32 bytes");

using ElementBody = SignalN<dummy_mutex, const Element&, unsigned>::Body;
} // namespace

class alignas(64) AsyncSignal<const Element&, unsigned>::Channel : public juce::Timer, public juce::DeletedAtShutdown
{
public:
    Channel()
    {
        for (std::size_t i = 0; i < messageCapacity; ++i)
            if (void* memory = std::malloc(32))
                freeBlocks.push(memory);
        startTimer(drainIntervalMs);
    }

    ~Channel() override
    {
        stopTimer();
        void* block = nullptr;
        while (messages.pop(block))
        {
            static_cast<MessageBlock*>(block)->~MessageBlock();
            std::free(block);
        }
        while (freeBlocks.pop(block))
            std::free(block);
        instance().store(nullptr);
    }

    static std::atomic<Channel*>& instance()
    {
        static std::atomic<Channel*> channel{nullptr};
        return channel;
    }

    static Channel& get()
    {
        if (Channel* existing = instance().load())
            return *existing;
        static std::mutex creation;
        std::lock_guard<std::mutex> guard(creation);
        if (Channel* existing = instance().load())
            return *existing;
        auto* made = new Channel;
        instance().store(made);
        return *made;
    }

    void post(const std::weak_ptr<SignalBodyBase>& body, const Element* element, unsigned id)
    {
        void* memory = nullptr;
        if (!freeBlocks.pop(memory))
            return; // full: dropped
        auto* block = new (memory) MessageBlock{body, id, element};
        ++queued;
        while (!messages.push(block))
        {
            // the queue's own node list ran dry for a moment: hand the block back and retry
            block->~MessageBlock();
            while (!freeBlocks.push(memory))
            {
            }
            if (!freeBlocks.pop(memory))
            {
                --queued;
                return;
            }
            block = new (memory) MessageBlock{body, id, element};
        }
    }

    void drain()
    {
        // At most what was queued when the drain began: a writer that never stops must
        // not keep the message thread in here forever.
        void* memory = nullptr;
        for (long budget = queued.load() + 1; budget > 0 && messages.pop(memory); --budget)
        {
            --queued;
            auto* block = static_cast<MessageBlock*>(memory);
            if (auto body = block->body.lock())
                static_cast<ElementBody&>(*body).fire(*block->element, block->id);
            block->~MessageBlock();
            while (!freeBlocks.push(memory))
            {
            }
        }
    }

    void timerCallback() override { drain(); }

    LockFreeIndexQueue messages;
    LockFreeIndexQueue freeBlocks;
    std::atomic<std::size_t> queued{0};
};

void AsyncSignal<const Element&, unsigned>::ensureChannel() { Channel::get(); }

void AsyncSignal<const Element&, unsigned>::post(const std::weak_ptr<SignalBodyBase>& body, const Element* element,
                                                 unsigned id)
{
    Channel::get().post(body, element, id);
}

std::size_t AsyncSignal<const Element&, unsigned>::queuedMessages()
{
    Channel* channel = Channel::instance().load();
    return channel != nullptr ? channel->queued.load() : 0;
}

void AsyncSignal<const Element&, unsigned>::drainNow()
{
    if (Channel* channel = Channel::instance().load())
        channel->drain();
}
} // namespace oxa
