#include "support/AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{
thread_local bool countHere = false;
std::atomic<long> counted {0};

void* allocate(std::size_t size)
{
    if (countHere)
        counted.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size == 0 ? 1 : size))
        return p;
    throw std::bad_alloc();
}
} // namespace

namespace oxa::test
{
CountedAllocations::CountedAllocations() noexcept { countHere = true; }
CountedAllocations::~CountedAllocations() { countHere = false; }
long CountedAllocations::total() noexcept { return counted.load(); }
void CountedAllocations::reset() noexcept { counted = 0; }
} // namespace oxa::test

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size == 0 ? 1 : size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size == 0 ? 1 : size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
