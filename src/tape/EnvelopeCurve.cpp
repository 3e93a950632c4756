#include "tape/EnvelopeCurve.h"

#include <cmath>

namespace oxa
{

void EnvelopeCurve::setCurve (double levelDb, double ratio) noexcept
{
    const double level = std::exp (static_cast<float> (levelDb) * 0.115129254758358f);
    double& low = k.low;
    double& high = k.high;
    double& top = k.top;
    double& slope = k.slope;
    double& c0 = k.c0;
    double& c1 = k.c1;
    double& c2 = k.c2;
    double& c3 = k.c3;
    low = 0.7 * ratio * level;
    high = 0.7 * level / ratio;
    top = 0.96 * level;
    slope = 0.001;

    // Hermite cubic from (low, low) with slope 1 to (high, top) with `slope`, written
    // first around `low`, then expanded into powers of e.
    const double h = high - low;
    if (! (std::abs (h) > 0.0) || ! std::isfinite (h))
    {
        c0 = c2 = c3 = 0.0;
        c1 = 1.0;
        return;
    }
    const double rise = top - low - h;
    const double bend = slope - 1.0;
    const double b3 = (bend * h - 2.0 * rise) / (h * h * h);
    const double b2 = (3.0 * rise - bend * h) / (h * h);
    c3 = b3;
    c2 = b2 - 3.0 * b3 * low;
    c1 = 1.0 - 2.0 * b2 * low + 3.0 * b3 * low * low;
    c0 = b2 * low * low - b3 * low * low * low;
}

void EnvelopeCurve::setEnvelope (double resistance, double capacitance, double sampleRate) noexcept
{
    const double w = 1.0 / (2.0 * resistance * capacitance);
    k.g1 = 1.0 / ((w + sampleRate) * resistance);
    g2 = -1.0 / (capacitance * resistance * (w + sampleRate));
    k.invC = 1.0 / capacitance;
    k.chargeTerm = k.charge * g2;
}

} // namespace oxa
