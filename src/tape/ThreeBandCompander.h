#pragma once

#include "tape/EnvelopeCurve.h"

namespace oxa
{

// One side of the three-band compander: low, mid and high band filters, each feeding an
// envelope curve, added to the input. forward() evaluates a candidate input without
// moving any state; commit() then takes the last candidate as the sample.
class ThreeBandSidechain
{
public:
    void prepare (double sampleRate) noexcept;
    void clear() noexcept;

    double forward (double x) noexcept
    {
        double sum = x;
        for (Band& band : bands)
        {
            band.input = x * band.gain;
            band.output = band.b0 * band.input + band.history;
            sum += band.curve.apply (band.output);
        }
        return sum;
    }

    // forward() at x and at y, without touching any state.
    void forwardPair (double x, double y, double& outX, double& outY) const noexcept
    {
        double sumX = x, sumY = y;
        for (const Band& band : bands)
        {
            const double outputX = band.b0 * (x * band.gain) + band.history;
            const double outputY = band.b0 * (y * band.gain) + band.history;
            double curvedX, curvedY;
            band.curve.applyPair (outputX, outputY, curvedX, curvedY);
            sumX += curvedX;
            sumY += curvedY;
        }
        outX = sumX;
        outY = sumY;
    }

    // forwardPair with the two candidates in lanes: the same sums bit for bit.
    Lanes forwardInLanes (Lanes x) const noexcept
    {
        Lanes sum = x;
        for (const Band& band : bands)
            sum = sum + band.curve.applyInLanes (band.b0 * (x * band.gain) + band.history);
        return sum;
    }

    void commit() noexcept
    {
        for (Band& band : bands)
        {
            band.x2 = band.x1;
            band.x1 = band.input;
            band.y2 = band.y1;
            band.y1 = band.output;
            band.history = band.b1 * band.x1 + band.b2 * band.x2 - band.a1 * band.y1 - band.a2 * band.y2;
            band.curve.commit();
        }
    }

    double getBandHistory (int band) const noexcept { return bands[band].y1; }

    // The sidechains of two decks side by side, one a lane: what forwardInLanes computes
    // for one of them, bit for bit, for a candidate of each.
    class TwoInLanes
    {
    public:
        TwoInLanes (const ThreeBandSidechain& first, const ThreeBandSidechain& second) noexcept;
        // Gathers again what moves from sample to sample (histories and charges) from the
        // same two sidechains; their coefficients change only when they are prepared.
        void refresh (const ThreeBandSidechain& first, const ThreeBandSidechain& second) noexcept;
        // The bands' levels sit above their curves' knees nearly all the time at the
        // deck's signal level, so their curves take the shortcut there.
        // T is Lanes, or a LaneGroup of several candidates of each.
        template <class T>
        [[gnu::always_inline]] T forward (T x) const noexcept
        {
            T sum = x;
            for (const Band& band : bands)
                sum = sum + band.curve.applyMostlyAboveKnee (band.b0 * (x * band.gain) + band.history);
            return sum;
        }
        // forward() as the two sidechains' own forward() runs it: each keeps its lane's
        // candidate for commit().
        Lanes forwardInto (ThreeBandSidechain& first, ThreeBandSidechain& second, Lanes x) const noexcept
        {
            Lanes sum = x;
            for (int i = 0; i < 3; ++i)
            {
                const Band& band = bands[i];
                ThreeBandSidechain::Band& a = first.bands[i];
                ThreeBandSidechain::Band& b = second.bands[i];
                const Lanes input = x * band.gain;
                const Lanes output = band.b0 * input + band.history;
                a.input = input.first();
                b.input = input.second();
                a.output = output.first();
                b.output = output.second();
                sum = sum + EnvelopeCurve::applyTwoMostlyAboveKnee (a.curve, b.curve, band.curve, output);
            }
            return sum;
        }

    private:
        struct Band
        {
            Lanes b0, gain, history;
            EnvelopeCurveTerms<Lanes> curve;
        };
        Band bands[3];
    };

private:
    struct Band
    {
        double b0 = 0.0, b1 = 0.0, b2 = 0.0, a1 = 0.0, a2 = 0.0;
        double gain = 1.0;
        double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
        double history = 0.0; // the filter's part from past samples, fixed within a sample
        double input = 0.0, output = 0.0; // the last candidate
        EnvelopeCurve curve;
    };

    Band bands[3];
};

// "Type A": a three-band sidechain compander. The encoder adds the compressed bands to
// the signal; the decoder inverts that implicitly by Newton iteration from its last
// solution.
class ThreeBandCompander
{
public:
    void prepare (double sampleRate) noexcept;
    void reset() noexcept;

    // Selecting this type clears that side's band histories and envelopes.
    void clearEncoder() noexcept { encoder.clear(); }
    void clearDecoder() noexcept { decoder.clear(); }

    double encode (double x) noexcept;
    // encode() for the encoders of four decks, x in and out, two decks a register.
    static void encodeFourInLanes (ThreeBandCompander* const* companders, double* x) noexcept;
    double decode (double v) noexcept;
    // decode() with each step's two trial points in lanes: the same result bit for bit.
    double decodeInLanes (double v) noexcept;
    // decodeInLanes() for the decoders of four decks, v in and out, solved side by side.
    static void decodeFourInLanes (ThreeBandCompander* const* companders, double* v) noexcept;

    // The same two with the sidechains of the pairs (0, 1) and (2, 3) kept in lanes across
    // samples: sides as encoderLanes() or decoderLanes() made them for these companders.
    static void encodeFourInLanes (ThreeBandCompander* const* companders, double* x,
                                   ThreeBandSidechain::TwoInLanes* sides) noexcept;
    static void decodeFourInLanes (ThreeBandCompander* const* companders, double* v,
                                   ThreeBandSidechain::TwoInLanes* sides) noexcept;
    static ThreeBandSidechain::TwoInLanes encoderLanes (const ThreeBandCompander& first,
                                                        const ThreeBandCompander& second) noexcept
    {
        return {first.encoder, second.encoder};
    }
    static ThreeBandSidechain::TwoInLanes decoderLanes (const ThreeBandCompander& first,
                                                        const ThreeBandCompander& second) noexcept
    {
        return {first.decoder, second.decoder};
    }

    double getDecoderSolution() const noexcept { return decoderSolution; }

private:
    template <bool InLanes>
    double decodeWith (double v) noexcept;
    // One Newton step of the decoder from y towards v; true once it has converged.
    template <bool InLanes>
    bool decoderStep (double v, double& y) const noexcept;
    double finishDecode (double y) noexcept;

    ThreeBandSidechain encoder;
    ThreeBandSidechain decoder;
    double decoderSolution = 0.0;
};

} // namespace oxa
