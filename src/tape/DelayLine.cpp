#include "tape/DelayLine.h"

#include <algorithm>
#include <cmath>

namespace oxa
{

void DelayLine::configure(std::uint32_t maxBlock, std::uint32_t wantedMaxDelay)
{
    overlap = maxBlock + 3;
    maxDelay = std::max(wantedMaxDelay, overlap);
    length = maxDelay + overlap;
    allocated = maxDelay + 2 * overlap;
    buffer.assign(allocated, 0.0f);
    buffer.shrink_to_fit();
    writePosition = 0;
}

void DelayLine::clear() noexcept
{
    std::fill(buffer.begin(), buffer.end(), 0.0f);
    writePosition = 0;
}

void DelayLine::write(const float* samples, std::uint32_t count) noexcept
{
    if (length == 0)
        return;
    float* data = buffer.data();
    std::uint32_t pos = writePosition;
    for (std::uint32_t k = 0; k < count; ++k)
    {
        data[pos] = samples[k];
        // The start of the ring is mirrored behind its end.
        if (pos < overlap)
            data[pos + length] = samples[k];
        if (++pos == length)
            pos = 0;
    }
}

void DelayLine::advance(std::uint32_t count) noexcept
{
    if (length != 0)
        writePosition = static_cast<std::uint32_t>((static_cast<std::uint64_t>(writePosition) + count) % length);
}

float DelayLine::at(std::int64_t index) const noexcept
{
    const std::int64_t n = length;
    index %= n;
    if (index < 0)
        index += n;
    return buffer[static_cast<std::size_t>(index)];
}

float DelayLine::sampleAt(double position) const noexcept
{
    const double whole = std::floor(position);
    const auto i = static_cast<std::int64_t>(whole);
    const float f = static_cast<float>(position - whole);
    switch (interpolation)
    {
        case nearest:
            return at(i);
        case linear:
            return at(i) + f * (at(i + 1) - at(i));
        case catmullRom:
        {
            const float y0 = at(i - 1), y1 = at(i), y2 = at(i + 1), y3 = at(i + 2);
            const float c1 = 0.5f * (y2 - y0);
            const float c2 = y0 - 2.5f * y1 + 2.0f * y2 - 0.5f * y3;
            const float c3 = 0.5f * (y3 - y0) + 1.5f * (y1 - y2);
            return ((c3 * f + c2) * f + c1) * f + y1;
        }
        default:
        {
            const float y0 = at(i - 1), y1 = at(i), y2 = at(i + 1), y3 = at(i + 2);
            const float c0 = 0.16666667f * (y0 + y2) + 0.6666667f * y1;
            const float c1 = 0.5f * (y2 - y0);
            const float c2 = 0.5f * (y0 + y2) - y1;
            const float c3 = 0.5f * (y1 - y2) + 0.16666667f * (y3 - y0);
            return ((c3 * f + c2) * f + c1) * f + c0;
        }
    }
}

void DelayLine::read(float* out, double startDelay, double endDelay, std::uint32_t count) const noexcept
{
    if (length == 0 || count == 0)
        return;
    const bool constant = startDelay == endDelay;
    if (constant && count <= overlap && startDelay >= 0.0 && startDelay <= maxDelay
        && startDelay == std::floor(startDelay))
    {
        // Thanks to the mirrored tail this never wraps within a block.
        const auto delay = static_cast<std::uint32_t>(startDelay);
        const std::uint32_t start = (writePosition + length - delay) % length;
        std::copy_n(buffer.data() + start, count, out);
        return;
    }
    const double slope = (endDelay - startDelay) / count;
    for (std::uint32_t k = 0; k < count; ++k)
    {
        double delay = startDelay + slope * k;
        delay = std::isfinite(delay) ? std::clamp(delay, 0.0, static_cast<double>(maxDelay)) : 0.0;
        out[k] = sampleAt(static_cast<double>(writePosition) + k - delay);
    }
}

} // namespace oxa
