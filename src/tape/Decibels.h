#pragma once

#include <cmath>

namespace oxa
{

// Level conversions shared by the deck stages and the parameter setters.
// Single precision on purpose: parameter values are floats and the stored
// gains must match what the setters computed.
inline float dbToLinear(float db) noexcept
{
    return std::exp(db * 0.115129254758358f);
}

inline float linearToDb(float linear) noexcept
{
    if (!(linear >= 1e-20f))
        return -400.0f;
    return std::log(linear) * 8.6858892f;
}

} // namespace oxa
