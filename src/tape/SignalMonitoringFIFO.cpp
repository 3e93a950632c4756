#include "tape/SignalMonitoringFIFO.h"

#include <algorithm>

namespace oxa
{

void SignalMonitoringFIFO::setCapacity(std::uint32_t samples)
{
    buffer.assign(samples, 0.0f);
    clear();
}

void SignalMonitoringFIFO::clear() noexcept
{
    writePosition.store(0);
    readPosition.store(0);
}

void SignalMonitoringFIFO::append(const float* samples, std::uint32_t count) noexcept
{
    const auto size = static_cast<std::uint32_t>(buffer.size());
    if (size < 2 || samples == nullptr || count == 0)
        return;
    // More than fits: only the newest part can survive anyway.
    if (count >= size)
    {
        samples += count - (size - 1);
        count = size - 1;
    }
    std::uint32_t write = writePosition.load(std::memory_order_relaxed);
    const std::uint32_t read = readPosition.load(std::memory_order_acquire);
    const std::uint32_t used = (write + size - read) % size;
    const bool overtakes = used + count >= size;

    const std::uint32_t firstPart = std::min(count, size - write);
    std::copy_n(samples, firstPart, buffer.data() + write);
    std::copy_n(samples + firstPart, count - firstPart, buffer.data());
    write = (write + count) % size;
    writePosition.store(write, std::memory_order_release);
    if (overtakes)
        readPosition.store((write + 1) % size, std::memory_order_release);
}

std::uint32_t SignalMonitoringFIFO::available() const noexcept
{
    const auto size = static_cast<std::uint32_t>(buffer.size());
    if (size == 0)
        return 0;
    const std::uint32_t write = writePosition.load(std::memory_order_acquire);
    const std::uint32_t read = readPosition.load(std::memory_order_acquire);
    return (write + size - read) % size;
}

std::uint32_t SignalMonitoringFIFO::read(float* destination, std::uint32_t maxCount) noexcept
{
    const auto size = static_cast<std::uint32_t>(buffer.size());
    const std::uint32_t count = std::min(available(), maxCount);
    if (count == 0 || destination == nullptr)
        return 0;
    const std::uint32_t read = readPosition.load(std::memory_order_acquire);
    for (std::uint32_t i = 0; i < count; ++i)
        destination[i] = buffer[(read + i) % size];
    // If the writer moved the read position meanwhile, its choice stands.
    std::uint32_t expected = read;
    readPosition.compare_exchange_strong(expected, (read + count) % size, std::memory_order_acq_rel);
    return count;
}

} // namespace oxa
