#pragma once
// Host calls (parameter reads and writes) may come from any thread at any moment, the
// audio thread included, so they cannot take a lock. They pass this gate instead: a
// pass is two atomic counts. Whoever replaces the element tree first re-points the
// host parameters, then waits at the gate until every call that could still hold an
// old pointer has left; only then may the old tree go.

#include <atomic>
#include <cstdint>
#include <thread>

namespace oxa
{
class HostReaderGate
{
public:
    class Pass
    {
    public:
        explicit Pass(std::atomic<int>& count) : count(&count) {}
        Pass(Pass&& other) noexcept : count(other.count) { other.count = nullptr; }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        Pass& operator=(Pass&&) = delete;
        ~Pass()
        {
            if (count != nullptr)
                count->fetch_sub(1);
        }

    private:
        std::atomic<int>* count;
    };

    /** Never blocks: retries only if a replacement flipped the gate in between. */
    Pass enter() const
    {
        for (;;)
        {
            const uint32_t seen = epoch.load();
            std::atomic<int>& count = readers[seen & 1];
            count.fetch_add(1);
            if (epoch.load() == seen)
                return Pass(count);
            count.fetch_sub(1);
        }
    }

    /** Call after publishing the new pointers, from one replacing thread at a time. */
    void waitForReaders()
    {
        const uint32_t old = epoch.fetch_add(1);
        while (readers[old & 1].load() != 0)
            std::this_thread::yield();
    }

private:
    std::atomic<uint32_t> epoch {0};
    mutable std::atomic<int> readers[2] {};
};
} // namespace oxa
