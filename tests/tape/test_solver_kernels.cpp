// The solvers in SIMD lanes against the plain reference: every block loop must give
// the same samples bit for bit, whichever kernel a machine runs, so that a saved
// project sounds the same everywhere.
#include "tape/Decibels.h"
#include "tape/EnvelopeCurve.h"
#include "tape/FourRecordHeads.h"
#include "tape/RecordHead.h"
#include "tape/SlidingBandCompander.h"
#include "tape/ThreeBandCompander.h"
#include "tape/TapeEffect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace oxa
{
namespace
{
constexpr double sampleRate = 48000.0;

// Loud, low and with hits: where the record head and the companders iterate most.
std::vector<float> loudSignal(std::size_t length, std::uint32_t seed)
{
    std::vector<float> x(length);
    std::uint32_t state = seed;
    for (std::size_t n = 0; n < length; ++n)
    {
        state = state * 1664525u + 1013904223u;
        const double t = static_cast<double>(n) / sampleRate;
        const double hit = (n % 6000) < 1500 ? std::exp(-static_cast<double>(n % 6000) / 300.0) : 0.0;
        x[n] = static_cast<float>(0.3 * std::sin(2.0 * 3.141592653589793 * 55.0 * t)
                                  + 0.1 * (static_cast<double>(state) / 4294967296.0 - 0.5) + 0.7 * hit);
    }
    return x;
}

// Every stage at work: feedback, drive, noise, transport, dropouts, the playback head.
TapeEffectState preparedState(std::int32_t flangeMode, std::int32_t encoder, std::int32_t decoder,
                              std::uint32_t channelCount = 2)
{
    TapeEffectState state;
    state.prepare(sampleRate, 256, channelCount);
    state.forEachDeck([&](TapeDeck& deck) {
        deck.transport.wowDepth = 0.3;
        deck.transport.flutterDepth = 0.05;
        deck.transport.randomDepth = 0.1;
        deck.feedback = 0.9;
        deck.setDrive(dbToLinear(12.0f));
        deck.setRecordResistance(800.0);
        deck.noiseGain = dbToLinear(-40.0f);
        deck.setDegradeDepth(1.0);
        deck.setDegradeRate(40.0);
        deck.setSpacing(0.00003);
        deck.setEncoderType(encoder);
        deck.setDecoderType(decoder);
    });
    state.setFlangeMode(flangeMode);
    if (flangeMode == TapeChannel::manualMode)
        state.setRelativeDelay(0.3);
    state.setLfoFrequency(2.0f, false, 120.0f);
    state.setNoiseSync(true);
    return state;
}

// All channels one after the other in the result. After the first block the drive steps,
// so that the record path hands over from the old drive to the new one (within 0.65 s).
std::vector<float> render(TapeEffectState& state, std::size_t length, std::uint32_t channelCount = 2)
{
    std::vector<std::vector<float>> signals;
    for (std::uint32_t c = 0; c < channelCount; ++c)
        signals.push_back(loudSignal(length, 3 + 2 * c));
    std::vector<float> speed(256), dry(256);
    float tempo = 120.0f;
    for (std::size_t done = 0; done < length; done += 256)
    {
        const auto n = static_cast<std::uint32_t>(std::min<std::size_t>(256, length - done));
        if (done == 256)
            state.forEachDeck([](TapeDeck& deck) { deck.setDrive(dbToLinear(20.0f)); });
        std::vector<float*> channels;
        for (auto& signal : signals)
            channels.push_back(signal.data() + done);
        state.render(channels.data(), channelCount, n, TapeHostInfo{}, false, tempo, speed.data(), dry.data());
    }
    std::vector<float> all;
    for (auto& signal : signals)
        all.insert(all.end(), signal.begin(), signal.end());
    return all;
}

bool bitIdentical(const std::vector<float>& a, const std::vector<float>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}
} // namespace

TEST(SolverKernels, LanesMatchTheReferenceBitForBitInAll32BlockLoops)
{
    const std::size_t length = static_cast<std::size_t>(sampleRate * 0.65);
    for (std::int32_t mode : {TapeChannel::manualMode, TapeChannel::lfoMode})
        for (std::int32_t encoder = 0; encoder < 4; ++encoder)
            for (std::int32_t decoder = 0; decoder < 4; ++decoder)
            {
                SCOPED_TRACE(testing::Message() << "mode " << mode << ", encoder " << encoder << ", decoder " << decoder);
                TapeEffectState reference = preparedState(mode, encoder, decoder);
                TapeEffectState lanes = preparedState(mode, encoder, decoder);
                reference.kernel = SolverKernel::reference;
                lanes.kernel = SolverKernel::lanes;
                const std::vector<float> expected = render(reference, length);
                const std::vector<float> actual = render(lanes, length);
                double peak = 0.0;
                for (float v : expected)
                    peak = std::max(peak, static_cast<double>(std::fabs(v)));
                ASSERT_GT(peak, 0.01) << "the loop must have made sound";
                EXPECT_TRUE(bitIdentical(expected, actual));
            }
}

TEST(SolverKernels, MonoAndAnOddChannelBesideAStereoPairMatchTheReference)
{
    // Stereo pairs run four decks together; a channel left over runs alone.
    for (std::uint32_t channelCount : {1u, 3u})
    {
        SCOPED_TRACE(testing::Message() << channelCount << " channels");
        TapeEffectState reference = preparedState(TapeChannel::lfoMode, 3, 2, channelCount);
        TapeEffectState lanes = preparedState(TapeChannel::lfoMode, 3, 2, channelCount);
        reference.kernel = SolverKernel::reference;
        lanes.kernel = SolverKernel::lanes;
        EXPECT_TRUE(bitIdentical(render(reference, 9600, channelCount), render(lanes, 9600, channelCount)));
    }
}

TEST(SolverKernels, TwoInstancesWithTheSameSettingsSoundTheSame)
{
    TapeEffectState first = preparedState(TapeChannel::lfoMode, 3, 2);
    TapeEffectState second = preparedState(TapeChannel::lfoMode, 3, 2);
    EXPECT_EQ(first.kernel, TapeEffectState::bestSolverKernel());
    EXPECT_TRUE(bitIdentical(render(first, 9600), render(second, 9600)));
}

TEST(SolverKernels, FourRecordHeadsInLanesEachGiveWhatTheyGiveAloneEvenAfterABrokenSample)
{
    // Different hardness, resistance and noise per head, so their solves converge after
    // different passes; now and then one head gets a non-finite sample, which must reset
    // only that head's step, as process() does, while the others solve on. Gathered for a
    // block, the hiss generators and gates run in lanes too: with a gate off among them,
    // and with a pink filter's sum pushed to its bound, where its draws are refused and
    // that sample's hiss is drawn head by head.
    struct Case
    {
        const char* name;
        bool gathered;
        bool secondGateOff;
        float firstNoiseSum;
        bool broken; // a broken sample leaves its gate's follower NaN for good
    };
    const Case cases[] = {{"heads alone", false, false, 0.0f, true},
                          {"gathered", true, false, 0.0f, true},
                          {"gathered, a gate off", true, true, 0.0f, false},
                          {"gathered, a sum at its bound", true, false, 7.8f, false}};
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        RecordHead four[4], alone[4];
        for (int d = 0; d < 4; ++d)
            for (RecordHead* head : {&four[d], &alone[d]})
            {
                head->prepare(sampleRate);
                head->restartNoise(7u + static_cast<std::uint32_t>(d), 99u);
                head->a = 1.0 + 0.9 * d;
                head->k = 100.0 * std::pow(10.0, 0.7 * d);
                head->noiseLevel = d == 2 ? 0.0 : 0.01;
                head->setGateOn(!(c.secondGateOff && d == 1));
                if (d == 0)
                    head->noiseSum = c.firstNoiseSum;
            }
        RecordHead* const heads[] = {&four[0], &four[1], &four[2], &four[3]};
        FourRecordHeads gathered;
        ASSERT_TRUE(!c.gathered || gathered.gather(heads));
        const std::vector<float> signal = loudSignal(4800, 5);
        for (std::size_t n = 0; n < signal.size(); ++n)
        {
            double h[4], expected[4];
            for (int d = 0; d < 4; ++d)
            {
                // Quiet stretches, so that the gates close and open.
                const double level = (n / 1200) % 2 == 0 ? 3.0 : 0.0003;
                h[d] = level * signal[(n + 1201 * d) % signal.size()];
                if (c.broken && n % 613 == 300 && d == static_cast<int>(n % 4))
                    h[d] = (n % 2) != 0 ? std::nan("") : -INFINITY;
                expected[d] = alone[d].process(h[d]);
            }
            if (c.gathered)
                RecordHead::processFourInLanes(gathered, heads, h);
            else
                RecordHead::processFourInLanes(heads, h);
            for (int d = 0; d < 4; ++d)
            {
                ASSERT_EQ(std::memcmp(&h[d], &expected[d], sizeof(double)), 0) << "sample " << n << ", head " << d;
                ASSERT_EQ(four[d].step, alone[d].step) << "sample " << n << ", head " << d;
            }
        }
        gathered.scatter();
        for (int d = 0; d < 4; ++d)
        {
            // What the block kept in lanes is back in the heads.
            EXPECT_EQ(four[d].random.b, alone[d].random.b) << "head " << d;
            EXPECT_EQ(four[d].noiseSum, alone[d].noiseSum) << "head " << d;
            EXPECT_EQ(four[d].noiseCounter, alone[d].noiseCounter) << "head " << d;
            EXPECT_EQ(std::memcmp(&four[d].gateEnvelope, &alone[d].gateEnvelope, sizeof(double)), 0) << "head " << d;
        }
    }
}

TEST(SolverKernels, FourRecordHeadsAreGatheredOnlyWhereTheyCanRunSideBySide)
{
    RecordHead heads[4];
    for (RecordHead& head : heads)
        head.prepare(sampleRate);
    RecordHead* const four[] = {&heads[0], &heads[1], &heads[2], &heads[3]};
    heads[3].nextNoise(); // its pink filter's rows now change on other samples
    EXPECT_FALSE(FourRecordHeads().gather(four));
    heads[3].restartNoise(1u, 2u);
    heads[1].setOn(false);
    EXPECT_FALSE(FourRecordHeads().gather(four));
    heads[1].setOn(true);
    EXPECT_TRUE(FourRecordHeads().gather(four));
}

TEST(SolverKernels, CurveInLanesKeepsTheEdgesOfEachSegmentAndOddValues)
{
    EnvelopeCurve curve;
    curve.setCurve(-40.0, 0.5);
    curve.setEnvelope(5000000.0, 1e-9, sampleRate);
    // Negative zero, the knees, both sides of each, far beyond, and what a broken
    // signal brings: each lane must give what the plain pair gives.
    const double low = curve.getLow() / 1.4142135623730951, high = curve.getHigh() / 1.4142135623730951;
    const double probes[] = {0.0, -0.0, 1e-300, low, -low, std::nextafter(low, 1.0), high, -high,
                             std::nextafter(high, 0.0), 10.0, -1e6, std::nan(""), INFINITY, -INFINITY};
    for (double x : probes)
        for (double y : probes)
        {
            double expectedX, expectedY;
            curve.applyPair(x, y, expectedX, expectedY);
            const Lanes actual = curve.applyInLanes(Lanes(x, y));
            const double got[] = {actual.first(), actual.second()}, want[] = {expectedX, expectedY};
            for (int lane = 0; lane < 2; ++lane)
                EXPECT_EQ(std::memcmp(&got[lane], &want[lane], sizeof(double)), 0)
                    << "x " << x << ", y " << y << ", lane " << lane;
        }
}

TEST(SolverKernels, TwoCurvesGatheredInLanesEachGiveTheirOwnResult)
{
    // The decks of a stereo pair solve in lanes with curves of different charge (and,
    // for the bands, of different shape): no lane may take a term of the other.
    EnvelopeCurve first, second;
    first.setCurve(-54.9, 0.7);
    second.setCurve(-46.9, 0.3);
    first.setEnvelope(5000000.0, 1e-9, sampleRate);
    second.setEnvelope(2061296.98, 1e-9, sampleRate);
    for (double charge : {0.003, -0.02})
    {
        first.apply(charge);
        first.commit();
        second.apply(-7.0 * charge);
        second.commit();
        const EnvelopeCurveTerms<Lanes> both = EnvelopeCurve::gather(first, second);
        for (double x : {0.0, 1e-4, -0.01, 0.3, 5.0})
        {
            const double y = -0.5 * x + 1e-3;
            const Lanes curved = both.apply(Lanes(x, y));
            const Lanes level = both.levelFor(Lanes(x, y));
            double expectedX, unusedY, unusedX, expectedY;
            first.applyPair(x, y, expectedX, unusedY);
            second.applyPair(x, y, unusedX, expectedY);
            EXPECT_EQ(curved.first(), expectedX) << x;
            EXPECT_EQ(curved.second(), expectedY) << y;
            EXPECT_EQ(level.first(), first.levelFor(x));
            EXPECT_EQ(level.second(), second.levelFor(y));
        }
    }
}

TEST(SolverKernels, FourDecksInLanesStepEachCompanderAsAloneEvenWhenOneInputIsBroken)
{
    // Four decks with different signals (so their solvers converge after different
    // steps); now and then one deck gets a non-finite sample, which must pass through
    // and leave that deck alone while its lane neighbour solves on.
    struct Case
    {
        const char* name;
        void (*four)(SlidingBandCompander*, ThreeBandCompander*, double*);
        double (*one)(SlidingBandCompander&, ThreeBandCompander&, double);
    };
    const Case cases[] = {
        {"sliding-band encoder",
         [](SlidingBandCompander* s, ThreeBandCompander*, double* h) {
             SlidingBandCompander* const all[] = {&s[0], &s[1], &s[2], &s[3]};
             SlidingBandCompander::encodeFourInLanes(all, h);
         },
         [](SlidingBandCompander& s, ThreeBandCompander&, double h) { return s.encode(h); }},
        {"sliding-band decoder",
         [](SlidingBandCompander* s, ThreeBandCompander*, double* h) {
             SlidingBandCompander* const all[] = {&s[0], &s[1], &s[2], &s[3]};
             SlidingBandCompander::decodeFourInLanes(all, h);
         },
         [](SlidingBandCompander& s, ThreeBandCompander&, double h) { return s.decode(h); }},
        {"three-band encoder",
         [](SlidingBandCompander*, ThreeBandCompander* t, double* h) {
             ThreeBandCompander* const all[] = {&t[0], &t[1], &t[2], &t[3]};
             ThreeBandCompander::encodeFourInLanes(all, h);
         },
         [](SlidingBandCompander&, ThreeBandCompander& t, double h) { return t.encode(h); }},
        {"three-band decoder",
         [](SlidingBandCompander*, ThreeBandCompander* t, double* h) {
             ThreeBandCompander* const all[] = {&t[0], &t[1], &t[2], &t[3]};
             ThreeBandCompander::decodeFourInLanes(all, h);
         },
         [](SlidingBandCompander&, ThreeBandCompander& t, double h) { return t.decode(h); }},
    };
    const std::vector<float> signal = loudSignal(4800, 11);
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        SlidingBandCompander slidingFour[4], slidingAlone[4];
        ThreeBandCompander threeFour[4], threeAlone[4];
        for (int d = 0; d < 4; ++d)
        {
            for (auto* s : {&slidingFour[d], &slidingAlone[d]})
                s->prepare(sampleRate);
            for (auto* t : {&threeFour[d], &threeAlone[d]})
                t->prepare(sampleRate);
        }
        for (std::size_t n = 0; n < signal.size(); ++n)
        {
            double h[4], expected[4];
            for (int d = 0; d < 4; ++d)
            {
                h[d] = 100.0 * signal[(n + 997 * d) % signal.size()] * (1.0 + 0.5 * d);
                if (n % 701 == 350 && d == static_cast<int>(n % 4))
                    h[d] = (n % 2) != 0 ? std::nan("") : INFINITY;
                expected[d] = c.one(slidingAlone[d], threeAlone[d], h[d]);
            }
            c.four(slidingFour, threeFour, h);
            for (int d = 0; d < 4; ++d)
                ASSERT_EQ(std::memcmp(&h[d], &expected[d], sizeof(double)), 0) << "sample " << n << ", deck " << d;
        }
    }
}

} // namespace oxa
