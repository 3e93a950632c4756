#pragma once
// Documents print floats with eight significant digits, which cannot tell every pair
// of neighbouring floats apart. A value is stored as the float its own text reads back
// as, so that a saved and reopened project holds bit for bit what was played.

#include <charconv>
#include <cmath>

namespace oxa
{
inline float storedFloat(float value)
{
    if (!std::isfinite(value))
        return value;
    char text[32];
    const auto printed = std::to_chars(text, text + sizeof(text), value, std::chars_format::general, 8);
    float parsed = value;
    if (printed.ec == std::errc() && std::from_chars(text, printed.ptr, parsed).ec == std::errc())
        return parsed;
    return value;
}
} // namespace oxa
