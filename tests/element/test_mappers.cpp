#include "ElementTestSupport.h"
#include "element/Element.h"
#include "element/NoteLengths.h"
#include "element/ParameterMapper.h"
#include "element/ParameterText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace oxa;

namespace
{
float mapped(const ParameterMapper& m, float n)
{
    m.map(nullptr, n);
    return n;
}

float unmapped(const ParameterMapper& m, float x)
{
    m.unmap(nullptr, x);
    return x;
}

// map then unmap over the whole unit interval gives the start back.
void expectRoundTrip(const ParameterMapper& m, float tolerance)
{
    for (int i = 0; i <= 20; ++i)
    {
        const float n = (float) i / 20.0f;
        EXPECT_NEAR(unmapped(m, mapped(m, n)), n, tolerance) << "at " << n;
    }
}

// The block path must agree with the value path for every length, tails included.
void expectBlockMatchesSingle(const ParameterMapper& m)
{
    for (int count = 0; count <= 9; ++count)
    {
        std::vector<float> block;
        for (int i = 0; i < count; ++i)
            block.push_back(0.09f * (float) i + 0.05f);
        std::vector<float> single = block;
        m.mapBlock(nullptr, block.data(), count);
        for (int i = 0; i < count; ++i)
            EXPECT_FLOAT_EQ(block[i], mapped(m, single[i])) << "count " << count << " index " << i;
    }
}
} // namespace

TEST(Mappers, KnownPointsRoundTripsAndTheBlockPath)
{
    const LinearParameterMapper linear(-24.0f, 12.0f);
    const SyncLinearParameterMapper unsynced(0.01f, 10.0f); // without an owner it stays linear
    const LogMapper log(0.001f, 1.0f);
    const LogMapper shifted(0.0f, 99.0f, 1.0f); // an offset lets the range start at zero
    const CurveMapper straight(0.0f, 0.0f, 10.0f), squared(0.5f, 2.0f, 6.0f), through(0.25f, 5.0f, 0.0f, 100.0f),
        bipolar(0.5f, -4.0f, 4.0f);
    const BipolarLogMapper bipolarLog(100.0f, 1.0f);
    const Oxa3FilterFreqMapper pitch(20.0f, 20000.0f);
    const ConformalMapper conformal(0.0f, 1.0f, 0.25f), wide(20.0f, 2000.0f, 200.0f);

    struct Point
    {
        const char* what;
        const ParameterMapper& mapper;
        float normalised, expected, tolerance;
    };
    const Point points[] = {
        {"linear", linear, 0.0f, -24.0f, 1e-5f},
        {"linear", linear, 1.0f, 12.0f, 1e-5f},
        {"linear extrapolates", linear, 1.5f, 30.0f, 1e-5f},
        {"linear extrapolates", linear, -0.5f, -42.0f, 1e-5f},
        {"unsynced", unsynced, 0.5f, 0.5f * (10.0f - 0.01f) + 0.01f, 1e-6f},
        {"log", log, 0.0f, 0.001f, 1e-9f},
        {"log", log, 1.0f, 1.0f, 1e-6f},
        {"log", log, 0.5f, std::sqrt(0.001f), 1e-6f},
        {"shifted log", shifted, 0.0f, 0.0f, 1e-6f},
        {"shifted log", shifted, 0.5f, 9.0f, 1e-5f},
        {"shifted log", shifted, 1.0f, 99.0f, 1e-4f},
        {"straight curve", straight, 0.3f, 3.0f, 1e-5f},
        {"squared curve", squared, 0.5f, 3.0f, 1e-5f},
        {"curve through a point", through, 0.25f, 5.0f, 1e-4f},
        {"curve through a point", through, 1.0f, 100.0f, 1e-4f},
        {"bipolar curve", bipolar, 0.5f, 0.0f, 1e-7f},
        {"bipolar curve", bipolar, 1.0f, 4.0f, 1e-5f},
        {"bipolar curve", bipolar, 0.0f, -4.0f, 1e-5f},
        {"bipolar curve", bipolar, 0.75f, 1.0f, 1e-5f},
        {"bipolar curve", bipolar, 0.25f, -1.0f, 1e-5f},
        {"bipolar log", bipolarLog, 0.5f, 0.0f, 1e-6f},
        {"bipolar log", bipolarLog, 1.0f, 100.0f, 1e-3f},
        {"bipolar log", bipolarLog, 0.0f, -100.0f, 1e-3f},
        {"pitch", pitch, 1.0f, 20000.0f, 1.0f},
        {"pitch: A at 69", pitch, 69.0f / pitch.scale, 440.0f, 1e-2f},
        {"pitch: an octave is twelve steps", pitch, 81.0f / pitch.scale, 880.0f, 2e-2f},
        {"conformal", conformal, 0.0f, 0.0f, 1e-7f},
        {"conformal", conformal, 0.5f, 0.25f, 1e-6f},
        {"conformal", conformal, 1.0f, 1.0f, 1e-6f},
        {"conformal clamps", conformal, 1.4f, 1.0f, 1e-7f},
        {"wide conformal", wide, 0.5f, 200.0f, 1e-3f},
    };
    for (const Point& p : points)
        EXPECT_NEAR(mapped(p.mapper, p.normalised), p.expected, p.tolerance) << p.what << " at " << p.normalised;

    const std::pair<const ParameterMapper*, float> roundTrips[] = {
        {&linear, 1e-6f}, {&unsynced, 1e-6f}, {&log, 1e-6f}, {&shifted, 1e-6f}, {&squared, 1e-5f}, {&through, 1e-5f},
        {&bipolar, 1e-5f}, {&bipolarLog, 1e-5f}, {&pitch, 2e-5f}, {&conformal, 1e-5f}, {&wide, 1e-5f}};
    for (const auto& [mapper, tolerance] : roundTrips)
        expectRoundTrip(*mapper, tolerance);
    for (const ParameterMapper* m : {(const ParameterMapper*) &linear, (const ParameterMapper*) &unsynced,
                                     (const ParameterMapper*) &log})
        expectBlockMatchesSingle(*m);
    expectBlockMatchesSingle(SyncLogMapper(0.001f, 1.0f));

    EXPECT_FLOAT_EQ(unmapped(linear, 0.0f), 24.0f / 36.0f);
    EXPECT_FALSE(straight.bipolar);
    EXPECT_TRUE(bipolar.bipolar);
    EXPECT_NEAR(mapped(bipolarLog, 0.8f), -mapped(bipolarLog, 0.2f), 1e-4f);
    EXPECT_NEAR(unmapped(pitch, 440.0f), 69.0f * pitch.inverseScale, 1e-5f);
    EXPECT_FLOAT_EQ(unmapped(conformal, -0.1f), 0.0f);
    EXPECT_FLOAT_EQ(unmapped(conformal, 5.0f), 1.0f);
    EXPECT_FALSE(syncsToHost(nullptr));
}

TEST(NoteTable, NormalisedAndLengthToIndexRoundAndClamp)
{
    // Halfway between two steps goes up; NaN takes the first row.
    for (auto [n, index] : {std::pair{0.5f, 15}, {0.0f, 0}, {1.0f, 29}, {-3.0f, 0}, {7.0f, 29},
                            {std::nanf(""), 0}, {0.5f / 29.0f, 1}})
        EXPECT_EQ(noteIndexOfNormalised(n), index) << n;
    EXPECT_FLOAT_EQ(noteLength(15), 1.3333334f);
    for (int i = 0; i < noteCount; ++i)
    {
        EXPECT_EQ(noteIndexOfNormalised(noteNormalisedOfIndex(i)), i);
        EXPECT_EQ(noteIndexOfLength(noteLength(i)), i) << noteText(i);
    }
    // Lengths in no row snap to the first row whose threshold they reach.
    for (auto [length, index] : {std::pair{1000.0f, 0}, {1.4f, 15}, {1.3f, 16}, {0.99995f, 16}, {0.9998f, 17},
                                 {0.05f, 29}, {-1.0f, 29}, {std::nanf(""), 29}})
        EXPECT_EQ(noteIndexOfLength(length), index) << length;
}

TEST(NoteTable, TextsAndOutOfTableRows)
{
    EXPECT_STREQ(noteText(17), "1/8 dot");
    EXPECT_STREQ(noteText(30), "");
    EXPECT_STREQ(noteText(-1), "");
    EXPECT_FLOAT_EQ(noteLength(30), 0.0f);
    EXPECT_EQ(noteIndexOfText("1/16 tri"), 24);
    for (const char* bad : {"1/16 TRI", " 1/16 tri", static_cast<const char*>(nullptr)})
        EXPECT_EQ(noteIndexOfText(bad), -1);
}

TEST(NoteTable, NearestLengthBelowForRateSwitching)
{
    // 120 bpm at 0.1 Hz is twenty beats a cycle.
    for (auto [length, below] : {std::pair{120.0f / 0.1f * 0.016666668f, 20.0f}, {5000.0f, 128.0f}, {5.0f, 4.0f},
                                 {1.4f, 1.3333334f}, {2.6665f, 2.0f}, {0.0625f, 0.0625f}, {0.06f, 0.041666668f},
                                 {std::nanf(""), 0.041666668f}})
        EXPECT_FLOAT_EQ(nearestNoteLengthBelow(length), below) << length;
    for (int i = 0; i < lastNoteIndex; ++i)
        EXPECT_FLOAT_EQ(nearestNoteLengthBelow(noteLength(i)), noteLength(i)) << noteText(i);
}

TEST(SyncedOwner, MappersSwitchToTheNoteTable)
{
    test::SyncedProbe probe;
    SyncLinearParameterMapper linear(0.0f, 10.0f);
    SyncLogMapper log(0.01f, 10.0f);
    float v = 0.5f;
    linear.map(&probe, v);
    EXPECT_FLOAT_EQ(v, 5.0f);
    EXPECT_FALSE(syncsToHost(&probe));

    probe.setBoolParameter(ProcessingElement::syncToHostId(), true);
    ASSERT_TRUE(syncsToHost(&probe));
    for (const ParameterMapper* m : {(const ParameterMapper*) &linear, (const ParameterMapper*) &log})
    {
        for (auto [n, length] : {std::pair{0.5f, 1.3333334f}, {-2.0f, 128.0f}, {3.0f, 0.041666668f}})
        {
            m->map(&probe, n);
            EXPECT_FLOAT_EQ(n, length);
        }
        // A length in no row snaps to the first row it reaches: 1.4 beats is "1/2 tri".
        v = 1.4f;
        m->unmap(&probe, v);
        EXPECT_FLOAT_EQ(v, 15.0f * 0.03448276f);

        float block[7];
        for (int i = 0; i < 7; ++i)
            block[i] = noteNormalisedOfIndex(4 * i + 1);
        m->mapBlock(&probe, block, 7);
        for (int i = 0; i < 7; ++i)
            EXPECT_FLOAT_EQ(block[i], noteLength(4 * i + 1));
    }

    probe.setBoolParameter(ProcessingElement::syncToHostId(), false);
    v = 0.5f;
    log.map(&probe, v);
    EXPECT_NEAR(v, 0.31622776f, 1e-6f);

    test::ProbeElement bare("bare");
    EXPECT_FALSE(syncsToHost(&bare));
    v = 0.25f;
    SyncLinearParameterMapper(0.0f, 2.0f).map(&bare, v);
    EXPECT_FLOAT_EQ(v, 0.5f);
    EXPECT_EQ(floatValueToText(4, 0.0f, 2.0f, 0.5f, &bare), "500 ms");
}

TEST(SyncedOwner, TextFormsFollowTheSwitch)
{
    test::SyncedProbe probe;
    EXPECT_EQ(floatValueToText(6, 0.0f, 2000.0f, 500.0f, &probe), "500 ms");
    probe.setBoolParameter(ProcessingElement::syncToHostId(), true);
    EXPECT_EQ(floatValueToText(6, 0.0f, 2000.0f, 0.5f, &probe), "1/8");
    EXPECT_EQ(floatValueToText(5, 0.0f, 2000.0f, 0.5f, &probe), "500 us");

    float v = 0.0f;
    EXPECT_TRUE(floatTextToValue(8, 0.1f, 20.0f, String("1/4"), &probe, v));
    EXPECT_FLOAT_EQ(v, 16.0f);
    EXPECT_FALSE(floatTextToValue(8, 0.1f, 20.0f, String("5 Hz"), &probe, v));
    EXPECT_TRUE(floatTextToValue(7, 0.1f, 20.0f, String("5 Hz"), &probe, v));
    EXPECT_FLOAT_EQ(v, 5.0f);

    int i = 0;
    EXPECT_TRUE(intTextToValue(String("-17"), i));
    EXPECT_EQ(i, -17);
    EXPECT_EQ(intValueToText(16, 61), "C#3");
}
