#include "tape/SpacingFilter.h"

#include <cmath>

namespace oxa
{

namespace
{
    constexpr double spacingNumerator[6] {32.1662982638662, 0.0, 0.0, 0.0, 0.0, 0.0};
    constexpr double spacingDenominator[6] {31.9140096763945,   121.5511207267445,  120.43574323431775,
                                            52.92163255906025,  11.328868660114313, 1.0};

    bool isUsable (double v) noexcept { return std::isfinite (v) && v > 0.0; }

    // Coefficients of (1 - x)^down * (1 + x)^up in powers of x.
    void bilinearTerm (int down, int up, double* out) noexcept
    {
        double poly[FifthOrderSection::order + 1] {1.0};
        int degree = 0;
        auto multiply = [&] (double sign)
        {
            for (int i = degree + 1; i > 0; --i)
                poly[i] += sign * poly[i - 1];
            ++degree;
        };
        for (int i = 0; i < down; ++i)
            multiply (-1.0);
        for (int i = 0; i < up; ++i)
            multiply (1.0);
        for (int i = 0; i <= FifthOrderSection::order; ++i)
            out[i] = poly[i];
    }
} // namespace

void FifthOrderSection::design (const double* numerator, const double* denominator, double scale,
                                double sampleRate) noexcept
{
    // sigma = (2 fs / scale) (1 - 1/z) / (1 + 1/z); multiply through by (1 + 1/z)^5.
    const double c = 2.0 * sampleRate / scale;
    double newB[order + 1] {};
    double newA[order + 1] {};
    double power = 1.0;
    for (int k = 0; k <= order; ++k)
    {
        double term[order + 1];
        bilinearTerm (k, order - k, term);
        for (int i = 0; i <= order; ++i)
        {
            newB[i] += numerator[k] * power * term[i];
            newA[i] += denominator[k] * power * term[i];
        }
        power *= c;
    }

    if (! std::isfinite (newA[0]) || newA[0] == 0.0)
        return;

    for (int i = 0; i <= order; ++i)
    {
        b[i] = newB[i] / newA[0];
        a[i] = newA[i] / newA[0];
    }
    a[0] = 1.0;
}

void FifthOrderSection::clear() noexcept
{
    for (int i = 0; i < order; ++i)
        xHistory[i] = yHistory[i] = 0.0;
}

void SpacingFilter::prepare (double newSampleRate) noexcept
{
    if (isUsable (newSampleRate))
        sampleRate = newSampleRate;
    redesign();
    clear();
}

bool SpacingFilter::setSpeed (double newSpeed) noexcept
{
    if (! isUsable (newSpeed))
        return false;
    speed = newSpeed;
    redesign();
    return true;
}

bool SpacingFilter::setSpacing (double newSpacing) noexcept
{
    if (! isUsable (newSpacing))
        return false;
    spacing = newSpacing;
    redesign();
    return true;
}

void SpacingFilter::redesign() noexcept
{
    section.design (spacingNumerator, spacingDenominator, speed / spacing, sampleRate);
}

} // namespace oxa
