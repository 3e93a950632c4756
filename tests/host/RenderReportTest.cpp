// What the render tool reports of a render: settings read back, levels, the WAV header
// (its pictures are checked from the command line, in RenderCli.cmake).

#include "host/AudioFiles.h"
#include "host/HostedParameters.h"
#include "render/AudioAnalysis.h"

#include <gtest/gtest.h>

namespace oxa
{
namespace
{
juce::AudioBuffer<float> sine(int channels, double rate, double hz, float amplitude, double seconds)
{
    juce::AudioBuffer<float> buffer(channels, (int) (rate * seconds));
    for (int channel = 0; channel < channels; ++channel)
        for (int i = 0; i < buffer.getNumSamples(); ++i)
            buffer.setSample(channel, i, amplitude * (float) std::sin(2.0 * juce::MathConstants<double>::pi * hz * i / rate));
    return buffer;
}
} // namespace

TEST(ClampReport, SaysClampedOnlyWhenTheAskedNumberIsBeyondAnEnd)
{
    struct Case { const char* asked; const char* readBack; float normalised; bool clamped; };
    const Case cases[] = {
        { "150%", "100.00%", 1.0f, true },      // above the top
        { "-30 dB", "-12.00 dB", 0.0f, true },  // below the bottom
        { "100%", "100.00%", 1.0f, false },     // exactly the end
        { "99.996%", "100.00%", 1.0f, false },  // within the display's rounding
        { "150%", "50.00%", 0.5f, false },      // inside the range: the parser took it as it is
        { "Manual", "Manual", 1.0f, false },    // a step's name has no number
    };
    for (const auto& c : cases)
        EXPECT_EQ(host::wasClamped(c.asked, c.readBack, c.normalised), c.clamped) << c.asked << " -> " << c.readBack;
}

TEST(LevelMeasurement, SineLevelsMatchTheirTheory)
{
    // Loudness is calibrated so that a 997 Hz sine in both channels reads its peak level in LUFS.
    for (const auto rate : { 44100.0, 48000.0, 96000.0 })
    {
        const auto levels = render::measureLevels(sine(2, rate, 997.0, 0.5f, 3.0), rate);
        EXPECT_NEAR(levels.peakDb, -6.02, 0.01) << rate;
        EXPECT_NEAR(levels.rmsDb, -9.03, 0.01) << rate;
        EXPECT_NEAR(levels.loudnessLufs, -6.02, 0.1) << rate;
    }

    juce::AudioBuffer<float> silence(2, 48000);
    silence.clear();
    const auto quiet = render::measureLevels(silence, 48000.0);
    EXPECT_EQ(quiet.peakDb, render::kNoLevel);
    EXPECT_EQ(quiet.loudnessLufs, render::kNoLevel);

    // Below the absolute gate of -70 LUFS nothing counts as loudness, though it has a level.
    const auto whisper = render::measureLevels(sine(2, 48000.0, 997.0, 1.0e-4f, 2.0), 48000.0);
    EXPECT_NEAR(whisper.peakDb, -80.0, 0.01);
    EXPECT_EQ(whisper.loudnessLufs, render::kNoLevel);

    const auto report = render::describeLevels(render::measureLevels(sine(2, 48000.0, 997.0, 0.25f, 1.0), 48000.0),
                                               render::measureLevels(sine(2, 48000.0, 997.0, 0.5f, 1.0), 48000.0));
    EXPECT_TRUE(report.contains("peak      -12.04 dBFS  (-6.02 dB against the input)")) << report;
}

TEST(FloatWav, HasTheNonPcmHeaderStrictReadersWant)
{
    juce::TemporaryFile temporary(".wav");
    host::AudioClip clip{ sine(2, 48000.0, 440.0, 0.5f, 0.01), 48000.0 };
    ASSERT_EQ(host::writeWavFile(temporary.getFile(), clip, 32), "");

    juce::MemoryBlock bytes;
    ASSERT_TRUE(temporary.getFile().loadFileAsData(bytes));
    const auto* data = static_cast<const char*>(bytes.getData());
    const auto word = [&](size_t at) { return juce::ByteOrder::littleEndianInt(data + at); };
    const auto half = [&](size_t at) { return juce::ByteOrder::littleEndianShort(data + at); };

    ASSERT_EQ(bytes.getSize(), 12u + 26u + 12u + 8u + 480u * 8u);
    EXPECT_EQ(juce::String(data + 12, 4), "fmt ");
    EXPECT_EQ(word(16), 18u) << "WAVEFORMATEX with its extension size";
    EXPECT_EQ(half(20), 3u) << "IEEE float, not the extensible tag";
    EXPECT_EQ(half(22), 2u);
    EXPECT_EQ(word(24), 48000u);
    EXPECT_EQ(word(28), 48000u * 8u);
    EXPECT_EQ(half(32), 8u);
    EXPECT_EQ(half(34), 32u);
    EXPECT_EQ(half(36), 0u);
    EXPECT_EQ(juce::String(data + 38, 4), "fact");
    EXPECT_EQ(word(46), 480u) << "frames";
    EXPECT_EQ(juce::String(data + 50, 4), "data");
    EXPECT_EQ(word(4), (juce::uint32) bytes.getSize() - 8u);
}

} // namespace oxa
