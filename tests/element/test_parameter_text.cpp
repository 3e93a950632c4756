#include "element/NoteLengths.h"
#include "element/ParameterText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <tuple>

using namespace oxa;

namespace
{
struct Shown
{
    int type;
    float value, min, max;
    const char* text;
};

// tolerance 0 means "equal to a few ulps".
struct Read
{
    int type;
    const char* text;
    float min, max, value, tolerance;
};

void expectShown(std::initializer_list<Shown> cases)
{
    for (const Shown& c : cases)
        EXPECT_EQ(formatFloatValue(c.type, c.min, c.max, c.value, false), c.text) << "type " << c.type;
}

void expectRead(std::initializer_list<Read> cases)
{
    for (const Read& c : cases)
    {
        float v = std::nanf("");
        EXPECT_TRUE(parseFloatText(c.type, c.min, c.max, c.text, false, v)) << c.text;
        if (c.tolerance == 0.0f)
            EXPECT_FLOAT_EQ(v, c.value) << c.text;
        else
            EXPECT_NEAR(v, c.value, c.tolerance) << c.text;
    }
}

bool refuses(int type, const std::string& text, float min = 0.0f, float max = 1.0f)
{
    float v = 0.0f;
    return !parseFloatText(type, min, max, text, false, v);
}
} // namespace

TEST(FloatText, TimesSwitchUnitsAtEachDecade)
{
    expectShown({{3, 0.0f, 0, 1, "0 s"}, {3, 5e-6f, 0, 1, "5.00 us"}, {3, 1e-5f, 0, 1, "10.0 us"},
                 {3, 0.0001f, 0, 1, "100 us"}, {3, 0.001f, 0, 1, "1.00 ms"}, {3, 0.0125f, 0, 1, "12.5 ms"},
                 {3, 0.25f, 0, 1, "250 ms"}, {3, 1.0f, 0, 1, "1.00 s"}, {4, 2.5f, 0, 10, "2.50 s"},
                 {5, 0.0f, 0, 1, "0 ms"}, {5, 0.005f, 0, 1, "5.00 us"}, {5, 0.01f, 0, 1, "10.0 us"},
                 {5, 0.1f, 0, 1, "100 us"}, {5, 1.0f, 0, 1, "1.00 ms"}, {5, 10.0f, 0, 1, "10.0 ms"},
                 {5, 100.0f, 0, 1, "100 ms"}, {5, 1000.0f, 0, 1, "1.00 s"}});
    // Bare numbers: milliseconds on a short range, seconds on a long one.
    expectRead({{3, "12 ms", 0, 1, 0.012f, 1e-7f}, {3, "250 ms", 0, 5, 0.25f, 1e-7f}, {3, "1.00 s", 0, 5, 1.0f, 0},
                {3, "12", 0, 1, 0.012f, 1e-7f}, {3, "12", 0, 5, 12.0f, 0}, {3, "2500", 0, 1, 2500.0f, 0},
                {5, "12.5 ms", 0, 1, 12.5f, 0}, {6, "1.5 s", 0, 1, 1500.0f, 0}, {5, "40", 0, 1, 40.0f, 0}});
    // Unit case matters for milliseconds and seconds.
    EXPECT_TRUE(refuses(3, "12 MS"));
    EXPECT_TRUE(refuses(3, "ms"));
}

TEST(FloatText, HertzPercentDecibelsAndGain)
{
    expectShown({{7, 999.994f, 0, 1, "999.99 Hz"}, {7, 1000.0f, 0, 1, "1.00 kHz"}, {1, 12.345f, 0, 1, "12.35%"},
                 {2, 0.5f, 0, 1, "50.00%"}, {9, -6.0f, 0, 1, "-6.00 dB"}, {11, 0.0f, 0, 1, "-oo dB"},
                 {11, -1.0f, 0, 1, "-oo dB"}, {11, 1.0f, 0, 1, "0.00 dB"}, {11, 0.5f, 0, 1, "-6.02 dB"},
                 {11, 1e-21f, 0, 1, "-400.00 dB"}});
    // Below the range a bare number means kilohertz.
    expectRead({{7, "1.5 kHz", 20, 20000, 1500.0f, 0}, {7, "1.5 KHZ", 20, 20000, 1500.0f, 0},
                {7, "440 hz", 20, 20000, 440.0f, 0}, {7, "2", 20, 20000, 2000.0f, 0}, {1, "12.5%", 0, 1, 12.5f, 0},
                {2, "50%", 0, 1, 0.5f, 0}, {2, "50", 0, 1, 0.5f, 0}, {9, "-6 DB", 0, 1, -6.0f, 0},
                {11, "-6.02 dB", 0, 1, 0.5f, 1e-3f}, {11, "0 dB", 0, 1, 1.0f, 1e-6f}});
    EXPECT_TRUE(refuses(7, "10", 20.0f, 200.0f));
    EXPECT_TRUE(refuses(7, "25000", 20.0f, 20000.0f));
    EXPECT_TRUE(refuses(11, "-oo dB"));
}

TEST(FloatText, FilterSideAndPan)
{
    expectShown({{10, 0.0f, 0, 1, "Off"}, {10, -1.0f, 0, 1, "0 LPF"}, {10, -0.5f, 0, 1, "64 LPF"},
                 {10, 0.5f, 0, 1, "64 HPF"}, {12, 0.0f, -1, 1, "Center"}, {12, 0.001f, -1, 1, "Right 0"},
                 {12, -0.25f, -1, 1, "Left 25"}, {12, 1.0f, -1, 1, "Right 100"}});
    expectRead({{10, "Off", 0, 1, 0.0f, 0}, {10, "off", 0, 1, 0.0f, 0}, {10, "OFF", 0, 1, 0.0f, 0},
                {10, " off ", 0, 1, 0.0f, 0}, {10, "127 HPF", 0, 1, 1.0f, 1e-6f}, {10, "0 lpf", 0, 1, -1.0f, 1e-6f},
                {10, "64 LPF", 0, 1, -63.0f / 127.0f, 1e-6f}, {10, "-10", 0, 1, -137.0f / 127.0f, 1e-5f},
                {10, "10", 0, 1, 10.0f / 127.0f, 1e-6f}, {12, "Left 25", -1, 1, -0.25f, 0},
                {12, "right 100", -1, 1, 1.0f, 0}, {12, "CENTER", -1, 1, 0.0f, 0}, {12, "-50", -1, 1, -0.5f, 0}});
}

TEST(FloatText, SemitonesCentsAndPlainNumbers)
{
    // Cents turn into semitones only when the range goes past one semitone.
    expectShown({{14, 1.0f, -12, 12, "1.00 Semitones"}, {14, 0.25f, -12, 12, "25.00 Cents"},
                 {15, 100.0f, -1200, 1200, "1.00 Semitones"}, {15, 100.0f, -100, 100, "100.00 Cents"},
                 {15, 99.0f, -1200, 1200, "99.00 Cents"}, {13, 1.5f, 0, 1, "1.50 MB"}, {0, 0.127f, 0, 1, "0.13"}});
    expectRead({{14, "1.00 Semitones", -12, 12, 1.0f, 0}, {14, "25 cents", -12, 12, 0.25f, 0},
                {14, "-3", -12, 12, -3.0f, 0}, {15, "42.5", -1200, 1200, 42.5f, 0}, {0, " 0.125 ", 0, 1, 0.125f, 0}});
    EXPECT_TRUE(refuses(0, ""));
    EXPECT_TRUE(refuses(0, "0.1x"));
}

TEST(FloatText, SyncedTypesUseTheNoteTable)
{
    EXPECT_EQ(formatFloatValue(4, 0.0f, 10.0f, 1.3333334f, true), "1/2 tri");
    EXPECT_EQ(formatFloatValue(8, 0.0f, 10.0f, 0.76f, true), "1/8 dot");
    EXPECT_EQ(formatFloatValue(6, 0.0f, 10.0f, 0.01f, true), "1/64 tri");
    // Only the sync-capable types change.
    EXPECT_EQ(formatFloatValue(3, 0.0f, 10.0f, 2.0f, true), "2.00 s");

    float v = -1.0f;
    ASSERT_TRUE(parseFloatText(4, 0.0f, 10.0f, "1/8 dot", true, v));
    EXPECT_FLOAT_EQ(v, 17.0f); // the index, not the length
    EXPECT_FALSE(parseFloatText(6, 0.0f, 10.0f, "1/8 DOT", true, v));
    EXPECT_FALSE(parseFloatText(8, 0.0f, 10.0f, "0.75", true, v));
    ASSERT_TRUE(parseFloatText(5, 0.0f, 10.0f, "12 ms", true, v));
    EXPECT_FLOAT_EQ(v, 12.0f);
}

TEST(IntText, UnitsNotesAndParsing)
{
    // A negative note number must not index the table backwards: -1 is "B-2".
    const std::tuple<int, int, const char*> cases[] = {
        {1, 40, "40%"}, {5, 999, "999 ms"}, {5, 1500, "1.50 s"}, {7, 440, "440 Hz"},
        {7, 2000, "2.00 kHz"}, {14, -7, "-7 Semitones"}, {15, 30, "30 Cents"}, {16, 60, "C3"},
        {16, 0, "C-2"}, {16, -1, "B-2"}};
    for (const auto& [type, value, text] : cases)
        EXPECT_EQ(formatIntValue(type, value), text);

    int v = 5;
    EXPECT_TRUE(parseIntText(" 42 ", v));
    EXPECT_EQ(v, 42);
    for (const char* bad : {"4.5", "", "99999999999"})
        EXPECT_FALSE(parseIntText(bad, v)) << bad;
    EXPECT_EQ(v, 42);
}
