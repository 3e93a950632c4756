#include "tape/ThicknessFilter.h"

#include <cmath>

namespace oxa
{

namespace
{
    constexpr double poleFactor = 1.13639266981092;

    bool isUsable (double v) noexcept { return std::isfinite (v) && v > 0.0; }
} // namespace

void ThicknessFilter::prepare (double newSampleRate) noexcept
{
    if (isUsable (newSampleRate))
        sampleRate = newSampleRate;
    redesign();
    clear();
}

bool ThicknessFilter::setSpeed (double newSpeed) noexcept
{
    if (! isUsable (newSpeed))
        return false;
    speed = newSpeed;
    redesign();
    return true;
}

bool ThicknessFilter::setThickness (double newThickness) noexcept
{
    if (! isUsable (newThickness))
        return false;
    thickness = newThickness;
    redesign();
    return true;
}

void ThicknessFilter::redesign() noexcept
{
    // H(s) = r / (s + 1.136 r) through s = 2 fs (1 - 1/z) / (1 + 1/z).
    const double r = speed / thickness;
    const double k = 2.0 * sampleRate;
    const double norm = k + poleFactor * r;
    b0 = r / norm;
    b1 = b0;
    a1 = (poleFactor * r - k) / norm;
}

} // namespace oxa
