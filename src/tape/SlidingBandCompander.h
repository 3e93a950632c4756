#pragma once

#include "tape/EnvelopeCurve.h"
#include "tape/PreEmphasis.h"

namespace oxa
{

// The sliding shelf's coefficients for a corner, as BasicShelfCoefficients::design makes
// them bit for bit, with what does not move with the corner (2 b fs and 2 fs) worked out
// once: the solvers redesign the shelf for every trial point. F is a double, or the same
// terms of two decks in lanes.
template <class F>
struct SlidingShelfDesign
{
    F lift = 1.0, liftedRate = 0.0, rate = 0.0;

    void prepare (double shelfLift, double sampleRate) noexcept
    {
        lift = shelfLift;
        liftedRate = 2.0 * shelfLift * sampleRate;
        rate = 2.0 * sampleRate;
    }

    template <class T>
    [[gnu::always_inline]] BasicShelfCoefficients<T> at (T corner) const noexcept
    {
        const T scaled = corner * lift;
        BasicShelfCoefficients<T> shelf;
        shelf.c0 = scaled + liftedRate;
        shelf.c1 = scaled - liftedRate;
        shelf.d0 = scaled + rate;
        shelf.d1 = scaled - rate;
        return shelf;
    }
};

// One side of the sliding-band compander. Its sidechain is a shelf whose corner follows
// the level of the sidechain's own output, so each sample solves u = shelf(i; u).
// evaluate() tries a candidate without moving state; commit() keeps the last one.
class SlidingBandSidechain
{
public:
    SlidingBandSidechain() noexcept; // as prepared for 48 kHz
    void prepare (double sampleRate) noexcept;
    void clear() noexcept;

    // Sidechain output for candidate u with stage input i.
    double evaluate (double u, double i) noexcept;
    void commit() noexcept;

    // evaluate() for two candidates at once, leaving no trace.
    void evaluatePair (double u, double v, double iu, double iv, double& ou, double& ov) const noexcept;
    // evaluatePair with the candidates in lanes: the same results bit for bit.
    Lanes evaluateInLanes (Lanes u, Lanes i) const noexcept;

    // The sidechains of two decks evaluated side by side, one a lane: what evaluateInLanes
    // computes for one of them, bit for bit, for a candidate of each.
    class TwoInLanes
    {
    public:
        TwoInLanes (const SlidingBandSidechain& first, const SlidingBandSidechain& second) noexcept;
        // Gathers again what moves from sample to sample (histories and charges) from the
        // same two sidechains; their coefficients change only when they are prepared.
        void refresh (const SlidingBandSidechain& first, const SlidingBandSidechain& second) noexcept;
        // T is Lanes, or a LaneGroup of several candidates of each.
        template <class T>
        T evaluate (T u, T i) const noexcept;
        template <class T>
        [[gnu::always_inline]] T applyCurve (T x) const noexcept
        {
            return curve.apply (x);
        }
        // evaluate() and the curve as the two sidechains' own evaluate() and apply() run
        // them: each keeps its lane's candidate for commit().
        Lanes evaluateInto (SlidingBandSidechain& first, SlidingBandSidechain& second, Lanes u,
                            Lanes i) const noexcept;
        Lanes applyCurveInto (SlidingBandSidechain& first, SlidingBandSidechain& second, Lanes x) const noexcept
        {
            return EnvelopeCurve::applyTwo (first.curve, second.curve, curve, x);
        }

    private:
        Lanes fixedC0, fixedD0, fixedHistory, i1, o1;
        EnvelopeCurveTerms<Lanes> level, curve;
        SlidingShelfDesign<Lanes> slidingShelf;
    };

    // The curve that turns the sidechain into what is added to the signal.
    EnvelopeCurve& getCurve() noexcept { return curve; }

    double solution = 0.0; // the last accepted u, where the next solve starts

private:
    template <class T>
    T slidingStage (T levelOfT, T i) const noexcept;

    SlidingShelfDesign<double> slidingShelf;
    EnvelopeCurve curve;
    EnvelopeCurve level; // follower only: steers the sliding corner
    ShelfCoefficients fixedStage;
    double u1 = 0.0, t1 = 0.0; // fixed stage history
    double fixedHistory = 0.0;  // c1 u1 - d1 t1, fixed within a sample
    double i1 = 0.0, o1 = 0.0; // sliding stage history
    double candidateU = 0.0, candidateT = 0.0, candidateI = 0.0, candidateO = 0.0;
};

// "Type B": a single band whose shelf slides with level. The encoder adds the curved
// sidechain to the signal; the decoder subtracts it, with the sidechain fed by its own
// output, solved by Newton iteration.
class SlidingBandCompander
{
public:
    void prepare (double sampleRate) noexcept;
    void reset() noexcept;

    // Selecting this type clears that side's histories.
    void clearEncoder() noexcept { encoder.clear(); }
    void clearDecoder() noexcept { decoder.clear(); }

    double encode (double x) noexcept;
    double decode (double v) noexcept;
    // The same with each solver step's two trial points in lanes: bit for bit alike.
    double encodeInLanes (double x) noexcept;
    double decodeInLanes (double v) noexcept;
    // The same for the companders of four decks, values in and out, solved side by side.
    static void encodeFourInLanes (SlidingBandCompander* const* companders, double* x) noexcept;
    static void decodeFourInLanes (SlidingBandCompander* const* companders, double* v) noexcept;

    // The same two with the sidechains of the pairs (0, 1) and (2, 3) kept in lanes across
    // samples: sides as encoderLanes() or decoderLanes() made them for these companders.
    static void encodeFourInLanes (SlidingBandCompander* const* companders, double* x,
                                   SlidingBandSidechain::TwoInLanes* sides) noexcept;
    static void decodeFourInLanes (SlidingBandCompander* const* companders, double* v,
                                   SlidingBandSidechain::TwoInLanes* sides) noexcept;
    static SlidingBandSidechain::TwoInLanes encoderLanes (const SlidingBandCompander& first,
                                                          const SlidingBandCompander& second) noexcept
    {
        return {first.encoder, second.encoder};
    }
    static SlidingBandSidechain::TwoInLanes decoderLanes (const SlidingBandCompander& first,
                                                          const SlidingBandCompander& second) noexcept
    {
        return {first.decoder, second.decoder};
    }

private:
    template <bool InLanes>
    void encoderPair (double x, double a, double b, double& ga, double& gb) noexcept;
    template <bool InLanes>
    void decoderPair (double v, double a, double b, double& ga, double& gb) noexcept;
    // What follows the solve: the sidechain takes the solution and the sample is made.
    double finishEncode (double x, double u) noexcept;
    double finishDecode (double v, double u) noexcept;
    // The same for the decks 2p and 2p + 1 of four in lanes (both inputs finite).
    static Lanes finishEncodeTwo (SlidingBandCompander& first, SlidingBandCompander& second,
                                  const SlidingBandSidechain::TwoInLanes& sides, Lanes x, Lanes u) noexcept;
    static Lanes finishDecodeTwo (SlidingBandCompander& first, SlidingBandCompander& second,
                                  const SlidingBandSidechain::TwoInLanes& sides, Lanes v, Lanes u) noexcept;
    template <bool InLanes>
    double encodeWith (double x) noexcept;
    template <bool InLanes>
    double decodeWith (double v) noexcept;

    SlidingBandSidechain encoder;
    SlidingBandSidechain decoder;
};

} // namespace oxa
