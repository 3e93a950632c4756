#include "tape/TrackWidthFilter.h"

#include <cmath>

namespace oxa
{

namespace
{
    constexpr double boostNumerator[6] {87.2832402693088,   586.690665242135,   577.310113826375,
                                        101.95851984677438, 3.2472423428792876, 0.0};
    constexpr double boostDenominator[6] {88.2679631465173,  712.453595591835,  1104.5545808559225,
                                          465.6727280770125, 50.13744942298344, 1.0};

    bool isUsable (double v) noexcept { return std::isfinite (v) && v > 0.0; }
} // namespace

void TrackWidthFilter::prepare (double newSampleRate) noexcept
{
    if (isUsable (newSampleRate))
        sampleRate = newSampleRate;
    redesign();
    clear();
}

bool TrackWidthFilter::setSpeed (double newSpeed) noexcept
{
    if (! isUsable (newSpeed))
        return false;
    speed = newSpeed;
    redesign();
    return true;
}

bool TrackWidthFilter::setRatio (double newRatio) noexcept
{
    if (! std::isfinite (newRatio) || newRatio <= 1.0)
        return false;
    ratio = newRatio;
    redesign();
    return true;
}

void TrackWidthFilter::redesign() noexcept
{
    // H = 1 + w N / D = (D + w N) / D.
    const double w = ratio - 1.0;
    double numerator[6];
    for (int i = 0; i < 6; ++i)
        numerator[i] = boostDenominator[i] + w * boostNumerator[i];
    section.design (numerator, boostDenominator, speed / (w * base), sampleRate);
}

} // namespace oxa
