// What a Drive change hands over with: the crossfade that keeps the level of two partly
// alike signals, the hand-over's course, and the record head's memory carried over to the
// new drive.
#include "tape/PowerKeepingCrossfade.h"
#include "tape/RecordHead.h"
#include "tape/TapeDeck.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace oxa
{
namespace
{
constexpr double sampleRate = 48000.0;

double decibels(double powerRatio) { return 10.0 * std::log10(powerRatio); }

// The incoming signal as a blend of the outgoing one (x) and an unrelated one (y) of the
// same level: correlation = alike.
struct Blend
{
    const char* name;
    double alike;
    double share;
    double expectedDb; // output power against the input's
};

TEST(PowerKeepingCrossfade, KeepsTheLevelWhateverTheCorrelation)
{
    for (const Blend blend : {Blend{"identical", 1.0, 0.5, 0.0}, Blend{"unrelated", 0.0, 0.5, 0.0},
                              Blend{"unrelated, early", 0.0, 0.2, 0.0}, Blend{"half alike", 0.5, 0.5, 0.0},
                              Blend{"opposite, lift capped", -1.0, 0.4, 20.0 * std::log10(0.2 * 2.0)}})
    {
        std::mt19937 random(7);
        std::normal_distribution<double> noise;
        PowerKeepingCrossfade fade;
        fade.start(sampleRate);
        const double other = std::sqrt(1.0 - blend.alike * blend.alike);
        double in = 0.0, out = 0.0;
        for (int n = 0; n < 48000; ++n)
        {
            const double x = noise(random), y = noise(random);
            const double y2 = fade.mix(x, blend.alike * x + other * y, blend.share);
            ASSERT_TRUE(std::isfinite(y2)) << blend.name;
            if (n >= 24000) // after the correlation has been judged
            {
                in += x * x;
                out += y2 * y2;
            }
        }
        EXPECT_NEAR(decibels(out / in), blend.expectedDb, 0.25) << blend.name;
    }
}

TEST(PowerKeepingCrossfade, PassesTheEndsAndSilenceUntouched)
{
    PowerKeepingCrossfade fade;
    fade.start(sampleRate);
    EXPECT_EQ(fade.mix(0.0, 0.0, 0.5), 0.0);
    for (int n = 0; n < 1000; ++n)
    {
        const double x = std::sin(n * 0.05), y = std::cos(n * 0.031);
        ASSERT_EQ(fade.mix(x, y, 0.0), x);
        ASSERT_NEAR(fade.mix(x, y, 1.0), y, 1e-15);
    }
}

// The new path is unheard while it warms up, then its share rises to 1 without a corner.
TEST(DriveHandover, SilentWarmUpThenAnSCurve)
{
    DriveHandover handover;
    handover.start(100, 40);
    for (int n = 0; n < 100; ++n)
        ASSERT_EQ(handover.nextShare(), 0.0) << n;
    double last = 0.0;
    for (int n = 0; n < 40; ++n)
    {
        ASSERT_TRUE(handover.isRunning());
        const double share = handover.nextShare();
        ASSERT_GE(share, last);
        ASSERT_LT(share - last, n == 0 ? 0.003 : 0.04) << n;
        last = share;
    }
    EXPECT_FALSE(handover.isRunning());
    EXPECT_LT(1.0 - last, 0.003) << "the new path alone follows without a corner";
}

// A small Drive move is heard soon; a large one, or a drive no ratio can be taken of,
// gets the full warm-up.
TEST(DriveHandover, WarmUpGrowsWithTheStep)
{
    EXPECT_EQ(TapeDeck::driveWarmUpFor(2.0, 2.0), TapeDeck::shortestWarmUpSeconds);
    EXPECT_NEAR(TapeDeck::driveWarmUpFor(1.0, std::pow(10.0, 3.0 / 20.0)), TapeDeck::driveWarmUpSeconds / 8.0, 1e-9);
    EXPECT_NEAR(TapeDeck::driveWarmUpFor(100.0, 100.0 / std::pow(10.0, 0.6)), TapeDeck::driveWarmUpSeconds / 2.0, 1e-9);
    for (auto [from, to] : {std::pair{1.0, 100.0}, {100.0, 1.0}, {0.0, 1.0}, {1.0, std::nan("")}})
        EXPECT_EQ(TapeDeck::driveWarmUpFor(from, to), TapeDeck::driveWarmUpSeconds) << from << " -> " << to;
}

// The old path is what is heard during a hand-over: its playback filters follow every
// design change at once, as the deck's own do.
TEST(DriveHandover, OldPathFollowsPlaybackDesignChanges)
{
    TapeDeck deck;
    deck.prepare(sampleRate);
    deck.setDrive(10.0);
    deck.followTargets();
    ASSERT_TRUE(deck.driveHandover.isRunning());
    deck.setSpacing(0.00003);
    deck.setThickness(0.00002);
    deck.setAzimuth(0.0004);
    deck.setTrackWidthRatio(1.5);
    deck.setTapeSpeed(0.5);
    deck.setPlaybackFilterOn(false);
    const PlaybackHeadSettings heard = deck.outgoing.playbackFilters.getSettings();
    const PlaybackHeadSettings target = deck.playbackFilters.getSettings();
    EXPECT_EQ(heard.spacing, target.spacing);
    EXPECT_EQ(heard.thickness, target.thickness);
    EXPECT_EQ(heard.azimuth, target.azimuth);
    EXPECT_EQ(heard.ratio, target.ratio);
    EXPECT_EQ(heard.speed, target.speed);
    EXPECT_FALSE(deck.outgoing.playbackFilters.isOn());
}

// Below saturation the scaled memory is what the head would hold had it been driven at the
// new gain all along: it then plays on as that head does.
TEST(RecordHead, ScaledMemoryPlaysOnAsTheHeadDrivenSoAllAlong)
{
    for (const double factor : {0.1, 3.0})
    {
        RecordHead scaled, drivenSo;
        for (RecordHead* head : {&scaled, &drivenSo})
        {
            head->prepare(sampleRate);
            head->noiseLevel = 0.0;
        }
        auto signal = [](int n) { return 0.002 * std::sin(n * 0.004) + 0.001 * std::sin(n * 0.07); };
        int n = 0;
        for (; n < 24000; ++n)
        {
            scaled.process(signal(n));
            drivenSo.process(factor * signal(n));
        }
        scaled.scaleMemory(factor);
        double worst = 0.0, peak = 0.0;
        for (; n < 26400; ++n)
        {
            const double expected = drivenSo.process(factor * signal(n));
            worst = std::max(worst, std::fabs(scaled.process(factor * signal(n)) - expected));
            peak = std::max(peak, std::fabs(expected));
        }
        EXPECT_LT(worst, 1e-4 * peak) << factor;
    }
}
} // namespace
} // namespace oxa
