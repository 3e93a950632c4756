#pragma once

#include "tape/Lanes.h"

namespace oxa
{

// A level follower (an RC charge pump) with a static gain curve: below `low` the signal
// passes, above `high` it is held near `top`, with a cubic between. The charge moves only
// in commit(), so a sample may be evaluated several times while an implicit equation is
// solved.
class EnvelopeCurve
{
public:
    // levelDb sets the curve's scale, ratio its spread around it.
    void setCurve (double levelDb, double ratio) noexcept;
    void setEnvelope (double resistance, double capacitance, double sampleRate) noexcept;
    void clear() noexcept { charge = delta = chargeTerm = 0.0; }

    // Level for a candidate input; stores the charge step that commit() would take.
    double follow (double x) noexcept
    {
        delta = (x < 0.0 ? -x : x) * g1 + chargeTerm;
        return (delta * 0.5 + charge) * invC;
    }

    // The same level, leaving no trace; for one double or two in lanes.
    template <class T>
    T levelFor (T x) const noexcept
    {
        const T step = select (x < 0.0, -x, x) * g1 + chargeTerm;
        return (step * 0.5 + charge) * invC;
    }

    // The curve for a level e.
    template <class T>
    T shape (T e) const noexcept
    {
        return select (e < low, e, select (e > high, (e - high) * slope + top, ((c3 * e + c2) * e + c1) * e + c0));
    }

    // The input scaled so that its level lands on the curve.
    double apply (double x) noexcept
    {
        const double e = follow (x) * 1.4142135623730951;
        return shape (e) * x / (e + 1e-16);
    }

    // apply() for two candidates at once, leaving no trace: the two chains are
    // independent, so the processor can overlap them.
    void applyPair (double x, double y, double& outX, double& outY) const noexcept
    {
        const double eX = levelFor (x) * 1.4142135623730951;
        const double eY = levelFor (y) * 1.4142135623730951;
        outX = shape (eX) * x / (eX + 1e-16);
        outY = shape (eY) * y / (eY + 1e-16);
    }

    // applyPair with the candidates in the two lanes: the same results bit for bit.
    Lanes applyInLanes (Lanes x) const noexcept
    {
        const Lanes e = levelFor (x) * 1.4142135623730951;
        return shape (e) * x / (e + 1e-16);
    }

    void commit() noexcept
    {
        charge += delta;
        chargeTerm = charge * g2;
    }

    double getCharge() const noexcept { return charge; }
    double getLow() const noexcept { return low; }
    double getHigh() const noexcept { return high; }
    double getTop() const noexcept { return top; }

private:
    double c0 = 0.0, c1 = 1.0, c2 = 0.0, c3 = 0.0;
    double low = 0.0, high = 0.0, top = 0.0, slope = 0.001;
    double charge = 0.0, delta = 0.0;
    double chargeTerm = 0.0; // charge * g2, fixed within a sample
    double g1 = 0.0, g2 = 0.0, invC = 0.0;
};

} // namespace oxa
