#pragma once

#include <cstdint>

namespace oxa
{

// A sample-counted straight line between two float values.
struct LinearRamp
{
    float from = 0.0f;
    float to = 0.0f;
    std::int32_t length = 0;
    std::int32_t position = 0;

    float value() const noexcept
    {
        if (length < 1)
            return to;
        return static_cast<float>(position) / static_cast<float>(length) * (to - from) + from;
    }

    // True while value() still moves with advance().
    bool isMoving() const noexcept { return length >= 1 && position < length; }

    void advance(std::int32_t samples) noexcept
    {
        const std::int32_t remaining = length - position;
        const std::int32_t step = samples < remaining ? samples : remaining;
        if (step > 0)
            position += step;
    }

    void set(float v) noexcept
    {
        from = to = v;
        length = position = 0;
    }

    void rampTo(float v, std::int32_t samples) noexcept
    {
        const float current = value();
        if (samples == 0 || v == current)
        {
            from = v;
            samples = 0;
        }
        else
        {
            from = current;
        }
        to = v;
        length = samples;
        position = 0;
    }
};

} // namespace oxa
