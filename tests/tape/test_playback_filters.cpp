#include "tape/PlaybackChainsInLanes.h"
#include "tape/PlaybackFilterChain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace oxa
{
namespace
{

constexpr double pi = 3.14159265358979323846;
constexpr double rates[] {44100.0, 48000.0, 96000.0};
constexpr double speeds[] {0.1, 1.0, 1.9952623}; // the ends and the middle of the Speed range

double toDb (double gain) { return 20.0 * std::log10 (std::max (gain, 1e-30)); }

std::vector<double> sweepFrequencies (int points = 24)
{
    std::vector<double> f;
    for (int i = 0; i <= points; ++i)
        f.push_back (20.0 * std::pow (1000.0, i / static_cast<double> (points)));
    return f;
}

// Amplitude of the steady-state answer of a running filter to a unit sine.
template <class Filter>
double measureGain (Filter& filter, double frequency, double sampleRate)
{
    const double w = 2.0 * pi * frequency / sampleRate;
    const long settle = static_cast<long> (0.6 * sampleRate);
    for (long n = 0; n < settle; ++n)
        filter.process (std::sin (w * n));

    const double periods = std::max (1.0, std::ceil (4096.0 * frequency / sampleRate));
    const long count = std::lround (periods * sampleRate / frequency);
    double s = 0.0, c = 0.0;
    for (long n = settle; n < settle + count; ++n)
    {
        const double y = filter.process (std::sin (w * n));
        s += y * std::sin (w * n);
        c += y * std::cos (w * n);
    }
    return 2.0 / count * std::sqrt (s * s + c * c);
}

// The analog frequency that the bilinear transform maps onto a digital one.
double warped (double frequency, double sampleRate) { return sampleRate / pi * std::tan (pi * frequency / sampleRate); }

// A fifth-order polynomial with coefficients c, lowest first.
std::complex<double> quintic (const double* c, std::complex<double> s)
{
    std::complex<double> sum = 0.0, p = 1.0;
    for (int i = 0; i <= 5; ++i, p *= s)
        sum += c[i] * p;
    return sum;
}

// The rational fits, evaluated independently of the filter code, at sigma = j 2 pi f / scale.
double spacingPrototype (double f, double speed, double spacing)
{
    const double den[] {31.9140096763945, 121.5511207267445, 120.43574323431775, 52.92163255906025, 11.328868660114313, 1.0};
    return 32.1662982638662 / std::abs (quintic (den, {0.0, 2.0 * pi * f * spacing / speed}));
}

double thicknessPrototype (double f, double speed, double thickness)
{
    return 1.0 / std::abs (std::complex<double> (1.13639266981092, 2.0 * pi * f * thickness / speed));
}

double trackWidthPrototype (double f, double speed, double ratio)
{
    const double num[] {87.2832402693088, 586.690665242135, 577.310113826375, 101.95851984677438, 3.2472423428792876, 0.0};
    const double den[] {88.2679631465173, 712.453595591835, 1104.5545808559225, 465.6727280770125, 50.13744942298344, 1.0};
    const double w = ratio - 1.0;
    const std::complex<double> s {0.0, 2.0 * pi * f * w * TrackWidthFilter::base / speed};
    return std::abs (1.0 + w * quintic (num, s) / quintic (den, s));
}

struct ResponseCheck
{
    double fitToleranceDb;   // how far the rational fit strays from the physical loss
    double deepestLossDb;    // below this the fit is not meant to hold
};

// Sweeps a running filter; its gain must equal the bilinear image of the fit closely,
// and the physical loss (taken at the warped frequency) within the fit's accuracy.
template <class Filter, class Prototype, class Loss>
void checkResponse (Filter& filter, double sampleRate, ResponseCheck check, Prototype prototype, Loss loss)
{
    for (double f : sweepFrequencies())
    {
        filter.clear();
        const double measured = measureGain (filter, f, sampleRate);
        const double fa = warped (f, sampleRate);
        const double expected = prototype (fa);
        if (toDb (expected) > -100.0)
        {
            EXPECT_NEAR (toDb (measured), toDb (expected), 0.02) << "f " << f << " fs " << sampleRate;
        }

        const double physical = loss (fa);
        if (toDb (physical) > check.deepestLossDb)
        {
            EXPECT_NEAR (toDb (measured), toDb (physical), check.fitToleranceDb) << "f " << f << " fs " << sampleRate;
        }
    }
}

// Designs a filter at every rate, speed and value, and checks each against its fit and loss.
template <class Filter, class Set, class Prototype, class Loss, class Then>
void checkDesigns (std::initializer_list<double> values, ResponseCheck check, Set set, Prototype prototype, Loss loss,
                   Then then)
{
    for (double fs : rates)
        for (double speed : speeds)
            for (double value : values)
            {
                SCOPED_TRACE (testing::Message() << "speed " << speed << " value " << value);
                Filter filter;
                filter.prepare (fs);
                ASSERT_TRUE (filter.setSpeed (speed));
                ASSERT_TRUE (set (filter, value));
                checkResponse (
                    filter, fs, check, [&] (double f) { return prototype (f, speed, value); },
                    [&] (double f) { return loss (f, speed, value); });
                then (filter, fs, value);
            }
}

const auto nothingMore = [] (auto&, double, double) {};

TEST (PlaybackFilterResponse, SpacingAndThicknessFollowTheirLosses)
{
    checkDesigns<SpacingFilter> (
        {0.00001, 0.0001}, {2.4, -40.0}, [] (SpacingFilter& f, double v) { return f.setSpacing (v); },
        spacingPrototype, PlaybackHeadResponse::spacingLoss, nothingMore);
    checkDesigns<ThicknessFilter> (
        {0.000005, 0.00005}, {1.2, -60.0}, [] (ThicknessFilter& f, double v) { return f.setThickness (v); },
        thicknessPrototype, PlaybackHeadResponse::thicknessLoss, nothingMore);
}

TEST (PlaybackFilterResponse, TrackWidthFollowsBoostAndReachesRatioAtLowFrequency)
{
    checkDesigns<TrackWidthFilter> (
        {1.1, 1.82, 2.0}, {0.1, -60.0}, [] (TrackWidthFilter& f, double v) { return f.setRatio (v); },
        trackWidthPrototype, PlaybackHeadResponse::trackWidthBoost,
        [] (TrackWidthFilter& filter, double fs, double ratio)
        {
            // At a very low frequency the head sees the whole extra width.
            filter.clear();
            EXPECT_NEAR (measureGain (filter, 2.0, fs), ratio, 0.02 * ratio);
        });
}

TEST (PlaybackFilterResponse, AzimuthIsARunningMeanOfTheTiltTime)
{
    for (double fs : rates)
        for (double speed : {0.1, 1.0})
        {
            AzimuthFilter filter;
            filter.prepare (fs);
            ASSERT_TRUE (filter.setSpeed (speed));
            ASSERT_TRUE (filter.setAzimuth (0.001));
            EXPECT_NEAR (filter.getLength(), 0.001 / speed * fs / pi, 1e-9);

            for (double f : sweepFrequencies (12))
            {
                const double loss = PlaybackHeadResponse::azimuthLoss (f, speed, 0.001);
                const double x = pi * f * filter.getLength() / fs; // mean over a whole number of samples
                const double discrete = std::abs (std::sin (x) / (filter.getLength() * std::sin (pi * f / fs)));
                if (f < 50.0 || std::abs (loss) < 0.3)
                    continue; // the leaky integrator's corner, and the nulls
                filter.clear();
                const double measured = measureGain (filter, f, fs);
                EXPECT_NEAR (toDb (measured), toDb (discrete), 0.1) << "f " << f;
                EXPECT_NEAR (toDb (measured), toDb (std::abs (loss)), 0.5) << "f " << f;
            }
        }
}

TEST (PlaybackFilterResponse, ShortAzimuthBecomesALeakyPassAndLongOnesStayInTheRing)
{
    AzimuthFilter shortMean;
    shortMean.prepare (44100.0);
    shortMean.setSpeed (1.9952623);
    shortMean.setAzimuth (0.0001);
    EXPECT_EQ (shortMean.getLength(), 1.0);
    EXPECT_NEAR (measureGain (shortMean, 1000.0, 44100.0), 1.0, 0.001);

    // The largest design at 192 kHz just fits; far beyond it stays finite.
    for (double fs : {192000.0, 768000.0})
    {
        AzimuthFilter longMean;
        longMean.prepare (fs);
        longMean.setSpeed (0.1);
        longMean.setAzimuth (0.001);
        EXPECT_LT (longMean.getLength(), static_cast<double> (AzimuthFilter::ringSize));
        for (int n = 0; n < 5000; ++n)
            ASSERT_TRUE (std::isfinite (longMean.process (n % 7 == 0 ? 1.0 : -0.1)));
    }
}

TEST (PlaybackFilterChainBehaviour, OffPassesUnchangedAndSwitchingClearsHistories)
{
    PlaybackFilterChain chain;
    chain.prepare (48000.0);
    for (int n = 0; n < 1000; ++n)
        chain.process (std::sin (0.01 * n));

    chain.setOn (false);
    for (double x : {0.25, -1.0, 3.5})
        EXPECT_EQ (chain.process (x), x);

    // Back on, the chain starts from silence: it answers like a fresh one.
    chain.setOn (true);
    PlaybackFilterChain fresh;
    fresh.prepare (48000.0);
    for (int n = 0; n < 200; ++n)
    {
        const double x = n == 0 ? 1.0 : 0.0;
        EXPECT_EQ (chain.process (x), fresh.process (x));
    }
}

TEST (PlaybackFilterChainBehaviour, RedesignKeepsHistoriesAndRefusesBadValues)
{
    PlaybackFilterChain running, untouched;
    running.prepare (48000.0);
    untouched.prepare (48000.0);
    for (int n = 0; n < 500; ++n)
    {
        const double x = std::sin (0.05 * n);
        running.process (x);
        untouched.process (x);
    }

    // Bad values are refused; rewriting the same design must not disturb a running filter.
    const PlaybackHeadSettings before = running.getSettings();
    using Setter = bool (PlaybackFilterChain::*) (double) noexcept;
    const std::pair<Setter, double> designs[] {
        {&PlaybackFilterChain::setSpeed, before.speed},         {&PlaybackFilterChain::setSpacing, before.spacing},
        {&PlaybackFilterChain::setThickness, before.thickness}, {&PlaybackFilterChain::setAzimuth, before.azimuth},
        {&PlaybackFilterChain::setTrackWidthRatio, before.ratio}};
    for (const auto& [set, value] : designs)
    {
        for (double bad : {std::numeric_limits<double>::quiet_NaN(), 0.0, -1.0, std::numeric_limits<double>::infinity()})
            EXPECT_FALSE ((running.*set) (bad)) << bad;
        EXPECT_TRUE ((running.*set) (value));
    }
    EXPECT_FALSE (running.setTrackWidthRatio (1.0));
    for (int n = 500; n < 700; ++n)
    {
        const double x = std::sin (0.05 * n);
        EXPECT_EQ (running.process (x), untouched.process (x));
    }
}

TEST (PlaybackChainsInLanes, EachLaneGivesItsOwnChainBitForBitAcrossBlocks)
{
    // Two decks with different designs (one azimuth long enough to wrap its ring within a
    // block), so a lane that took the other's coefficient, history or ring would show.
    PlaybackFilterChain lanesFirst, lanesSecond, aloneFirst, aloneSecond;
    for (PlaybackFilterChain* chain : {&lanesFirst, &aloneFirst})
    {
        chain->setSpeed (0.5);
        chain->setSpacing (0.00003);
        chain->setAzimuth (0.0009);
    }
    for (PlaybackFilterChain* chain : {&lanesSecond, &aloneSecond})
    {
        chain->setThickness (0.00002);
        chain->setTrackWidthRatio (3.0);
    }
    std::uint32_t state = 1;
    for (int block = 0; block < 6; ++block)
    {
        PlaybackChainsInLanes lanes;
        ASSERT_TRUE (lanes.gather (lanesFirst, lanesSecond));
        for (int n = 0; n < 300; ++n)
        {
            state = state * 1664525u + 1013904223u;
            const double x = static_cast<double> (state) / 4294967296.0 - 0.5;
            const Lanes got = lanes.process (Lanes (x, -3.0 * x));
            const double want[] {aloneFirst.process (x), aloneSecond.process (-3.0 * x)};
            const double have[] {got.first(), got.second()};
            ASSERT_EQ (std::memcmp (have, want, sizeof (want)), 0) << "block " << block << ", sample " << n;
        }
        lanes.scatter();
    }
}

TEST (PlaybackChainsInLanes, AChainOffRunsAloneAndAClearDuringTheBlockStays)
{
    PlaybackFilterChain first, second;
    PlaybackChainsInLanes lanes;
    second.setOn (false);
    EXPECT_FALSE (lanes.gather (first, second)) << "a chain that is off passes its samples untouched";
    second.setOn (true);
    ASSERT_TRUE (lanes.gather (first, second));
    for (int n = 0; n < 100; ++n)
        lanes.process (Lanes (1.0, 1.0));
    first.reset(); // a setter switching the chain while the block runs
    lanes.scatter();
    // A cleared chain answers silence with silence; the other kept its memory.
    EXPECT_EQ (first.process (0.0), 0.0);
    EXPECT_NE (second.process (0.0), 0.0);
}

TEST (PlaybackHeadCompensation, UndoesTheAnalyticGainAt20Hz)
{
    const PlaybackHeadSettings defaults;
    const float atDefaults = PlaybackHeadResponse::feedbackCompensation (defaults);
    EXPECT_NEAR (atDefaults * PlaybackHeadResponse::magnitude (20.0, defaults), 1.0, 1e-5);
    EXPECT_LT (atDefaults, 1.0f / 1.7f); // the boost of a 1.82 ratio is mostly there at 20 Hz

    PlaybackFilterChain chain;
    chain.prepare (44100.0);
    for (double speed : speeds)
        for (double ratio : {1.1, 2.0})
            for (double spacing : {0.00001, 0.0001})
            {
                chain.setSpeed (speed);
                chain.setTrackWidthRatio (ratio);
                chain.setSpacing (spacing);
                chain.setThickness (0.00005);
                chain.setAzimuth (0.001);
                const double m = PlaybackHeadResponse::magnitude (20.0, chain.getSettings());
                EXPECT_NEAR (chain.feedbackCompensation() * m, 1.0, 1e-5);
            }
}

TEST (PlaybackHeadCompensation, AnalyticCurveScalesWithSpeedAndHasSafeLimits)
{
    // The high-frequency cut moves with speed: 20 times the speed, 20 times the frequency.
    for (double f : {50.0, 300.0, 1000.0})
    {
        PlaybackHeadSettings slow, fast;
        slow.speed = 0.1;
        fast.speed = 2.0;
        EXPECT_NEAR (PlaybackHeadResponse::magnitude (f, slow), PlaybackHeadResponse::magnitude (f * 20.0, fast), 1e-9);
    }

    EXPECT_EQ (PlaybackHeadResponse::thicknessLoss (0.0, 1.0, 0.000005), 1.0);
    EXPECT_EQ (PlaybackHeadResponse::azimuthLoss (0.0, 1.0, 0.0001), 1.0);
    EXPECT_EQ (PlaybackHeadResponse::trackWidthBoost (0.0, 1.0, 1.82), 1.82);
    EXPECT_TRUE (std::isfinite (PlaybackHeadResponse::magnitude (0.0, PlaybackHeadSettings {})));
}

} // namespace
} // namespace oxa
