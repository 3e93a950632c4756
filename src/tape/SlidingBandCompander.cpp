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
    T slidingCorner (T e) noexcept
    {
        const T r = (((89683.3046 * e - 310543.2) * e + 309734.797) * e - 22716.5427) * e + 1956.73632;
        return minWithLimit (r, T (maxCorner));
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

    // solve() for four equations (those of four decks), each stepping exactly as alone,
    // in turn within one loop so that the processor works on several at once.
    // pairOf(d) gives equation d's sidechainPair; u holds the starts and gets the results.
    template <class PairOf>
    void solveFour (double* u, const bool* solvable, PairOf pairOf) noexcept
    {
        bool solving[4];
        std::copy (solvable, solvable + 4, solving);
        for (int n = 0; n < iterations; ++n)
        {
            bool any = false;
            for (int d = 0; d < 4; ++d)
            {
                if (solving[d])
                    solving[d] = ! solveStep (u[d], pairOf (d));
                any = any || solving[d];
            }
            if (! any)
                break;
        }
    }
} // namespace

void SlidingBandSidechain::prepare (double fs) noexcept
{
    sampleRate = fs;
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
    const T a = slidingCorner (levelOfT);
    BasicShelfCoefficients<T> sliding;
    sliding.design (a, slidingLift, sampleRate);
    return (sliding.c1 * i1 + sliding.c0 * i - sliding.d1 * o1) / sliding.d0;
}

double SlidingBandSidechain::evaluate (double u, double i) noexcept
{
    const double t = (fixedStage.c0 * u + fixedHistory) / fixedStage.d0;
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
    const double tu = (fixedStage.c0 * u + fixedHistory) / fixedStage.d0;
    const double tv = (fixedStage.c0 * v + fixedHistory) / fixedStage.d0;
    ou = slidingStage (level.levelFor (tu), iu);
    ov = slidingStage (level.levelFor (tv), iv);
}

Lanes SlidingBandSidechain::evaluateInLanes (Lanes u, Lanes i) const noexcept
{
    const Lanes t = (fixedStage.c0 * u + fixedHistory) / fixedStage.d0;
    return slidingStage (level.levelFor (t), i);
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
    double u[4];
    bool finite[4];
    for (int d = 0; d < 4; ++d)
    {
        finite[d] = std::isfinite (x[d]);
        u[d] = companders[d]->encoder.solution;
    }
    solveFour (u, finite, [&] (int d) {
        return [&, d] (double a, double b, double& ga, double& gb) { companders[d]->encoderPair<true> (x[d], a, b, ga, gb); };
    });
    for (int d = 0; d < 4; ++d)
        if (finite[d])
            x[d] = companders[d]->finishEncode (x[d], u[d]);
}

void SlidingBandCompander::decodeFourInLanes (SlidingBandCompander* const* companders, double* v) noexcept
{
    double u[4];
    bool finite[4];
    for (int d = 0; d < 4; ++d)
    {
        finite[d] = std::isfinite (v[d]);
        u[d] = companders[d]->decoder.solution;
    }
    solveFour (u, finite, [&] (int d) {
        return [&, d] (double a, double b, double& ga, double& gb) { companders[d]->decoderPair<true> (v[d], a, b, ga, gb); };
    });
    for (int d = 0; d < 4; ++d)
        if (finite[d])
            v[d] = companders[d]->finishDecode (v[d], u[d]);
}

} // namespace oxa
