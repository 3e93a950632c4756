#include "element/NoteLengths.h"
#include "element/ParameterText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace oxa;

namespace
{
std::string show(int type, float v, float min = 0.0f, float max = 1.0f)
{
    return formatFloatValue(type, min, max, v, false);
}

// Parses and expects success; NaN on failure so that a value check fails loudly too.
float read(int type, const std::string& text, float min = 0.0f, float max = 1.0f)
{
    float v = 0.0f;
    if (!parseFloatText(type, min, max, text, false, v))
    {
        ADD_FAILURE() << "no parse: \"" << text << "\" as type " << type;
        return std::nanf("");
    }
    return v;
}

bool refuses(int type, const std::string& text, float min = 0.0f, float max = 1.0f)
{
    float v = 0.0f;
    return !parseFloatText(type, min, max, text, false, v);
}
} // namespace

TEST(FloatText, SecondsSwitchUnitsAtEachDecade)
{
    EXPECT_EQ(show(3, 0.0f), "0 s");
    EXPECT_EQ(show(3, 5e-6f), "5.00 us");
    EXPECT_EQ(show(3, 1e-5f), "10.0 us");
    EXPECT_EQ(show(3, 0.0001f), "100 us");
    EXPECT_EQ(show(3, 0.001f), "1.00 ms");
    EXPECT_EQ(show(3, 0.0125f), "12.5 ms");
    EXPECT_EQ(show(3, 0.25f), "250 ms");
    EXPECT_EQ(show(3, 1.0f), "1.00 s");
    EXPECT_EQ(show(4, 2.5f, 0.0f, 10.0f), "2.50 s");

    EXPECT_NEAR(read(3, "12 ms"), 0.012f, 1e-7f);
    EXPECT_NEAR(read(3, "250 ms", 0.0f, 5.0f), 0.25f, 1e-7f);
    EXPECT_FLOAT_EQ(read(3, "1.00 s", 0.0f, 5.0f), 1.0f);
    // Bare numbers: milliseconds on a short range, seconds on a long one.
    EXPECT_NEAR(read(3, "12", 0.0f, 1.0f), 0.012f, 1e-7f);
    EXPECT_FLOAT_EQ(read(3, "12", 0.0f, 5.0f), 12.0f);
    EXPECT_FLOAT_EQ(read(3, "2500", 0.0f, 1.0f), 2500.0f);
    // Unit case matters for milliseconds and seconds.
    EXPECT_TRUE(refuses(3, "12 MS"));
    EXPECT_TRUE(refuses(3, "ms"));
}

TEST(FloatText, MillisecondsSwitchUnitsAtEachDecade)
{
    EXPECT_EQ(show(5, 0.0f), "0 ms");
    EXPECT_EQ(show(5, 0.005f), "5.00 us");
    EXPECT_EQ(show(5, 0.01f), "10.0 us");
    EXPECT_EQ(show(5, 0.1f), "100 us");
    EXPECT_EQ(show(5, 1.0f), "1.00 ms");
    EXPECT_EQ(show(5, 10.0f), "10.0 ms");
    EXPECT_EQ(show(5, 100.0f), "100 ms");
    EXPECT_EQ(show(5, 1000.0f), "1.00 s");

    EXPECT_FLOAT_EQ(read(5, "12.5 ms"), 12.5f);
    EXPECT_FLOAT_EQ(read(6, "1.5 s"), 1500.0f);
    EXPECT_FLOAT_EQ(read(5, "40"), 40.0f);
}

TEST(FloatText, HertzAndKilohertz)
{
    EXPECT_EQ(show(7, 999.994f), "999.99 Hz");
    EXPECT_EQ(show(7, 1000.0f), "1.00 kHz");

    EXPECT_FLOAT_EQ(read(7, "1.5 kHz", 20.0f, 20000.0f), 1500.0f);
    EXPECT_FLOAT_EQ(read(7, "1.5 KHZ", 20.0f, 20000.0f), 1500.0f);
    EXPECT_FLOAT_EQ(read(7, "440 hz", 20.0f, 20000.0f), 440.0f);
    // Below the range a bare number means kilohertz; above it, nothing fits.
    EXPECT_FLOAT_EQ(read(7, "2", 20.0f, 20000.0f), 2000.0f);
    EXPECT_TRUE(refuses(7, "10", 20.0f, 200.0f));
    EXPECT_TRUE(refuses(7, "25000", 20.0f, 20000.0f));
}

TEST(FloatText, PercentDecibelsAndGain)
{
    EXPECT_EQ(show(1, 12.345f), "12.35%");
    EXPECT_EQ(show(2, 0.5f), "50.00%");
    EXPECT_FLOAT_EQ(read(1, "12.5%"), 12.5f);
    EXPECT_FLOAT_EQ(read(2, "50%"), 0.5f);
    EXPECT_FLOAT_EQ(read(2, "50"), 0.5f);

    EXPECT_EQ(show(9, -6.0f), "-6.00 dB");
    EXPECT_FLOAT_EQ(read(9, "-6 DB"), -6.0f);

    EXPECT_EQ(show(11, 0.0f), "-oo dB");
    EXPECT_EQ(show(11, -1.0f), "-oo dB");
    EXPECT_EQ(show(11, 1.0f), "0.00 dB");
    EXPECT_EQ(show(11, 0.5f), "-6.02 dB");
    EXPECT_EQ(show(11, 1e-21f), "-400.00 dB");
    EXPECT_NEAR(read(11, "-6.02 dB"), 0.5f, 1e-3f);
    EXPECT_NEAR(read(11, "0 dB"), 1.0f, 1e-6f);
    EXPECT_TRUE(refuses(11, "-oo dB"));
}

TEST(FloatText, FilterSide)
{
    EXPECT_EQ(show(10, 0.0f), "Off");
    EXPECT_EQ(show(10, -1.0f), "0 LPF");
    EXPECT_EQ(show(10, -0.5f), "64 LPF");
    EXPECT_EQ(show(10, 0.5f), "64 HPF");

    for (const char* off : {"Off", "off", "OFF", " off "})
        EXPECT_FLOAT_EQ(read(10, off), 0.0f) << off;
    EXPECT_NEAR(read(10, "127 HPF"), 1.0f, 1e-6f);
    EXPECT_NEAR(read(10, "0 lpf"), -1.0f, 1e-6f);
    EXPECT_NEAR(read(10, "64 LPF"), -63.0f / 127.0f, 1e-6f);
    EXPECT_NEAR(read(10, "-10"), -137.0f / 127.0f, 1e-5f);
    EXPECT_NEAR(read(10, "10"), 10.0f / 127.0f, 1e-6f);
}

TEST(FloatText, Pan)
{
    EXPECT_EQ(show(12, 0.0f, -1.0f, 1.0f), "Center");
    EXPECT_EQ(show(12, 0.001f, -1.0f, 1.0f), "Right 0");
    EXPECT_EQ(show(12, -0.25f, -1.0f, 1.0f), "Left 25");
    EXPECT_EQ(show(12, 1.0f, -1.0f, 1.0f), "Right 100");

    EXPECT_FLOAT_EQ(read(12, "Left 25", -1.0f, 1.0f), -0.25f);
    EXPECT_FLOAT_EQ(read(12, "right 100", -1.0f, 1.0f), 1.0f);
    EXPECT_FLOAT_EQ(read(12, "CENTER", -1.0f, 1.0f), 0.0f);
    EXPECT_FLOAT_EQ(read(12, "-50", -1.0f, 1.0f), -0.5f);
}

TEST(FloatText, SemitonesCentsAndPlainNumbers)
{
    EXPECT_EQ(show(14, 1.0f, -12.0f, 12.0f), "1.00 Semitones");
    EXPECT_EQ(show(14, 0.25f, -12.0f, 12.0f), "25.00 Cents");
    EXPECT_FLOAT_EQ(read(14, "1.00 Semitones", -12.0f, 12.0f), 1.0f);
    EXPECT_FLOAT_EQ(read(14, "25 cents", -12.0f, 12.0f), 0.25f);
    EXPECT_FLOAT_EQ(read(14, "-3", -12.0f, 12.0f), -3.0f);

    // Cents turn into semitones only when the range goes past one semitone.
    EXPECT_EQ(show(15, 100.0f, -1200.0f, 1200.0f), "1.00 Semitones");
    EXPECT_EQ(show(15, 100.0f, -100.0f, 100.0f), "100.00 Cents");
    EXPECT_EQ(show(15, 99.0f, -1200.0f, 1200.0f), "99.00 Cents");
    EXPECT_FLOAT_EQ(read(15, "42.5", -1200.0f, 1200.0f), 42.5f);

    EXPECT_EQ(show(13, 1.5f), "1.50 MB");
    EXPECT_EQ(show(0, 0.127f), "0.13");
    EXPECT_FLOAT_EQ(read(0, " 0.125 "), 0.125f);
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
    EXPECT_EQ(formatIntValue(1, 40), "40%");
    EXPECT_EQ(formatIntValue(5, 999), "999 ms");
    EXPECT_EQ(formatIntValue(5, 1500), "1.50 s");
    EXPECT_EQ(formatIntValue(7, 440), "440 Hz");
    EXPECT_EQ(formatIntValue(7, 2000), "2.00 kHz");
    EXPECT_EQ(formatIntValue(14, -7), "-7 Semitones");
    EXPECT_EQ(formatIntValue(15, 30), "30 Cents");
    EXPECT_EQ(formatIntValue(16, 60), "C3");
    EXPECT_EQ(formatIntValue(16, 0), "C-2");
    EXPECT_EQ(formatIntValue(16, -1), "B-2"); // no negative table index

    int v = 5;
    EXPECT_TRUE(parseIntText(" 42 ", v));
    EXPECT_EQ(v, 42);
    EXPECT_FALSE(parseIntText("4.5", v));
    EXPECT_FALSE(parseIntText("", v));
    EXPECT_FALSE(parseIntText("99999999999", v));
    EXPECT_EQ(v, 42);
}
