#pragma once
// Counts heap allocations on the threads that ask for it. Linking AllocationCounter.cpp
// replaces the program's allocation functions with counting ones, so it belongs only in
// test executables of their own.

namespace oxa::test
{
// While one lives on a thread, that thread's allocations are counted; other threads'
// are not. The count itself is shared, so another thread may read it afterwards.
class CountedAllocations
{
public:
    CountedAllocations() noexcept;
    ~CountedAllocations();
    CountedAllocations(const CountedAllocations&) = delete;
    CountedAllocations& operator=(const CountedAllocations&) = delete;

    // Allocations counted on any thread since the last reset.
    static long total() noexcept;
    static void reset() noexcept;
};
} // namespace oxa::test
