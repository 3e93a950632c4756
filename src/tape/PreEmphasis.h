#pragma once

#include "tape/Lanes.h"

#include <cmath>

namespace oxa
{

// First-order shelf b (s + a) / (s + a b) through the bilinear transform: unity at low
// frequency, b times at high frequency. T is a double, or two in lanes for two corners.
template <class T>
struct BasicShelfCoefficients
{
    T c0 = 1.0, c1 = 0.0, d0 = 1.0, d1 = 0.0;

    void design (T a, double b, double sampleRate) noexcept
    {
        c0 = a * b + 2.0 * b * sampleRate;
        c1 = a * b - 2.0 * b * sampleRate;
        d0 = a * b + 2.0 * sampleRate;
        d1 = a * b - 2.0 * sampleRate;
    }
};

using ShelfCoefficients = BasicShelfCoefficients<double>;

// The fixed pre-emphasis pair: the encoder lifts highs twofold, the decoder is its exact
// inverse. Each side keeps its own history.
class PreEmphasis
{
public:
    static constexpr double corner = 10000.0;
    static constexpr double lift = 2.0;

    void prepare (double sampleRate) noexcept;
    void reset() noexcept { encoderX1 = encoderY1 = decoderX1 = decoderY1 = 0.0; }

    // Selecting this type on either side clears the histories of both.
    void clearEncoder() noexcept { reset(); }
    void clearDecoder() noexcept { reset(); }

    // A non-finite sample passes through and leaves the history as it was.
    double encode (double x) noexcept
    {
        if (! std::isfinite (x))
            return x;
        const double y = (shelf.c0 * x + shelf.c1 * encoderX1 - shelf.d1 * encoderY1) / shelf.d0;
        encoderX1 = x;
        encoderY1 = y;
        return y;
    }

    double decode (double x) noexcept
    {
        if (! std::isfinite (x))
            return x;
        const double y = (shelf.d0 * x + shelf.d1 * decoderX1 - shelf.c1 * decoderY1) / shelf.c0;
        decoderX1 = x;
        decoderY1 = y;
        return y;
    }

private:
    ShelfCoefficients shelf;
    double encoderX1 = 0.0, encoderY1 = 0.0;
    double decoderX1 = 0.0, decoderY1 = 0.0;
};

} // namespace oxa
