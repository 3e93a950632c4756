#include "tape/PreEmphasis.h"
#include "tape/SlidingBandCompander.h"
#include "tape/ThreeBandCompander.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace oxa
{
namespace
{

constexpr double pi = 3.14159265358979323846;

// The three compander kinds behind one type number, as a deck holds them.
struct CompanderSet
{
    PreEmphasis shelf;
    ThreeBandCompander threeBand;
    SlidingBandCompander slidingBand;

    explicit CompanderSet (double sampleRate)
    {
        shelf.prepare (sampleRate);
        threeBand.prepare (sampleRate);
        slidingBand.prepare (sampleRate);
    }

    double encode (int type, double x)
    {
        return type == 1 ? shelf.encode (x) : type == 2 ? threeBand.encode (x) : type == 3 ? slidingBand.encode (x) : x;
    }

    double decode (int type, double x)
    {
        return type == 1 ? shelf.decode (x) : type == 2 ? threeBand.decode (x) : type == 3 ? slidingBand.decode (x) : x;
    }
};

// Repeatable test noise in -1..1.
struct Noise
{
    uint32_t state = 12345u;
    double next()
    {
        state = state * 1664525u + 1013904223u;
        return static_cast<double> (state) / 2147483648.0 - 1.0;
    }
};

// Something like programme: a few partials under a moving envelope, plus filtered noise.
std::vector<double> musicLike (double sampleRate, double peak, double seconds)
{
    std::vector<double> x (static_cast<size_t> (sampleRate * seconds));
    Noise noise;
    double smooth = 0.0;
    for (size_t n = 0; n < x.size(); ++n)
    {
        const double t = n / sampleRate;
        const double envelope = 0.55 + 0.45 * std::sin (2.0 * pi * 1.3 * t) * std::sin (2.0 * pi * 0.37 * t);
        smooth += 0.2 * (noise.next() - smooth);
        const double tone = 0.5 * std::sin (2.0 * pi * 220.0 * t) + 0.25 * std::sin (2.0 * pi * 1330.0 * t)
                            + 0.1 * std::sin (2.0 * pi * 7100.0 * t);
        x[n] = peak * envelope * (tone + 0.3 * smooth) / 1.15;
    }
    return x;
}

std::vector<double> sine (double sampleRate, double frequency, double peak, double seconds)
{
    std::vector<double> x (static_cast<size_t> (sampleRate * seconds));
    for (size_t n = 0; n < x.size(); ++n)
        x[n] = peak * std::sin (2.0 * pi * frequency * n / sampleRate);
    return x;
}

// Largest |decode(encode(x)) - x| after the first settle samples, relative to the peak.
double roundTripError (int type, double sampleRate, const std::vector<double>& x, size_t settle)
{
    CompanderSet encoder (sampleRate), decoder (sampleRate);
    double worst = 0.0, peak = 0.0;
    for (size_t n = 0; n < x.size(); ++n)
    {
        const double y = decoder.decode (type, encoder.encode (type, x[n]));
        if (n >= settle)
        {
            worst = std::max (worst, std::abs (y - x[n]));
            peak = std::max (peak, std::abs (x[n]));
        }
    }
    return worst / std::max (peak, 1e-30);
}

double rms (const std::vector<double>& x)
{
    double sum = 0.0;
    for (double v : x)
        sum += v * v;
    return std::sqrt (sum / x.size());
}

TEST (EnvelopeCurveShape, JoinsItsThreePiecesSmoothly)
{
    for (double levelDb : {-54.91727803, -10.0})
        for (double ratio : {0.3, 0.7})
        {
            EnvelopeCurve c;
            c.setCurve (levelDb, ratio);
            const double level = std::pow (10.0, levelDb / 20.0);
            const double h = 1e-9 * level;
            for (double knot : {c.getLow(), c.getHigh()})
            {
                EXPECT_NEAR (c.shape (knot - h), c.shape (knot + h), 1e-6 * level);
                const double slopeBelow = (c.shape (knot - h) - c.shape (knot - 2 * h)) / h;
                const double slopeAbove = (c.shape (knot + 2 * h) - c.shape (knot + h)) / h;
                EXPECT_NEAR (slopeBelow, slopeAbove, 1e-3);
            }
            // Rising everywhere, and held far below the input once past `high`.
            double previous = 0.0;
            for (double e = 0.0; e < 3.0 * c.getHigh(); e += c.getHigh() / 500.0)
            {
                EXPECT_GE (c.shape (e), previous - 1e-15);
                previous = c.shape (e);
            }
            EXPECT_LT (c.shape (100.0 * c.getHigh()), 0.2 * c.getHigh() + c.getTop());
        }
}

TEST (EnvelopeCurveFollower, SettlesOnTheInputLevelWithItsTimeConstant)
{
    const double fs = 48000.0;
    EnvelopeCurve c;
    c.setEnvelope (5000000.0, 1e-9, fs); // 5 ms
    double level = 0.0;
    for (int n = 0; n < static_cast<int> (0.005 * fs); ++n)
    {
        level = c.follow (-0.5);
        c.commit();
    }
    EXPECT_NEAR (level, 0.5 * (1.0 - std::exp (-1.0)), 0.01);
    for (int n = 0; n < static_cast<int> (0.1 * fs); ++n)
    {
        level = c.follow (0.5);
        c.commit();
    }
    EXPECT_NEAR (level, 0.5, 1e-6);

    // Evaluating without commit leaves the charge where it was.
    const double charge = c.getCharge();
    c.follow (0.0);
    c.follow (5.0);
    EXPECT_EQ (c.getCharge(), charge);
}

TEST (PreEmphasisPair, LiftsHighsTwofoldAndDecodesExactly)
{
    for (double fs : {44100.0, 96000.0})
    {
        PreEmphasis p;
        p.prepare (fs);
        Noise noise;
        for (int n = 0; n < 100000; ++n)
        {
            const double x = noise.next() * (n % 1000 < 500 ? 1.0 : 1e-4);
            ASSERT_NEAR (p.decode (p.encode (x)), x, 1e-12);
        }

        PreEmphasis low, high;
        low.prepare (fs);
        high.prepare (fs);
        const std::vector<double> slow = sine (fs, 20.0, 1.0, 0.5);
        std::vector<double> slowOut, fastOut;
        for (size_t n = 0; n < slow.size(); ++n)
        {
            slowOut.push_back (low.encode (slow[n]));
            fastOut.push_back (high.encode (n % 2 ? -1.0 : 1.0)); // Nyquist
        }
        EXPECT_NEAR (rms (slowOut) / rms (slow), 1.0, 0.01);
        EXPECT_NEAR (std::abs (fastOut.back()), 2.0, 1e-9);
    }
}

// After 50 ms the three-band pair is exact to 2e-6 of the peak, the sliding band to 1e-5
// (its two Newton steps leave a little more behind on loud, fast changes).
TEST (CompanderRoundTrip, DecoderUndoesItsEncoder)
{
    for (const auto& [type, tolerance] : {std::pair {2, 2e-6}, std::pair {3, 1e-5}})
        for (double fs : {44100.0, 48000.0, 96000.0})
            for (double peakDb : {-70.0, -50.0, -30.0, -10.0, 0.0, 20.0, 40.0})
            {
                SCOPED_TRACE (testing::Message() << "type " << type << " fs " << fs << " peak " << peakDb << " dB");
                const double peak = std::pow (10.0, peakDb / 20.0);
                const size_t settle = static_cast<size_t> (0.05 * fs);
                EXPECT_LT (roundTripError (type, fs, musicLike (fs, peak, 1.0), settle), tolerance);
                for (double f : {60.0, 1000.0, 9000.0})
                    EXPECT_LT (roundTripError (type, fs, sine (fs, f, peak, 0.3), settle), tolerance) << f << " Hz";
            }
}

TEST (CompanderEncoding, QuietSignalsAreLiftedMoreThanLoudOnes)
{
    const double fs = 48000.0;
    for (int type : {2, 3})
    {
        auto liftDb = [&] (double peak)
        {
            CompanderSet set (fs);
            std::vector<double> in = sine (fs, 3000.0, peak, 0.3), out;
            for (double x : in)
                out.push_back (set.encode (type, x));
            return 20.0 * std::log10 (rms (out) / rms (in));
        };
        const double quiet = liftDb (std::pow (10.0, -70.0 / 20.0));
        const double loud = liftDb (1.0);
        EXPECT_GT (quiet, 6.0) << type;
        EXPECT_GT (quiet, loud + 3.0) << type;
    }
}

TEST (CompanderRobustness, EveryTypePairingSurvivesStepsNoiseAndBadSamples)
{
    const double fs = 48000.0;
    Noise noise;
    for (int encoderType = 0; encoderType < 4; ++encoderType)
        for (int decoderType = 0; decoderType < 4; ++decoderType)
        {
            CompanderSet set (fs);
            auto run = [&] (double x)
            {
                const double y = set.decode (decoderType, set.encode (encoderType, x));
                return std::isfinite (y);
            };
            // Silence, full-scale steps, saturator extremes, loud noise against near-silence, tiny flicker.
            bool finite = true;
            for (int n = 0; n < 42000 && finite; ++n)
                finite = run (n < 5000    ? 0.0
                              : n < 10000 ? 1.0
                              : n < 15000 ? -100.0
                              : n < 20000 ? 100.0
                              : n < 40000 ? noise.next() * (n % 3000 < 1500 ? 100.0 : 1e-9)
                                          : (n % 2 ? 1e-300 : -1e-300));
            EXPECT_TRUE (finite) << encoderType << " -> " << decoderType;

            // A bad sample passes by without spoiling what follows.
            set.encode (encoderType, std::numeric_limits<double>::quiet_NaN());
            set.decode (decoderType, std::numeric_limits<double>::infinity());
            EXPECT_TRUE (run (0.5)) << encoderType << " -> " << decoderType;
        }
}

// Runs programme through a prepared encoder/decoder pair and returns it.
template <class Compander>
Compander used (const std::vector<double>& x)
{
    Compander c;
    c.prepare (48000.0);
    for (double v : x)
        c.decode (c.encode (v));
    return c;
}

TEST (CompanderClearing, EachSideClearsOnlyItself)
{
    const std::vector<double> x = musicLike (48000.0, 0.01, 0.2);
    auto threeBand = used<ThreeBandCompander> (x), threeBandFresh = used<ThreeBandCompander> ({});
    threeBand.clearEncoder();
    for (int n = 0; n < 100; ++n)
        EXPECT_EQ (threeBand.encode (x[n]), threeBandFresh.encode (x[n])) << n;

    auto sliding = used<SlidingBandCompander> (x), slidingFresh = used<SlidingBandCompander> ({});
    sliding.clearDecoder();
    sliding.reset();
    for (int n = 0; n < 100; ++n)
        EXPECT_EQ (sliding.decode (x[n]), slidingFresh.decode (x[n])) << n;

    // The shelf pair shares one clearing: either side resets both histories.
    auto shelf = used<PreEmphasis> (x), shelfFresh = used<PreEmphasis> ({});
    shelf.clearEncoder();
    EXPECT_EQ (shelf.decode (0.25), shelfFresh.decode (0.25));
}

} // namespace
} // namespace oxa

namespace oxa
{
namespace
{
bool sameBits (double a, double b)
{
    return std::memcmp (&a, &b, sizeof a) == 0;
}
} // namespace

// The lanes' shortcuts (the straight part alone above the knee, |x| in one operation) must
// give what one curve alone gives, bit for bit, in every part of the curve, with lanes in
// different parts, and for a zero of either sign before any charge has built up.
TEST (EnvelopeCurveInLanes, ShortcutsGiveWhatOneCurveGives)
{
    constexpr double fs = 48000.0;
    // The curve's low and high ends at -54.9 dB, ratio 0.7 are about 8.8e-4 and 1.8e-3.
    const std::vector<std::pair<double, double>> candidates {
        {-0.0, 0.0},   {0.0, -0.0},  {1e-5, -2e-4}, {9e-4, 1.2e-3}, {-1.5e-3, 3e-3},
        {0.05, -0.02}, {4.0, -30.0}, {2e-3, 1e-7},  {-250.0, 7e-4}, {1e-300, -1e-310},
    };
    // Each row: the input that charges the curves first (for 8 time constants, so that
    // the level sits below, on or above the cubic), then each candidate pair.
    for (double charging : {0.0, -0.0, 2e-4, 8e-4, -1e-3, 3e-3, 40.0})
        for (const auto& [first, second] : candidates)
        {
            SCOPED_TRACE (testing::Message() << "charged by " << charging << ", candidates " << first << ", " << second);
            EnvelopeCurve alone[2], paired[2];
            for (EnvelopeCurve* curve : {&alone[0], &alone[1], &paired[0], &paired[1]})
            {
                curve->setCurve (-54.91727803, 0.7);
                curve->setEnvelope (5000000.0, 1e-9, fs);
            }
            for (int n = 0; n < 2000; ++n)
            {
                for (EnvelopeCurve& curve : alone)
                    curve.apply (charging);
                EnvelopeCurve::applyTwo (paired[0], paired[1], EnvelopeCurve::gather (paired[0], paired[1]),
                                         Lanes (charging));
                for (EnvelopeCurve* curve : {&alone[0], &alone[1], &paired[0], &paired[1]})
                    curve->commit();
            }
            const EnvelopeCurveTerms<Lanes> terms = EnvelopeCurve::gather (paired[0], paired[1]);
            const Lanes both (first, second);
            const Lanes shortcut = terms.applyMostlyAboveKnee (both);
            const Lanes full = terms.apply (both);
            const double expected[] = {alone[0].apply (first), alone[1].apply (second)};
            EXPECT_TRUE (sameBits (shortcut.first(), expected[0]) && sameBits (shortcut.second(), expected[1]));
            EXPECT_TRUE (sameBits (full.first(), expected[0]) && sameBits (full.second(), expected[1]));

            // The charge step each lane keeps moves the charge as the curve alone moves it.
            EnvelopeCurve::applyTwo (paired[0], paired[1], terms, both);
            for (EnvelopeCurve* curve : {&alone[0], &alone[1], &paired[0], &paired[1]})
                curve->commit();
            EXPECT_TRUE (sameBits (paired[0].getCharge(), alone[0].getCharge()));
            EXPECT_TRUE (sameBits (paired[1].getCharge(), alone[1].getCharge()));
            EXPECT_TRUE (sameBits (paired[0].apply (first), alone[0].apply (first)));
        }
}

// The sliding shelf, redesigned for every trial point from terms worked out once, must be
// the shelf the plain design gives, coefficient for coefficient.
TEST (SlidingShelfDesign, GivesThePlainDesignBitForBit)
{
    for (double fs : {22050.0, 44100.0, 48000.0, 88200.0, 96000.0, 192000.0})
        for (double corner : {0.0, 1e-3, 1956.73632, 7511.78831, 23456.7, 70000.0, -5000.0})
        {
            SCOPED_TRACE (testing::Message() << fs << " Hz, corner " << corner);
            ShelfCoefficients plain;
            plain.design (corner, 5.92380188, fs);
            SlidingShelfDesign<double> design;
            design.prepare (5.92380188, fs);
            const ShelfCoefficients fast = design.at (corner);
            EXPECT_TRUE (sameBits (fast.c0, plain.c0) && sameBits (fast.c1, plain.c1) && sameBits (fast.d0, plain.d0)
                         && sameBits (fast.d1, plain.d1));
        }
}

} // namespace oxa
