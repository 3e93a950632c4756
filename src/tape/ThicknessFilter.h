#pragma once

namespace oxa
{

// Loss from the depth of the magnetic layer: a first-order fit of
// (1 - exp(-k t)) / (k t), k = 2 pi f / speed.
class ThicknessFilter
{
public:
    void prepare (double sampleRate) noexcept;
    void clear() noexcept { x1 = y1 = 0.0; }

    // Both return false and keep the old design for values that are not positive and finite.
    bool setSpeed (double newSpeed) noexcept;
    bool setThickness (double newThickness) noexcept;

    double getSpeed() const noexcept { return speed; }
    double getThickness() const noexcept { return thickness; }

    double process (double x) noexcept { return step (b0, b1, a1, x1, y1, x); }

    // One sample for a double or for lanes of several decks, in the same operations.
    template <class T>
    static T step (T b0, T b1, T a1, T& x1, T& y1, T x) noexcept
    {
        const T y = b0 * x + b1 * x1 - a1 * y1;
        x1 = x;
        y1 = y;
        return y;
    }

private:
    friend class PlaybackChainsInLanes;
    void redesign() noexcept;

    double sampleRate = 48000.0;
    double speed = 1.0;
    double thickness = 0.000005;
    double b0 = 1.0, b1 = 0.0, a1 = 0.0;
    double x1 = 0.0, y1 = 0.0;
};

} // namespace oxa
