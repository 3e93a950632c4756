#include "tape/SignalMonitoringFIFO.h"

#include <algorithm>

namespace oxa
{

SignalMonitoringFIFO::SignalMonitoringFIFO() : buffer(new std::atomic<float>[maximumCapacity])
{
    for (std::uint32_t i = 0; i < maximumCapacity; ++i)
        buffer[i].store(0.0f, std::memory_order_relaxed);
}

void SignalMonitoringFIFO::setCapacity(std::uint32_t samples) noexcept
{
    clear();
    size.store(std::min(samples, maximumCapacity), std::memory_order_release);
}

void SignalMonitoringFIFO::clear() noexcept
{
    writePosition.store(0);
    readPosition.store(0);
}

void SignalMonitoringFIFO::append(const float* samples, std::uint32_t count) noexcept
{
    const std::uint32_t ring = size.load(std::memory_order_acquire);
    if (ring < 2 || samples == nullptr || count == 0)
        return;
    // More than fits: only the newest part can survive anyway.
    if (count >= ring)
    {
        samples += count - (ring - 1);
        count = ring - 1;
    }
    // Positions left over from a larger ring are brought inside this one.
    std::uint32_t write = writePosition.load(std::memory_order_relaxed) % ring;
    const std::uint32_t read = readPosition.load(std::memory_order_acquire) % ring;
    const std::uint32_t used = (write + ring - read) % ring;
    const bool overtakes = used + count >= ring;

    const std::uint32_t firstPart = std::min(count, ring - write);
    for (std::uint32_t i = 0; i < firstPart; ++i)
        buffer[write + i].store(samples[i], std::memory_order_relaxed);
    for (std::uint32_t i = firstPart; i < count; ++i)
        buffer[i - firstPart].store(samples[i], std::memory_order_relaxed);
    write = (write + count) % ring;
    writePosition.store(write, std::memory_order_release);
    if (overtakes)
        readPosition.store((write + 1) % ring, std::memory_order_release);
}

std::uint32_t SignalMonitoringFIFO::available() const noexcept
{
    const std::uint32_t ring = size.load(std::memory_order_acquire);
    if (ring == 0)
        return 0;
    const std::uint32_t write = writePosition.load(std::memory_order_acquire) % ring;
    const std::uint32_t read = readPosition.load(std::memory_order_acquire) % ring;
    return (write + ring - read) % ring;
}

std::uint32_t SignalMonitoringFIFO::read(float* destination, std::uint32_t maxCount) noexcept
{
    const std::uint32_t ring = size.load(std::memory_order_acquire);
    const std::uint32_t count = std::min(available(), maxCount);
    if (ring == 0 || count == 0 || destination == nullptr)
        return 0;
    const std::uint32_t read = readPosition.load(std::memory_order_acquire);
    for (std::uint32_t i = 0; i < count; ++i)
        destination[i] = buffer[(read + i) % ring].load(std::memory_order_relaxed);
    // If the writer moved the read position meanwhile, its choice stands.
    std::uint32_t expected = read;
    readPosition.compare_exchange_strong(expected, (read + count) % ring, std::memory_order_acq_rel);
    return count;
}

} // namespace oxa
