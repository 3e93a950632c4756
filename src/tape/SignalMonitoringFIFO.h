#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

namespace oxa
{

// One writer (the audio thread) and one reader (the editor's timer) share a
// ring of floats. The writer never waits: when it catches up with the reader
// it pushes the read position on, so the ring always holds the newest samples.
class SignalMonitoringFIFO
{
public:
    // Resizing and clearing are for a quiet audio thread (prepare time).
    void setCapacity(std::uint32_t samples);
    void clear() noexcept;
    std::uint32_t capacity() const noexcept { return static_cast<std::uint32_t>(buffer.size()); }

    // Audio thread.
    void append(const float* samples, std::uint32_t count) noexcept;

    // Reader thread: samples waiting, and taking up to maxCount of them.
    std::uint32_t available() const noexcept;
    std::uint32_t read(float* destination, std::uint32_t maxCount) noexcept;

private:
    std::vector<float> buffer;
    std::atomic<std::uint32_t> writePosition{0};
    std::atomic<std::uint32_t> readPosition{0};
};

} // namespace oxa
