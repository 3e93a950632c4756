#include "tape/RecordHead.h"
#include "tape/TapeDeck.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace oxa
{
namespace
{
constexpr double pi = 3.141592653589793;

RecordHead quietHead(double sampleRate, double a, double k)
{
    RecordHead head;
    head.prepare(sampleRate);
    head.random.seed(1, 2);
    head.a = a;
    head.k = k;
    head.noiseLevel = 0.0;
    return head;
}

// Steady-state gain of the head for a small sine at frequency.
double sineGain(double sampleRate, double a, double k, double frequency, double amplitude = 0.01)
{
    RecordHead head = quietHead(sampleRate, a, k);
    const int settle = static_cast<int>(sampleRate * 0.5 + 20.0 * sampleRate / frequency);
    const int measure = static_cast<int>(std::round(50.0 * sampleRate / frequency));
    double inSin = 0, inCos = 0, outSin = 0, outCos = 0;
    for (int n = 0; n < settle + measure; ++n)
    {
        const double phase = 2.0 * pi * frequency * n / sampleRate;
        const double x = amplitude * std::sin(phase);
        const double y = head.process(x);
        if (n >= settle)
        {
            inSin += x * std::sin(phase);
            inCos += x * std::cos(phase);
            outSin += y * std::sin(phase);
            outCos += y * std::cos(phase);
        }
    }
    return std::hypot(outSin, outCos) / std::hypot(inSin, inCos);
}

TEST(RecordHead, OffPassesThroughAndSilenceStaysSilentUnlessTheGateIsOpen)
{
    RecordHead off = quietHead(48000.0, 1.0, 100.0);
    off.noiseLevel = 1.0;
    off.setOn(false);
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> dist(-100.0, 100.0);
    for (int n = 0; n < 1000; ++n)
    {
        const double x = dist(rng);
        ASSERT_EQ(off.process(x), x);
    }
    EXPECT_EQ(off.step, 0.0);
    EXPECT_EQ(off.magnetisation, 0.0);

    // Noise at silence is gated shut; with the gate open it hisses.
    for (bool gate : {true, false})
    {
        RecordHead head = quietHead(44100.0, 1.0, 100.0);
        head.noiseLevel = 0.01;
        head.setGateOn(gate);
        double energy = 0.0;
        for (int n = 0; n < 10000; ++n)
            energy += std::pow(head.process(0.0), 2);
        EXPECT_EQ(energy > 0.0, !gate);
    }
}

TEST(RecordHead, PinkNoiseSumStaysBounded)
{
    RecordHead head = quietHead(48000.0, 1.0, 100.0);
    for (int n = 0; n < 200000; ++n)
    {
        const float noise = head.nextNoise();
        ASSERT_LE(std::fabs(head.noiseSum), 8.0f);
        ASSERT_LE(std::fabs(noise), (8.0f + 0.5f) * 0.25f);
    }
}

TEST(RecordHead, SmallSignalsSeeAHighPassAndLargeOnesAreCompressed)
{
    struct Case
    {
        double sampleRate, a, k;
    };
    for (const Case& c : {Case{48000.0, 1.0, 100.0}, Case{44100.0, 1.0, 10000.0}, Case{48000.0, 3.0, 1000.0},
                          Case{96000.0, 5.0, 3000.0}})
    {
        const double corner = c.k * RecordHead::smallSignalSlope(c.a) / (2.0 * pi);
        for (double f : {corner * 0.5, corner, corner * 2.0})
        {
            const double gain = sineGain(c.sampleRate, c.a, c.k, f);
            const double measuredCorner = f * std::sqrt(1.0 / (gain * gain) - 1.0);
            EXPECT_NEAR(measuredCorner / corner, 1.0, 0.05) << "a " << c.a << " k " << c.k << " f " << f;
        }
    }
    // Well above the corner small signals pass; big ones drive the magnetisation into saturation.
    EXPECT_NEAR(sineGain(48000.0, 1.0, 100.0, 1000.0, 0.01), 1.0, 0.01);
    EXPECT_LT(sineGain(48000.0, 1.0, 100.0, 100.0, 100.0), 0.5);
}

TEST(RecordHead, ExtremesNeverGiveNaNOrInf)
{
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> full(-100.0, 100.0);
    for (double sampleRate : {44100.0, 192000.0})
        for (double a : {1.0, 5.0})
            for (double k : {100.0, 100000.0})
                for (double noise : {0.0, 10.0})
                    for (bool gate : {false, true})
                    {
                        RecordHead head = quietHead(sampleRate, a, k);
                        head.noiseLevel = noise;
                        head.gateOn = gate;
                        // Noise, lone full-scale clicks in silence, then held extremes.
                        for (int n = 0; n < 20000; ++n)
                        {
                            const double click = n % 1000 ? 0.0 : (n / 1000) % 2 ? 100.0 : -100.0;
                            const double x = n < 5000 ? full(rng) : n < 10000 ? click : n < 15000 ? 100.0 : -100.0;
                            ASSERT_TRUE(std::isfinite(head.process(x))) << sampleRate << " " << a << " " << k << " " << n;
                        }
                    }
}

TEST(RecordHead, PairedSolveEqualsTwoSingleOnes)
{
    // The decks' heads run side by side; that must not change a bit.
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> dist(-100.0, 100.0);
    for (bool secondOn : {true, false})
    {
        RecordHead single[2] = {quietHead(48000.0, 1.0, 100.0), quietHead(48000.0, 4.0, 30000.0)};
        single[0].noiseLevel = 0.5;
        single[1].noiseLevel = 0.01;
        single[1].random.seed(9, 10);
        single[1].setOn(secondOn);
        RecordHead paired[2] = {single[0], single[1]};
        for (int n = 0; n < 20000; ++n)
        {
            // Slow and fast, quiet and loud input, so pass counts differ.
            const double x0 = (n % 3000 < 1500) ? 0.01 * std::sin(n * 0.01) : dist(rng);
            const double x1 = dist(rng) * ((n / 700) % 2 ? 1.0 : 1e-4);
            double p0 = x0, p1 = x1;
            RecordHead::processPair(paired[0], paired[1], p0, p1);
            ASSERT_EQ(p0, single[0].process(x0)) << n;
            ASSERT_EQ(p1, single[1].process(x1)) << n;
        }
        EXPECT_EQ(paired[0].magnetisation, single[0].magnetisation);
        EXPECT_EQ(paired[1].magnetisation, single[1].magnetisation);
    }
}

// The level it keeps is the drive-fade tests' business; here, when the makeup moves.
TEST(RecordHead, MakeupGainFollowsDriveAndResistance)
{
    // The setter leaves the target; the render hands over to the new drive (0.6 s unheard,
    // then 5 ms of fade), and a change during the hand-over waits for its end.
    TapeDeck deck;
    deck.prepare(48000.0);
    deck.setDrive(100.0);
    EXPECT_FALSE(deck.driveHandover.isRunning());
    deck.followTargets();
    EXPECT_EQ(deck.driveHandover.length, 28800 + 240);
    EXPECT_EQ(deck.appliedDrive, 100.0);
    EXPECT_EQ(deck.outgoing.drive, 1.0);
    EXPECT_NEAR(deck.makeupRamp.value(), std::tanh(1.0) * 100.0, 1e-4);
    deck.setDrive(10.0);
    deck.followTargets();
    EXPECT_EQ(deck.appliedDrive, 100.0);
    for (int n = 0; n < 28800 + 240; ++n)
        deck.driveHandover.nextShare();
    deck.followTargets();
    EXPECT_EQ(deck.appliedDrive, 10.0);
    EXPECT_EQ(deck.outgoing.drive, 100.0);
    deck.setRecordResistance(100000.0);
    EXPECT_NEAR(deck.makeupTarget, std::pow(std::tanh(0.1) * 100.0, 0.6), 1e-9);
}

TEST(TapeDeck, FeedbackCompensationFollowsChainAndSwitch)
{
    TapeDeck deck;
    deck.prepare(48000.0);
    EXPECT_EQ(deck.feedbackCompensation, deck.playbackFilters.feedbackCompensation());
    deck.setPlaybackFilterOn(false);
    EXPECT_EQ(deck.feedbackCompensation, 1.0f);
    // A design change while the chain is off still recalculates.
    deck.setTrackWidthRatio(1.1);
    EXPECT_NE(deck.feedbackCompensation, 1.0f);
    deck.setCompensationOn(false);
    EXPECT_EQ(deck.feedbackCompensation, 1.0f);
    deck.setPlaybackFilterOn(true);
    EXPECT_EQ(deck.feedbackCompensation, 1.0f);
    deck.setCompensationOn(true);
    EXPECT_EQ(deck.feedbackCompensation, deck.playbackFilters.feedbackCompensation());
}

} // namespace
} // namespace oxa
