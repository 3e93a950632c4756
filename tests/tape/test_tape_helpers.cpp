#include "tape/Decibels.h"
#include "tape/DelayLine.h"
#include "tape/LfoWaveform.h"
#include "tape/LinearRamp.h"
#include "tape/RandomPair.h"
#include "tape/TapeTanh.h"
#include "tape/TransportGenerator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace oxa
{
namespace
{

TEST(Decibels, ConvertBothWaysWithTheirFloorAtSilence)
{
    EXPECT_FLOAT_EQ(dbToLinear(0.0f), 1.0f);
    EXPECT_NEAR(dbToLinear(-20.0f), 0.1f, 1e-6f);
    EXPECT_NEAR(dbToLinear(40.0f), 100.0f, 1e-3f);
    EXPECT_NEAR(linearToDb(dbToLinear(-37.5f)), -37.5f, 1e-4f);
    EXPECT_EQ(linearToDb(0.0f), -400.0f);
    EXPECT_EQ(linearToDb(9e-21f), -400.0f);
    EXPECT_EQ(linearToDb(std::nanf("")), -400.0f);
}

TEST(TapeTanh, RoundsWithinAnUlpOfTheExactValue)
{
    std::mt19937_64 rng(1);
    std::uniform_real_distribution<double> small(-0.0625, 0.0625);
    for (int i = 0; i < 500000; ++i)
    {
        const double x = i < 100000 ? small(rng) * std::pow(10.0, -(i % 12)) : small(rng);
        const long double exact = std::tanh(static_cast<long double>(x));
        const double ulp = std::nextafter(std::fabs(static_cast<double>(exact)), 1.0)
                           - std::fabs(static_cast<double>(exact));
        ASSERT_LE(std::fabs(static_cast<long double>(tapeTanh(x)) - exact), 0.6L * ulp) << x;
    }
    EXPECT_EQ(tapeTanh(0.0), 0.0);
    EXPECT_EQ(tapeTanh(0.07), std::tanh(0.07));
    EXPECT_EQ(tapeTanh(-3.0), std::tanh(-3.0));
    EXPECT_TRUE(std::isnan(tapeTanh(std::nan(""))));
}

TEST(RandomPair, StartsFromTheResetSeedsAndDrawsWithinHalf)
{
    RandomPair pair;
    EXPECT_EQ(pair.next(), static_cast<float>(TransportGenerator::resetRandomNext));
    EXPECT_EQ(pair.a, TransportGenerator::resetSeedA);
    EXPECT_EQ(pair.b, TransportGenerator::resetSeedB);

    float low = 1.0f, high = -1.0f;
    for (int i = 0; i < 100000; ++i)
    {
        const float v = pair.next();
        ASSERT_LE(std::fabs(v), 0.5f);
        low = std::min(low, v);
        high = std::max(high, v);
    }
    EXPECT_LT(low, -0.45f);
    EXPECT_GT(high, 0.45f);
}

TEST(LinearRamp, MovesOverItsLengthAndStops)
{
    LinearRamp ramp;
    ramp.set(2.0f);
    EXPECT_EQ(ramp.value(), 2.0f);
    ramp.rampTo(4.0f, 4);
    EXPECT_EQ(ramp.value(), 2.0f);
    ramp.advance(1);
    EXPECT_FLOAT_EQ(ramp.value(), 2.5f);
    ramp.advance(10); // clipped at the end
    EXPECT_FLOAT_EQ(ramp.value(), 4.0f);
    EXPECT_FALSE(ramp.isMoving());

    // A new ramp starts where the old one stands.
    ramp.rampTo(0.0f, 2);
    ramp.advance(1);
    EXPECT_FLOAT_EQ(ramp.value(), 2.0f);

    // Zero length or no change jumps.
    ramp.rampTo(7.0f, 0);
    EXPECT_EQ(ramp.value(), 7.0f);
    EXPECT_FALSE(ramp.isMoving());
}

std::vector<float> ramp(int length)
{
    std::vector<float> v(static_cast<std::size_t>(length));
    for (int i = 0; i < length; ++i)
        v[static_cast<std::size_t>(i)] = static_cast<float>(i);
    return v;
}

// Writes the signal in uneven blocks and reads each block at a delay.
std::vector<float> runLine(DelayLine& line, const std::vector<float>& input, double startDelay, double endDelay)
{
    std::vector<float> out(input.size());
    const std::uint32_t sizes[] = {1, 17, 64, 3, 50, 64};
    std::size_t done = 0;
    for (int i = 0; done < input.size(); ++i)
    {
        const auto count = static_cast<std::uint32_t>(std::min<std::size_t>(sizes[i % 6], input.size() - done));
        line.write(input.data() + done, count);
        line.read(out.data() + done, startDelay, endDelay, count);
        line.advance(count);
        done += count;
    }
    return out;
}

TEST(DelayLine, IntegerDelayIsAnExactCopyAcrossTheWrap)
{
    DelayLine line;
    line.configure(64, 100);
    const auto input = ramp(2000);
    for (double delay : {0.0, 1.0, 37.0, 100.0})
    {
        line.clear();
        const auto out = runLine(line, input, delay, delay);
        const auto d = static_cast<std::size_t>(delay);
        for (std::size_t t = 0; t < input.size(); ++t)
            ASSERT_EQ(out[t], t >= d ? input[t - d] : 0.0f) << "delay " << delay << " at " << t;
    }
}

TEST(DelayLine, EveryInterpolationFollowsAStraightLine)
{
    const auto input = ramp(1500);
    for (int mode : {DelayLine::linear, DelayLine::catmullRom, DelayLine::bSpline, DelayLine::nearest})
    {
        DelayLine line;
        line.configure(64, 200);
        line.interpolation = mode;
        const auto out = runLine(line, input, 10.25, 10.25);
        // Nearest rounds the fraction up to the older sample, exactly.
        const float expectedDelay = mode == DelayLine::nearest ? 11.0f : 10.25f;
        const float tolerance = mode == DelayLine::nearest ? 0.0f : 2e-3f;
        for (std::size_t t = 20; t < input.size(); ++t)
            ASSERT_NEAR(out[t], static_cast<float>(t) - expectedDelay, tolerance) << "mode " << mode;
    }
}

TEST(LfoWaveform, DefaultShapeIsANormalisedTriangleAndExtremeWarpsStayBounded)
{
    const float c = LfoWaveform::normaliser(0.0f);
    EXPECT_NEAR(lfoWaveform(0.25f, 0, 0, 0, 0), 0.99f, 1e-6f);
    EXPECT_NEAR(c, 1.0f / 0.99f, 1e-6f);
    // Linear between its extremes, period 1.
    const float a = lfoWaveform(0.3f, 0, 0, 0, 0), b = lfoWaveform(0.35f, 0, 0, 0, 0);
    EXPECT_NEAR(lfoWaveform(0.325f, 0, 0, 0, 0), 0.5f * (a + b), 1e-5f);
    EXPECT_NEAR(lfoWaveform(1.3f, 0, 0, 0, 0), a, 1e-5f);
    EXPECT_NEAR(lfoWaveform(0.75f, 0, 0, 0, 0), -0.99f, 1e-5f);

    // Extreme warps stay bounded and finite.
    for (float shape : {-0.99f, -0.5f, 0.0f, 0.5f, 0.99f})
        for (float symmetry : {-1.0f, -0.999f, 0.0f, 0.5f, 0.9999999f, 1.0f})
            for (float swing : {0.0f, 0.5f, 1.0f})
                for (float phase : {-1.0f, 0.0f, 0.3f, 1.0f})
                    for (float t = 0.0f; t < 2.0f; t += 0.01f)
                    {
                        const float w = lfoWaveform(t, phase, shape, symmetry, swing);
                        ASSERT_TRUE(std::isfinite(w));
                        ASSERT_LE(std::fabs(w * LfoWaveform::normaliser(shape)), 1.0001f);
                    }
    // Shape towards square: most of the cycle sits near the extremes.
    EXPECT_GT(lfoWaveform(0.1f, 0, 0.99f, 0, 0), 0.98f);
    EXPECT_LT(lfoWaveform(0.6f, 0, 0.99f, 0, 0), -0.98f);
}

TEST(ManualCrossfade, SecondDeckFadesInAndOutAtTheEnds)
{
    EXPECT_DOUBLE_EQ(manualCrossfade(0.0, 0.01), 0.0);
    EXPECT_DOUBLE_EQ(manualCrossfade(1.0, 0.01), 0.0);
    EXPECT_DOUBLE_EQ(manualCrossfade(0.5, 0.01), 0.5);
    EXPECT_NEAR(manualCrossfade(0.01, 0.01), 0.5, 1e-12);
    const double halfway = manualCrossfade(0.05, 0.1);
    EXPECT_GT(halfway, 0.0);
    EXPECT_LT(halfway, 0.5);
    EXPECT_NEAR(manualCrossfade(0.95, 0.1), halfway, 1e-12);
}

} // namespace
} // namespace oxa
