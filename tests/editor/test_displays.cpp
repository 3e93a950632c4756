// The response pictures must draw what the audio does: each curve is checked at
// the points its physics fixes, and against the running deck stages.
#include "editor/displays/FlangeDisplay.h"
#include "editor/displays/MagneticWaveformDisplay.h"
#include "editor/displays/PlayHeadResponseDisplay.h"
#include "editor/displays/RecordResponseDisplay.h"
#include "tape/RecordHead.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace oxa
{
namespace
{
constexpr double pi = 3.141592653589793;
constexpr float width = 201.0f;

// Steady-state gain of a running stage for a small sine.
template <class Stage>
double sineGain(Stage& stage, double sampleRate, double frequency, double amplitude)
{
    const int settle = static_cast<int>(sampleRate * 0.5 + 20.0 * sampleRate / frequency);
    const int measure = static_cast<int>(std::round(std::ceil(4096.0 * frequency / sampleRate) * sampleRate / frequency));
    double s = 0.0, c = 0.0;
    for (int n = 0; n < settle + measure; ++n)
    {
        const double phase = 2.0 * pi * frequency * n / sampleRate;
        const double y = stage.process(amplitude * std::sin(phase));
        if (n >= settle)
        {
            s += y * std::sin(phase);
            c += y * std::cos(phase);
        }
    }
    return 2.0 / measure * std::hypot(s, c) / amplitude;
}

double toDb(double gain) { return 20.0 * std::log10(std::max(gain, 1e-30)); }

TEST(RecordResponseDisplay, CornerAtResistanceTimesSlopeMatchesTheRunningHeadAndOffIsFlat)
{
    struct Case
    {
        float hardness, resistance;
    };
    for (const Case c : {Case{1.0f, 0.6f}, Case{0.5f, 0.5f}, Case{0.0f, 0.3f}, Case{0.8f, 0.9f}})
    {
        SCOPED_TRACE(testing::Message() << "hardness " << c.hardness << " resistance " << c.resistance);
        const RecordResponseDisplay::Values on{c.hardness, c.resistance, true};
        const double a = 5.0 - 4.0 * c.hardness;
        const double k = 100.0 * std::pow(10.0, 3.0 * c.resistance);
        const double corner = k * (a - 0.855722502) / (2.0 * pi);
        ASSERT_GT(corner, 20.0);
        ASSERT_LT(corner, 20000.0);
        EXPECT_NEAR(RecordResponseDisplay::decibelsAt(on, static_cast<float>(corner)), -3.0103, 0.01);
        EXPECT_NEAR(RecordResponseDisplay::decibelsAt(on, static_cast<float>(corner * 0.5)), -6.9897, 0.01);

        // The picture against the model the decks run, an octave either side of the corner.
        for (double f : {corner * 0.5, corner * 2.0})
        {
            const double sampleRate = std::max(48000.0, 8.0 * f);
            RecordHead head;
            head.prepare(sampleRate);
            head.a = a;
            head.k = k;
            head.noiseLevel = 0.0;
            EXPECT_NEAR(toDb(sineGain(head, sampleRate, f, 0.001)),
                        RecordResponseDisplay::decibelsAt(on, static_cast<float>(f)), 0.3)
                << "f " << f;
        }
    }
    // The hardest tape puts the corner nearest zero, still a finite picture; with the head
    // off any tape is flat at 0 dB.
    const RecordResponseDisplay::Values hardest{1.0f, 0.0f, true};
    for (float x = 0.0f; x <= width; x += 0.25f)
        ASSERT_TRUE(std::isfinite(RecordResponseDisplay::heightAt(hardest, x, width)));
    for (float hardness : {0.0f, 0.5f, 1.0f})
        for (float resistance : {0.0f, 0.6f, 1.0f})
            for (float x = 0.0f; x <= width; x += 10.0f)
                EXPECT_FLOAT_EQ(RecordResponseDisplay::heightAt({hardness, resistance, false}, x, width), 70.0f / 90.0f) << x;
}

TEST(MagneticWaveformDisplay, CleanSineWhenOffAndASettledPeriodicWaveWhenOn)
{
    MagneticWaveformDisplay display;
    display.setValues({1.0f, 0.0f, false});
    const std::vector<float> clean = display.heights(width);
    ASSERT_EQ(clean.size(), static_cast<std::size_t>(width * 4.0f) + 1);
    for (std::size_t i = 0; i < clean.size(); i += 7)
        EXPECT_NEAR(clean[i], 0.5f + 0.5f * std::sin(static_cast<float>(i) * 0.25f * 4.0f * 3.14159265f / width), 1e-5f);

    // With a high corner the head bends the wave; the drawn pass is the settled one,
    // so the second cycle repeats the first.
    for (const float resistance : {0.0f, 0.7f, 1.0f})
    {
        display.setValues({0.0f, resistance, true});
        const std::vector<float> bent = display.heights(width);
        ASSERT_EQ(bent.size(), clean.size());
        const std::size_t half = (bent.size() - 1) / 2;
        for (std::size_t i = 0; i + half < bent.size(); i += 5)
        {
            ASSERT_TRUE(std::isfinite(bent[i]));
            EXPECT_NEAR(bent[i], bent[i + half], 0.01f) << "resistance " << resistance << " at " << i;
        }
        if (resistance > 0.5f)
        {
            double difference = 0.0;
            for (std::size_t i = 0; i < bent.size(); ++i)
                difference = std::max(difference, static_cast<double>(std::fabs(bent[i] - clean[i])));
            EXPECT_GT(difference, 0.05) << "resistance " << resistance;
        }
    }
}

// The analytic head, written out here from the physics, not from the code under test.
double headLossDb(double f, double speed, double spacing, double thickness, double gap, double widthTerm)
{
    const double k = 2.0 * pi * f / speed;
    const double spacingLoss = std::exp(-k * spacing);
    const double thicknessLoss = (1.0 - std::exp(-k * thickness)) / (k * thickness);
    const double u = k * gap / (2.0 * pi);
    const double azimuthLoss = std::sin(u) / u;
    const double boost = 1.0 + (1.0 - std::exp(-k * widthTerm)) / (k * 0.0005);
    return toDb(std::fabs(spacingLoss * thicknessLoss * azimuthLoss * boost));
}

// The running filters against these same losses are the playback filters' own tests.
TEST(PlayHeadResponseDisplay, DrawsTheHeadLosses)
{
    using Values = PlayHeadResponseDisplay::Values;
    for (const Values v : {Values{1.0f, 0.0f, 0.0f, 0.0f, 0.8f, true}, Values{0.3f, 0.5f, 0.2f, 0.1f, 0.3f, true},
                           Values{1.3f, 1.0f, 1.0f, 0.0f, 1.0f, true}, Values{0.0f, 0.2f, 0.6f, 0.05f, 0.0f, true}})
    {
        SCOPED_TRACE(testing::Message() << "speed " << v.speed << " spacing " << v.spacing << " thickness "
                                        << v.thickness << " azimuth " << v.azimuth << " width " << v.trackWidthRatio);
        const double speed = 0.1 * std::pow(10.0, v.speed);
        const double spacing = 1e-5 * std::pow(10.0, v.spacing);
        const double thickness = 5e-6 * std::pow(10.0, v.thickness);
        const double gap = v.azimuth * 0.0009 + 0.0001;
        const double widthTerm = v.trackWidthRatio * 0.00045 + 5e-5;
        for (double f = 25.0; f < 12000.0; f *= 1.7)
        {
            const double analytic = headLossDb(f, speed, spacing, thickness, gap, widthTerm);
            if (analytic > -60.0)
            {
                EXPECT_NEAR(PlayHeadResponseDisplay::decibelsAt(v, static_cast<float>(f)), analytic, 0.01) << "f " << f;
            }
        }
    }
    const Values off{0.0f, 1.0f, 1.0f, 1.0f, 1.0f, false};
    for (float x = 0.0f; x <= 225.0f; x += 5.0f)
        EXPECT_FLOAT_EQ(PlayHeadResponseDisplay::heightAt(off, x, 225.0f), 0.75f);
}

TEST(FlangeDisplay, DecksMeetWhereTheirDelaysAgreeAndMirrorWithPhaseInvert)
{
    constexpr float w = 271.0f;
    for (const float depth : {0.001f, 0.005f, 0.015f})
    {
        SCOPED_TRACE(testing::Message() << "depth " << depth);
        const float shift = depth * 26.66666666666667f * w;
        const FlangeDisplay::Values centre{depth, false, 0.0f};
        const FlangeDisplay::Values inverted{depth, true, 0.0f};
        const FlangeDisplay::Values shortest{depth, false, -1.0f};
        const FlangeDisplay::Values longest{depth, false, 1.0f};
        for (float x = 0.0f; x <= w; x += 3.25f)
        {
            const float first = FlangeDisplay::firstDeckHeightAt(centre, x, w);
            EXPECT_NEAR(FlangeDisplay::secondDeckHeightAt(centre, x, w), first, 1e-5f);
            EXPECT_NEAR(FlangeDisplay::secondDeckHeightAt(inverted, x, w), 1.0f - first, 1e-5f);
            // At the ends of the travel deck two leads or trails deck one by the whole depth.
            EXPECT_NEAR(FlangeDisplay::secondDeckHeightAt(shortest, x, w),
                        FlangeDisplay::firstDeckHeightAt(centre, x + shift, w), 1e-4f);
            EXPECT_NEAR(FlangeDisplay::secondDeckHeightAt(longest, x, w),
                        FlangeDisplay::firstDeckHeightAt(centre, x - shift, w), 1e-4f);
        }
    }
}

} // namespace
} // namespace oxa
