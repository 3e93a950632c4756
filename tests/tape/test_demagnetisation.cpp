#include "tape/Demagnetisation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace oxa
{
namespace
{

constexpr double sampleRate = 48000.0;

Demagnetisation makeDropouts (double depth, double rate = 10.0)
{
    Demagnetisation d;
    d.prepare (sampleRate);
    d.setDepth (depth);
    d.setRate (rate, 0);
    return d;
}

TEST (DemagnetisationGain, DepthZeroIsExactlyUnityWhileTheSequenceAdvances)
{
    Demagnetisation silent = makeDropouts (0.0);
    Demagnetisation audible = makeDropouts (1.0);
    const uint64_t switchAt = 10 * static_cast<uint64_t> (sampleRate);
    for (uint64_t s = 0; s < switchAt; ++s)
    {
        ASSERT_EQ (silent.gainAt (s), 1.0) << s;
        audible.gainAt (s);
    }

    // Had the silent one skipped its draws, the two would now disagree.
    silent.setDepth (1.0);
    bool sawDip = false;
    for (uint64_t s = switchAt; s < 2 * switchAt; ++s)
    {
        const double g = silent.gainAt (s);
        ASSERT_EQ (g, audible.gainAt (s)) << s;
        sawDip = sawDip || g < 0.9;
    }
    EXPECT_TRUE (sawDip);
}

TEST (DemagnetisationGain, FullDepthStaysInRangeMovesSmoothlyAndReachesDeepDips)
{
    for (double rate : {5.0, 10.0, 50.0})
    {
        Demagnetisation d = makeDropouts (1.0, rate);
        const double segment = std::floor (sampleRate / rate);
        double previous = 1.0, lowest = 1.0, steepest = 0.0;
        for (uint64_t s = 0; s < 60 * static_cast<uint64_t> (sampleRate); ++s)
        {
            const double g = d.gainAt (s);
            ASSERT_GE (g, 0.0);
            ASSERT_LE (g, 1.0);
            lowest = std::min (lowest, g);
            steepest = std::max (steepest, std::abs (g - previous));
            previous = g;
        }
        // A smoothstep over one segment rises at most 1.5 / segment per sample.
        EXPECT_LT (steepest, 1.6 / segment) << rate;
        EXPECT_LT (lowest, 0.05) << rate;
    }
}

TEST (DemagnetisationGain, SectionsAndGapsLastTwoToNineSegmentsAndEndWithoutDip)
{
    Demagnetisation d = makeDropouts (1.0);
    const uint64_t segment = static_cast<uint64_t> (sampleRate / 10.0);
    uint64_t start = d.getSectionStart(), length = d.getSectionLength();
    EXPECT_EQ (start, 0u);
    EXPECT_EQ (length, segment);

    int sections = 0;
    for (uint64_t s = 0; s < 120 * static_cast<uint64_t> (sampleRate); ++s)
    {
        const double g = d.gainAt (s);
        if (s + 1 == start + length)
        {
            EXPECT_NEAR (g, 1.0, 1e-3) << "a section ends back at full level";
        }
        if (s >= start + length || s < start)
        {
            EXPECT_EQ (g, 1.0) << "no dip in a gap";
        }

        if (d.getSectionStart() != start)
        {
            const uint64_t gap = d.getSectionStart() - (start + length);
            start = d.getSectionStart();
            length = d.getSectionLength();
            EXPECT_EQ (gap % segment, 0u);
            EXPECT_EQ (length % segment, 0u);
            EXPECT_GE (gap / segment, 2u);
            EXPECT_LE (gap / segment, 10u);
            EXPECT_GE (length / segment, 2u);
            EXPECT_LE (length / segment, 10u);
            ++sections;
        }
    }
    EXPECT_GT (sections, 50);
}

TEST (DemagnetisationState, ResetRepeatsTheSequenceAndRateWritesRestartAtTheDeckPosition)
{
    Demagnetisation a = makeDropouts (0.7);
    std::vector<double> first;
    for (uint64_t s = 0; s < 200000; ++s)
        first.push_back (a.gainAt (s));
    EXPECT_LT (*std::min_element (first.begin(), first.end()), 0.9);

    a.reset();
    a.setRate (10.0, 0);
    Demagnetisation b = makeDropouts (0.7);
    for (uint64_t s = 0; s < first.size(); ++s)
    {
        ASSERT_EQ (a.gainAt (s), first[s]);
        b.gainAt (s);
    }

    EXPECT_TRUE (b.setRate (20.0, 123456));
    EXPECT_EQ (b.getSectionStart(), 123456u);
    EXPECT_EQ (b.getSectionLength(), 2400u);

    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (double bad : {nan, 0.0, -5.0, std::numeric_limits<double>::infinity()})
        EXPECT_FALSE (b.setRate (bad, 7));
    b.setDepth (nan);
    b.setDepth (std::numeric_limits<double>::infinity());
    EXPECT_EQ (b.getRate(), 20.0);
    EXPECT_EQ (b.getSectionStart(), 123456u);
    EXPECT_EQ (b.getDepth(), 0.7);
}

} // namespace
} // namespace oxa
