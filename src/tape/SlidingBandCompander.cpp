#include "tape/SlidingBandCompander.h"

#include <algorithm>
#include <cmath>

namespace oxa
{

namespace
{
    constexpr double capacitance = 1e-9;
    constexpr double curveResistance = 5000000.0;
    constexpr double levelResistance = 2061296.98;
    constexpr double fixedCorner = 7511.78831;
    constexpr double fixedLift = 21.989016;
    constexpr double slidingLift = 5.92380188;
    constexpr double maxCorner = 70000.0;
    constexpr double step = 1e-6;
    constexpr int iterations = 2;

    // The corner of the sliding shelf from the sidechain level.
    template <class T>
    [[gnu::always_inline]] inline T slidingCorner (T e) noexcept
    {
        const T r = (((89683.3046 * e - 310543.2) * e + 309734.797) * e - 22716.5427) * e + 1956.73632;
        return minWithLimit (r, T (maxCorner));
    }

    // The fixed shelf's output for candidate u; F and T are doubles or lanes.
    template <class T, class F>
    [[gnu::always_inline]] inline T fixedStageOutput (T u, F c0, F history, F d0) noexcept
    {
        return (c0 * u + history) / d0;
    }

    // The sliding shelf's output for stage input i, its corner set by the level.
    template <class T, class F>
    [[gnu::always_inline]] inline T slidingStageOutput (T levelOfT, T i, F i1, F o1,
                                                        const SlidingShelfDesign<F>& design) noexcept
    {
        const BasicShelfCoefficients<T> sliding = design.at (slidingCorner (levelOfT));
        return (sliding.c1 * i1 + sliding.c0 * i - sliding.d1 * o1) / sliding.d0;
    }

    // One Newton step on u = g(u) with a forward-difference slope; true once converged.
    // sidechainPair evaluates g at u and u + step.
    template <class SidechainPair>
    bool solveStep (double& u, SidechainPair sidechainPair) noexcept
    {
        double at, beside;
        sidechainPair (u, u + step, at, beside);
        const double error = u - at;
        const double correction = error / ((u + step - beside - error) * 1e6 + 1e-16);
        u -= correction;
        return std::abs (correction) <= step;
    }

    // The last value stands if the few steps allowed do not converge.
    template <class SidechainPair>
    double solve (double start, SidechainPair sidechainPair) noexcept
    {
        double u = start;
        for (int n = 0; n < iterations; ++n)
            if (solveStep (u, sidechainPair))
                break;
        return u;
    }

    // solve() for four equations (those of four decks), two a register: every lane steps
    // exactly as solve() steps its equation alone, and keeps its value once converged.
    // pairOf(p, u) evaluates equations 2p and 2p + 1 at the candidates u (both trial
    // points); u holds the starts and gets the results.
    template <class PairOf>
    void solveFourInLanes (double* u, const bool* solvable, PairOf pairOf) noexcept
    {
        Lanes x[2];
        LaneMask running[2];
        for (int p = 0; p < 2; ++p)
        {
            x[p] = Lanes (u[2 * p], u[2 * p + 1]);
            running[p] = LaneMask::of (solvable[2 * p], solvable[2 * p + 1]);
        }
        for (int n = 0; n < iterations; ++n)
        {
            if (! (running[0].any() || running[1].any()))
                break;
            for (int p = 0; p < 2; ++p)
            {
                if (! running[p].any())
                    continue;
                // Both trial points in one pass, their chains side by side.
                LaneGroup<2> trials;
                trials.v[0] = x[p];
                trials.v[1] = x[p] + step;
                const LaneGroup<2> tried = pairOf (p, trials);
                const Lanes at = tried.v[0];
                const Lanes beside = tried.v[1];
                const Lanes error = x[p] - at;
                const Lanes correction = error / ((x[p] + step - beside - error) * 1e6 + 1e-16);
                x[p] = running[p].select (x[p] - correction, x[p]);
                running[p] = running[p] && abs (correction) > Lanes (step);
            }
        }
        for (int p = 0; p < 2; ++p)
        {
            u[2 * p] = x[p].first();
            u[2 * p + 1] = x[p].second();
        }
    }
} // namespace

SlidingBandSidechain::SlidingBandSidechain() noexcept
{
    slidingShelf.prepare (slidingLift, 48000.0);
}

void SlidingBandSidechain::prepare (double fs) noexcept
{
    slidingShelf.prepare (slidingLift, fs);
    curve.setCurve (-10.0, 0.3);
    curve.setEnvelope (curveResistance, capacitance, fs);
    level.setEnvelope (levelResistance, capacitance, fs);
    fixedStage.design (fixedCorner, fixedLift, fs);
    clear();
}

void SlidingBandSidechain::clear() noexcept
{
    curve.clear();
    level.clear();
    u1 = t1 = i1 = o1 = fixedHistory = 0.0;
    candidateU = candidateT = candidateI = candidateO = 0.0;
}

template <class T>
T SlidingBandSidechain::slidingStage (T levelOfT, T i) const noexcept
{
    return slidingStageOutput (levelOfT, i, i1, o1, slidingShelf);
}

double SlidingBandSidechain::evaluate (double u, double i) noexcept
{
    const double t = fixedStageOutput (u, fixedStage.c0, fixedHistory, fixedStage.d0);
    const double o = slidingStage (level.follow (t), i); // follow keeps the charge step for commit()

    candidateU = u;
    candidateT = t;
    candidateI = i;
    candidateO = o;
    return o;
}

void SlidingBandSidechain::evaluatePair (double u, double v, double iu, double iv, double& ou,
                                         double& ov) const noexcept
{
    const double tu = fixedStageOutput (u, fixedStage.c0, fixedHistory, fixedStage.d0);
    const double tv = fixedStageOutput (v, fixedStage.c0, fixedHistory, fixedStage.d0);
    ou = slidingStage (level.levelFor (tu), iu);
    ov = slidingStage (level.levelFor (tv), iv);
}

Lanes SlidingBandSidechain::evaluateInLanes (Lanes u, Lanes i) const noexcept
{
    const Lanes t = fixedStageOutput (u, fixedStage.c0, fixedHistory, fixedStage.d0);
    return slidingStage (level.levelFor (t), i);
}

SlidingBandSidechain::TwoInLanes::TwoInLanes (const SlidingBandSidechain& first,
                                              const SlidingBandSidechain& second) noexcept
    : fixedC0 (first.fixedStage.c0, second.fixedStage.c0),
      fixedD0 (first.fixedStage.d0, second.fixedStage.d0),
      fixedHistory (first.fixedHistory, second.fixedHistory),
      i1 (first.i1, second.i1),
      o1 (first.o1, second.o1),
      level (EnvelopeCurve::gather (first.level, second.level)),
      curve (EnvelopeCurve::gather (first.curve, second.curve)),
      slidingShelf {Lanes (first.slidingShelf.lift, second.slidingShelf.lift),
                    Lanes (first.slidingShelf.liftedRate, second.slidingShelf.liftedRate),
                    Lanes (first.slidingShelf.rate, second.slidingShelf.rate)}
{
}

void SlidingBandSidechain::TwoInLanes::refresh (const SlidingBandSidechain& first,
                                                const SlidingBandSidechain& second) noexcept
{
    fixedHistory = Lanes (first.fixedHistory, second.fixedHistory);
    i1 = Lanes (first.i1, second.i1);
    o1 = Lanes (first.o1, second.o1);
    EnvelopeCurve::gatherCharges (level, first.level, second.level);
    EnvelopeCurve::gatherCharges (curve, first.curve, second.curve);
}

template <class T>
[[gnu::always_inline]] inline T SlidingBandSidechain::TwoInLanes::evaluate (T u, T i) const noexcept
{
    const T t = fixedStageOutput (u, fixedC0, fixedHistory, fixedD0);
    return slidingStageOutput (level.levelFor (t), i, i1, o1, slidingShelf);
}

Lanes SlidingBandSidechain::TwoInLanes::evaluateInto (SlidingBandSidechain& first, SlidingBandSidechain& second,
                                                      Lanes u, Lanes i) const noexcept
{
    const Lanes t = fixedStageOutput (u, fixedC0, fixedHistory, fixedD0);
    const Lanes o = slidingStageOutput (EnvelopeCurve::followTwo (first.level, second.level, level, t), i, i1, o1,
                                        slidingShelf);
    first.candidateU = u.first();
    second.candidateU = u.second();
    first.candidateT = t.first();
    second.candidateT = t.second();
    first.candidateI = i.first();
    second.candidateI = i.second();
    first.candidateO = o.first();
    second.candidateO = o.second();
    return o;
}

void SlidingBandSidechain::commit() noexcept
{
    i1 = candidateI;
    o1 = candidateO;
    u1 = candidateU;
    t1 = candidateT;
    fixedHistory = fixedStage.c1 * u1 - fixedStage.d1 * t1;
    curve.commit();
    level.commit();
}

void SlidingBandCompander::prepare (double sampleRate) noexcept
{
    if (! (std::isfinite (sampleRate) && sampleRate > 0.0))
        return;
    encoder.prepare (sampleRate);
    decoder.prepare (sampleRate);
    reset();
}

void SlidingBandCompander::reset() noexcept
{
    encoder.clear();
    decoder.clear();
    encoder.solution = decoder.solution = 0.0;
}

double SlidingBandCompander::encode (double x) noexcept
{
    return encodeWith<false> (x);
}

double SlidingBandCompander::encodeInLanes (double x) noexcept
{
    return encodeWith<true> (x);
}

double SlidingBandCompander::decode (double v) noexcept
{
    return decodeWith<false> (v);
}

double SlidingBandCompander::decodeInLanes (double v) noexcept
{
    return decodeWith<true> (v);
}

template <bool InLanes>
void SlidingBandCompander::encoderPair (double x, double a, double b, double& ga, double& gb) noexcept
{
    if constexpr (InLanes)
    {
        const Lanes out = encoder.evaluateInLanes (Lanes (a, b), Lanes (x));
        ga = out.first();
        gb = out.second();
    }
    else
    {
        encoder.evaluatePair (a, b, x, x, ga, gb);
    }
}

template <bool InLanes>
void SlidingBandCompander::decoderPair (double v, double a, double b, double& ga, double& gb) noexcept
{
    EnvelopeCurve& curve = decoder.getCurve();
    if constexpr (InLanes)
    {
        const Lanes candidates (a, b);
        const Lanes out = decoder.evaluateInLanes (candidates, v - curve.applyInLanes (candidates));
        ga = out.first();
        gb = out.second();
    }
    else
    {
        double curvedA, curvedB;
        curve.applyPair (a, b, curvedA, curvedB);
        decoder.evaluatePair (a, b, v - curvedA, v - curvedB, ga, gb);
    }
}

double SlidingBandCompander::finishEncode (double x, double u) noexcept
{
    SlidingBandSidechain& side = encoder;
    side.solution = u;
    side.evaluate (u, x);
    const double y = x + side.getCurve().apply (u);
    side.commit();
    return y;
}

double SlidingBandCompander::finishDecode (double v, double u) noexcept
{
    SlidingBandSidechain& side = decoder;
    side.solution = u;
    const double y = v - side.getCurve().apply (u);
    side.evaluate (u, y);
    side.commit();
    return y;
}

Lanes SlidingBandCompander::finishEncodeTwo (SlidingBandCompander& first, SlidingBandCompander& second,
                                             const SlidingBandSidechain::TwoInLanes& sides, Lanes x, Lanes u) noexcept
{
    first.encoder.solution = u.first();
    second.encoder.solution = u.second();
    sides.evaluateInto (first.encoder, second.encoder, u, x);
    const Lanes y = x + sides.applyCurveInto (first.encoder, second.encoder, u);
    first.encoder.commit();
    second.encoder.commit();
    return y;
}

Lanes SlidingBandCompander::finishDecodeTwo (SlidingBandCompander& first, SlidingBandCompander& second,
                                             const SlidingBandSidechain::TwoInLanes& sides, Lanes v, Lanes u) noexcept
{
    first.decoder.solution = u.first();
    second.decoder.solution = u.second();
    const Lanes y = v - sides.applyCurveInto (first.decoder, second.decoder, u);
    sides.evaluateInto (first.decoder, second.decoder, u, y);
    first.decoder.commit();
    second.decoder.commit();
    return y;
}

template <bool InLanes>
double SlidingBandCompander::encodeWith (double x) noexcept
{
    if (! std::isfinite (x))
        return x;
    const double u = solve (encoder.solution, [&] (double a, double b, double& ga, double& gb)
                            { encoderPair<InLanes> (x, a, b, ga, gb); });
    return finishEncode (x, u);
}

template <bool InLanes>
double SlidingBandCompander::decodeWith (double v) noexcept
{
    if (! std::isfinite (v))
        return v;
    const double u = solve (decoder.solution, [&] (double a, double b, double& ga, double& gb)
                            { decoderPair<InLanes> (v, a, b, ga, gb); });
    return finishDecode (v, u);
}

void SlidingBandCompander::encodeFourInLanes (SlidingBandCompander* const* companders, double* x) noexcept
{
    SlidingBandSidechain::TwoInLanes sides[] = {encoderLanes (*companders[0], *companders[1]),
                                                encoderLanes (*companders[2], *companders[3])};
    encodeFourInLanes (companders, x, sides);
}

void SlidingBandCompander::encodeFourInLanes (SlidingBandCompander* const* companders, double* x,
                                              SlidingBandSidechain::TwoInLanes* sides) noexcept
{
    double u[4];
    bool finite[4];
    for (int d = 0; d < 4; ++d)
    {
        finite[d] = std::isfinite (x[d]);
        u[d] = companders[d]->encoder.solution;
    }
    for (int p = 0; p < 2; ++p)
        sides[p].refresh (companders[2 * p]->encoder, companders[2 * p + 1]->encoder);
    const Lanes inputs[] = {Lanes (x[0], x[1]), Lanes (x[2], x[3])};
    solveFourInLanes (u, finite, [&] (int p, LaneGroup<2> candidates) {
        return sides[p].evaluate (candidates, LaneGroup<2> (inputs[p]));
    });
    for (int p = 0; p < 2; ++p)
    {
        SlidingBandCompander& first = *companders[2 * p];
        SlidingBandCompander& second = *companders[2 * p + 1];
        if (finite[2 * p] && finite[2 * p + 1])
        {
            const Lanes y = finishEncodeTwo (first, second, sides[p], inputs[p], Lanes (u[2 * p], u[2 * p + 1]));
            x[2 * p] = y.first();
            x[2 * p + 1] = y.second();
            continue;
        }
        // A non-finite input passes and leaves its deck's state alone.
        if (finite[2 * p])
            x[2 * p] = first.finishEncode (x[2 * p], u[2 * p]);
        if (finite[2 * p + 1])
            x[2 * p + 1] = second.finishEncode (x[2 * p + 1], u[2 * p + 1]);
    }
}

void SlidingBandCompander::decodeFourInLanes (SlidingBandCompander* const* companders, double* v) noexcept
{
    SlidingBandSidechain::TwoInLanes sides[] = {decoderLanes (*companders[0], *companders[1]),
                                                decoderLanes (*companders[2], *companders[3])};
    decodeFourInLanes (companders, v, sides);
}

void SlidingBandCompander::decodeFourInLanes (SlidingBandCompander* const* companders, double* v,
                                              SlidingBandSidechain::TwoInLanes* sides) noexcept
{
    double u[4];
    bool finite[4];
    for (int d = 0; d < 4; ++d)
    {
        finite[d] = std::isfinite (v[d]);
        u[d] = companders[d]->decoder.solution;
    }
    for (int p = 0; p < 2; ++p)
        sides[p].refresh (companders[2 * p]->decoder, companders[2 * p + 1]->decoder);
    const Lanes inputs[] = {Lanes (v[0], v[1]), Lanes (v[2], v[3])};
    solveFourInLanes (u, finite, [&] (int p, LaneGroup<2> candidates) {
        return sides[p].evaluate (candidates, inputs[p] - sides[p].applyCurve (candidates));
    });
    for (int p = 0; p < 2; ++p)
    {
        SlidingBandCompander& first = *companders[2 * p];
        SlidingBandCompander& second = *companders[2 * p + 1];
        if (finite[2 * p] && finite[2 * p + 1])
        {
            const Lanes y = finishDecodeTwo (first, second, sides[p], inputs[p], Lanes (u[2 * p], u[2 * p + 1]));
            v[2 * p] = y.first();
            v[2 * p + 1] = y.second();
            continue;
        }
        if (finite[2 * p])
            v[2 * p] = first.finishDecode (v[2 * p], u[2 * p]);
        if (finite[2 * p + 1])
            v[2 * p + 1] = second.finishDecode (v[2 * p + 1], u[2 * p + 1]);
    }
}

} // namespace oxa
