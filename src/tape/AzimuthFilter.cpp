#include "tape/AzimuthFilter.h"

#include <algorithm>
#include <cmath>

namespace oxa
{

namespace
{
    constexpr double pi = 3.14159265358979323846;

    bool isUsable (double v) noexcept { return std::isfinite (v) && v > 0.0; }
} // namespace

void AzimuthFilter::prepare (double newSampleRate) noexcept
{
    if (isUsable (newSampleRate))
        sampleRate = newSampleRate;
    redesign();
    clear();
}

void AzimuthFilter::clear() noexcept
{
    std::fill (ring, ring + ringSize, 0.0);
    position = 0;
    y1 = y2 = 0.0;
}

bool AzimuthFilter::setSpeed (double newSpeed) noexcept
{
    if (! isUsable (newSpeed))
        return false;
    speed = newSpeed;
    redesign();
    return true;
}

bool AzimuthFilter::setAzimuth (double newAzimuth) noexcept
{
    if (! isUsable (newAzimuth))
        return false;
    azimuth = newAzimuth;
    redesign();
    return true;
}

void AzimuthFilter::redesign() noexcept
{
    // Beyond the ring (sample rates above 192 kHz) the mean is shortened rather than
    // reading outside it.
    const double maxLength = static_cast<double> (ringSize) - 0.001;
    double l = std::max (azimuth / speed * sampleRate / pi, 1.0);
    if (! (l <= maxLength))
        l = maxLength;

    length = l;
    delay = static_cast<uint32_t> (l);
    const double fraction = l - static_cast<double> (delay);
    g0 = 1.0 / l;
    g1 = (fraction - 1.0) / l;
    g2 = -fraction / l;
}

} // namespace oxa
