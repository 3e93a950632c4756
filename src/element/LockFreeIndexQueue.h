#pragma once
// A multi-producer, multi-consumer FIFO of pointers over a fixed array of nodes.
// Links are 32-bit: a 16-bit node index and a 16-bit tag that changes on every
// update, so a node reused between a load and a compare-exchange is noticed.
// Nothing allocates after construction; push fails when the node list is empty.

#include <atomic>
#include <cstdint>
#include <memory>

namespace oxa
{
class LockFreeIndexQueue
{
public:
    /** 32768 payloads plus the one node that always stands at the head. */
    static constexpr uint32_t nodeCount = 32769;
    static constexpr uint32_t nullIndex = 32769;

    LockFreeIndexQueue();
    LockFreeIndexQueue(const LockFreeIndexQueue&) = delete;
    LockFreeIndexQueue& operator=(const LockFreeIndexQueue&) = delete;

    bool push(void* payload);
    bool pop(void*& payload);
    bool isEmpty() const;

private:
    struct alignas(64) Node
    {
        std::atomic<uint32_t> next{0};
        std::atomic<uint32_t> freeNext{0};
        std::atomic<void*> payload{nullptr};
    };

    static uint32_t link(uint32_t index, uint32_t tag) { return (tag << 16) | (index & 0xffffu); }
    static uint32_t indexOf(uint32_t l) { return l & 0xffffu; }
    static uint32_t tagOf(uint32_t l) { return l >> 16; }

    uint32_t takeNode();
    void giveNode(uint32_t index);

    std::unique_ptr<Node[]> nodes_;
    alignas(64) std::atomic<uint32_t> head_;
    alignas(64) std::atomic<uint32_t> tail_;
    alignas(64) std::atomic<uint32_t> freeTop_;
};
} // namespace oxa
