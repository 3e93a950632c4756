#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

namespace oxa
{

// One writer (the audio thread) and one reader (the editor's timer) share a
// ring of floats. The writer never waits: when it catches up with the reader
// it pushes the read position on, so the ring always holds the newest samples.
// The storage is made once, for the longest ring: a new capacity at prepare time
// only changes how much of it is used, so a reader on another thread never sees
// the memory move. Slots are relaxed atomics, so a writer that overtakes a slow
// reader hands it a newer value, never a torn one.
class SignalMonitoringFIFO
{
public:
    static constexpr std::uint32_t maximumCapacity = 192000;

    SignalMonitoringFIFO();

    // Clamped to maximumCapacity; empties the ring. For a quiet audio thread (prepare time).
    void setCapacity(std::uint32_t samples) noexcept;
    void clear() noexcept;
    std::uint32_t capacity() const noexcept { return size.load(std::memory_order_acquire); }

    // Audio thread.
    void append(const float* samples, std::uint32_t count) noexcept;

    // Reader thread: samples waiting, and taking up to maxCount of them.
    std::uint32_t available() const noexcept;
    std::uint32_t read(float* destination, std::uint32_t maxCount) noexcept;

private:
    std::unique_ptr<std::atomic<float>[]> buffer;
    std::atomic<std::uint32_t> size{0};
    std::atomic<std::uint32_t> writePosition{0};
    std::atomic<std::uint32_t> readPosition{0};
};

} // namespace oxa
