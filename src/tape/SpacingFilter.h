#pragma once

namespace oxa
{

// Fifth-order direct-form IIR in double precision, designed by the bilinear
// transform of a rational prototype given in a normalised variable.
struct FifthOrderSection
{
    static constexpr int order = 5;

    double b[order + 1] {1.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    double a[order + 1] {1.0, 0.0, 0.0, 0.0, 0.0, 0.0}; // a[0] is always 1
    double xHistory[order] {};
    double yHistory[order] {};

    // numerator and denominator hold the coefficients of sigma^0..sigma^5 of a
    // prototype H(sigma), sigma = s / scale. Histories are kept.
    void design (const double* numerator, const double* denominator, double scale, double sampleRate) noexcept;
    void clear() noexcept;

    double process (double x) noexcept
    {
        double y = b[0] * x;
        for (int i = 0; i < order; ++i)
            y += b[i + 1] * xHistory[i] - a[i + 1] * yHistory[i];

        for (int i = order - 1; i > 0; --i)
        {
            xHistory[i] = xHistory[i - 1];
            yHistory[i] = yHistory[i - 1];
        }
        xHistory[0] = x;
        yHistory[0] = y;
        return y;
    }
};

// Loss from the gap between head and tape: a fit of exp(-k d), k = 2 pi f / speed.
class SpacingFilter
{
public:
    void prepare (double sampleRate) noexcept;
    void clear() noexcept { section.clear(); }

    // Both return false and keep the old design for values that are not positive and finite.
    bool setSpeed (double newSpeed) noexcept;
    bool setSpacing (double newSpacing) noexcept;

    double getSpeed() const noexcept { return speed; }
    double getSpacing() const noexcept { return spacing; }
    const FifthOrderSection& getSection() const noexcept { return section; }

    double process (double x) noexcept { return section.process (x); }

private:
    void redesign() noexcept;

    double sampleRate = 48000.0;
    double speed = 1.0;
    double spacing = 0.00001;
    FifthOrderSection section;
};

} // namespace oxa
