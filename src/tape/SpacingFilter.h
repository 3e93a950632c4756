#pragma once

namespace oxa
{

// Fifth-order direct-form IIR in double precision, designed by the bilinear
// transform of a rational prototype given in a normalised variable.
struct FifthOrderSection
{
    static constexpr int order = 5; // step() shifts exactly this many history entries

    double b[order + 1] {1.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    double a[order + 1] {1.0, 0.0, 0.0, 0.0, 0.0, 0.0}; // a[0] is always 1
    double xHistory[order] {};
    double yHistory[order] {};

    // numerator and denominator hold the coefficients of sigma^0..sigma^5 of a
    // prototype H(sigma), sigma = s / scale. Histories are kept.
    void design (const double* numerator, const double* denominator, double scale, double sampleRate) noexcept;
    void clear() noexcept;

    double process (double x) noexcept { return step (b, a, xHistory, yHistory, x); }

    // One sample with coefficients and histories of type T: a double, or lanes that hold
    // several decks' sections. The same operations in the same order either way, so a lane
    // gives what the plain section gives bit for bit. The histories shift by plain
    // assignments: a loop here is turned into a library memmove call per sample.
    template <class T>
    static T step (const T* b, const T* a, T* xHistory, T* yHistory, T x) noexcept
    {
        T y = b[0] * x;
        for (int i = 0; i < order; ++i)
            y = y + (b[i + 1] * xHistory[i] - a[i + 1] * yHistory[i]);

        xHistory[4] = xHistory[3];
        xHistory[3] = xHistory[2];
        xHistory[2] = xHistory[1];
        xHistory[1] = xHistory[0];
        xHistory[0] = x;
        yHistory[4] = yHistory[3];
        yHistory[3] = yHistory[2];
        yHistory[2] = yHistory[1];
        yHistory[1] = yHistory[0];
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
    friend class PlaybackChainsInLanes;
    void redesign() noexcept;

    double sampleRate = 48000.0;
    double speed = 1.0;
    double spacing = 0.00001;
    FifthOrderSection section;
};

} // namespace oxa
