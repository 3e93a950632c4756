#pragma once

#include "tape/Lanes.h"

namespace oxa
{

// What one sample's evaluation of an envelope curve reads: its shape and its charge as
// the sample found it. F is a double for one curve, or Lanes for two curves side by side
// (those of two decks); the formulas are the same, so a lane computes bit for bit what
// one curve alone computes.
template <class F>
struct EnvelopeCurveTerms
{
    F c0 = 0.0, c1 = 1.0, c2 = 0.0, c3 = 0.0;
    F low = 0.0, high = 0.0, top = 0.0, slope = 0.001;
    F charge = 0.0;
    F chargeTerm = 0.0; // charge * g2, fixed within a sample
    F g1 = 0.0, invC = 0.0;

    // The charge step a candidate input x would take.
    template <class T>
    [[gnu::always_inline]] T chargeStep (T x) const noexcept
    {
        return magnitude (x) * g1 + chargeTerm;
    }

    // |x|: for one double as x < 0 ? -x : x, for lanes in one operation (the sign bit
    // cleared). The two differ only for -0.0 (and a NaN's sign): the charge step's zero may
    // then change sign, which no sum with the charge (never -0.0) can tell.
    static double magnitude (double x) noexcept { return x < 0.0 ? -x : x; }
    template <class T>
    static T magnitude (T x) noexcept
    {
        return abs (x);
    }

    template <class T>
    [[gnu::always_inline]] T levelFor (T x) const noexcept
    {
        return (chargeStep (x) * 0.5 + charge) * invC;
    }

    // The curve for a level e.
    template <class T>
    [[gnu::always_inline]] T shape (T e) const noexcept
    {
        return select (e < low, e, select (e > high, (e - high) * slope + top, ((c3 * e + c2) * e + c1) * e + c0));
    }

    // The input scaled so that its level lands on the curve, leaving no trace.
    template <class T>
    [[gnu::always_inline]] T apply (T x) const noexcept
    {
        return applyWithStep (x, chargeStep (x));
    }

    // The level the curve reads (the follower's level times the square root of two) once a
    // charge step has been taken.
    template <class T>
    [[gnu::always_inline]] T levelAfter (T step) const noexcept
    {
        return (step * 0.5 + charge) * invC * 1.4142135623730951;
    }

    // apply() with the charge step already known.
    template <class T>
    [[gnu::always_inline]] T applyWithStep (T x, T step) const noexcept
    {
        const T e = levelAfter (step);
        return shape (e) * x / (e + 1e-16);
    }

    // apply() for curves whose level mostly lies above the knee (high > low): where every
    // lane does, shape() would pick the straight part, so the cubic is left out. The same
    // value bit for bit; the branch only pays where it is nearly always taken.
    // T is Lanes or a LaneGroup.
    template <class T>
    [[gnu::always_inline]] T applyMostlyAboveKnee (T x) const noexcept
    {
        return applyWithStepMostlyAboveKnee (x, chargeStep (x));
    }

    template <class T>
    [[gnu::always_inline]] T applyWithStepMostlyAboveKnee (T x, T step) const noexcept
    {
        const T e = levelAfter (step);
        const T shaped = (e > high).every() ? (e - high) * slope + top : shape (e);
        return shaped * x / (e + 1e-16);
    }
};

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
    void clear() noexcept { k.charge = delta = k.chargeTerm = 0.0; }

    // Level for a candidate input; stores the charge step that commit() would take.
    double follow (double x) noexcept
    {
        delta = k.chargeStep (x);
        return (delta * 0.5 + k.charge) * k.invC;
    }

    // The same level, leaving no trace; for one double or two in lanes.
    template <class T>
    T levelFor (T x) const noexcept
    {
        return k.levelFor (x);
    }

    template <class T>
    T shape (T e) const noexcept
    {
        return k.shape (e);
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
        outX = k.apply (x);
        outY = k.apply (y);
    }

    // applyPair with the candidates in the two lanes: the same results bit for bit.
    Lanes applyInLanes (Lanes x) const noexcept { return k.apply (x); }

    // The terms of two curves, one a lane, for evaluating both at once.
    static EnvelopeCurveTerms<Lanes> gather (const EnvelopeCurve& first, const EnvelopeCurve& second) noexcept
    {
        const EnvelopeCurveTerms<double>& a = first.k;
        const EnvelopeCurveTerms<double>& b = second.k;
        EnvelopeCurveTerms<Lanes> both;
        both.c0 = Lanes (a.c0, b.c0);
        both.c1 = Lanes (a.c1, b.c1);
        both.c2 = Lanes (a.c2, b.c2);
        both.c3 = Lanes (a.c3, b.c3);
        both.low = Lanes (a.low, b.low);
        both.high = Lanes (a.high, b.high);
        both.top = Lanes (a.top, b.top);
        both.slope = Lanes (a.slope, b.slope);
        both.charge = Lanes (a.charge, b.charge);
        both.chargeTerm = Lanes (a.chargeTerm, b.chargeTerm);
        both.g1 = Lanes (a.g1, b.g1);
        both.invC = Lanes (a.invC, b.invC);
        return both;
    }

    // What of gather() moves from sample to sample: the two curves' charges.
    static void gatherCharges (EnvelopeCurveTerms<Lanes>& both, const EnvelopeCurve& first,
                               const EnvelopeCurve& second) noexcept
    {
        both.charge = Lanes (first.k.charge, second.k.charge);
        both.chargeTerm = Lanes (first.k.chargeTerm, second.k.chargeTerm);
    }

    // applyTwo() through applyWithStepMostlyAboveKnee().
    static Lanes applyTwoMostlyAboveKnee (EnvelopeCurve& first, EnvelopeCurve& second,
                                          const EnvelopeCurveTerms<Lanes>& both, Lanes x) noexcept
    {
        const Lanes step = both.chargeStep (x);
        first.delta = step.first();
        second.delta = step.second();
        return both.applyWithStepMostlyAboveKnee (x, step);
    }

    // follow() on two curves at once, one a lane (both: their gathered terms); each keeps
    // the charge step its own follow() would keep.
    static Lanes followTwo (EnvelopeCurve& first, EnvelopeCurve& second, const EnvelopeCurveTerms<Lanes>& both,
                            Lanes x) noexcept
    {
        const Lanes step = both.chargeStep (x);
        first.delta = step.first();
        second.delta = step.second();
        return (step * 0.5 + both.charge) * both.invC;
    }

    // apply() on two curves at once, one a lane (both: their gathered terms); each keeps
    // the charge step its own apply() would keep.
    static Lanes applyTwo (EnvelopeCurve& first, EnvelopeCurve& second, const EnvelopeCurveTerms<Lanes>& both,
                           Lanes x) noexcept
    {
        const Lanes step = both.chargeStep (x);
        first.delta = step.first();
        second.delta = step.second();
        return both.applyWithStep (x, step);
    }

    void commit() noexcept
    {
        k.charge += delta;
        k.chargeTerm = k.charge * g2;
    }

    double getCharge() const noexcept { return k.charge; }
    double getLow() const noexcept { return k.low; }
    double getHigh() const noexcept { return k.high; }
    double getTop() const noexcept { return k.top; }

private:
    EnvelopeCurveTerms<double> k;
    double delta = 0.0;
    double g2 = 0.0;
};

} // namespace oxa
