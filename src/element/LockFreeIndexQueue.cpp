#include "element/LockFreeIndexQueue.h"

namespace oxa
{
LockFreeIndexQueue::LockFreeIndexQueue() : nodes_(new Node[nodeCount])
{
    // node 0 is the initial dummy; the rest form the free list
    nodes_[0].next.store(link(nullIndex, 0));
    head_.store(link(0, 0));
    tail_.store(link(0, 0));
    for (uint32_t i = 1; i < nodeCount; ++i)
    {
        nodes_[i].next.store(link(nullIndex, 0));
        nodes_[i].freeNext.store(i + 1 < nodeCount ? i + 1 : nullIndex, std::memory_order_relaxed);
    }
    freeTop_.store(link(1, 0));
}

uint32_t LockFreeIndexQueue::takeNode()
{
    uint32_t top = freeTop_.load();
    for (;;)
    {
        const uint32_t index = indexOf(top);
        if (index == nullIndex)
            return nullIndex;
        const uint32_t next = nodes_[index].freeNext.load(std::memory_order_relaxed);
        if (freeTop_.compare_exchange_weak(top, link(next, tagOf(top) + 1)))
            return index;
    }
}

void LockFreeIndexQueue::giveNode(uint32_t index)
{
    uint32_t top = freeTop_.load();
    for (;;)
    {
        nodes_[index].freeNext.store(indexOf(top), std::memory_order_relaxed);
        if (freeTop_.compare_exchange_weak(top, link(index, tagOf(top) + 1)))
            return;
    }
}

bool LockFreeIndexQueue::push(void* payload)
{
    const uint32_t index = takeNode();
    if (index == nullIndex)
        return false;
    Node& node = nodes_[index];
    node.payload.store(payload, std::memory_order_relaxed);
    node.next.store(link(nullIndex, tagOf(node.next.load()) + 1));

    uint32_t tail;
    for (;;)
    {
        tail = tail_.load();
        uint32_t next = nodes_[indexOf(tail)].next.load();
        if (tail != tail_.load())
            continue;
        if (indexOf(next) == nullIndex)
        {
            if (nodes_[indexOf(tail)].next.compare_exchange_weak(next, link(index, tagOf(next) + 1)))
                break;
        }
        else
            tail_.compare_exchange_weak(tail, link(indexOf(next), tagOf(tail) + 1));
    }
    tail_.compare_exchange_strong(tail, link(index, tagOf(tail) + 1));
    return true;
}

bool LockFreeIndexQueue::pop(void*& payload)
{
    uint32_t head;
    for (;;)
    {
        head = head_.load();
        const uint32_t tail = tail_.load();
        const uint32_t next = nodes_[indexOf(head)].next.load();
        if (head != head_.load())
            continue;
        if (indexOf(head) == indexOf(tail))
        {
            if (indexOf(next) == nullIndex)
                return false;
            uint32_t expected = tail;
            tail_.compare_exchange_weak(expected, link(indexOf(next), tagOf(tail) + 1));
        }
        else if (indexOf(next) != nullIndex)
        {
            // read before the exchange: afterwards the node may be reused
            void* value = nodes_[indexOf(next)].payload.load(std::memory_order_relaxed);
            if (head_.compare_exchange_weak(head, link(indexOf(next), tagOf(head) + 1)))
            {
                payload = value;
                break;
            }
        }
    }
    giveNode(indexOf(head));
    return true;
}

bool LockFreeIndexQueue::isEmpty() const
{
    const uint32_t head = head_.load();
    return indexOf(nodes_[indexOf(head)].next.load()) == nullIndex;
}
} // namespace oxa
