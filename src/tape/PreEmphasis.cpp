#include "tape/PreEmphasis.h"

#include <cmath>

namespace oxa
{

void PreEmphasis::prepare (double sampleRate) noexcept
{
    if (std::isfinite (sampleRate) && sampleRate > 0.0)
        shelf.design (corner, lift, sampleRate);
    reset();
}

} // namespace oxa
