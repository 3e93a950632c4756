// The parts of the render tool that need no plug-in: command line, files, demo signal,
// and what it reports of a render (its pictures are checked from the command line).

#include "host/AudioFiles.h"
#include "host/DemoSignal.h"
#include "host/HostedParameters.h"
#include "host/PluginHost.h"
#include "render/AudioAnalysis.h"
#include "render/RenderOptions.h"

#include <gtest/gtest.h>

#include <cstring>

namespace oxa
{
namespace
{
juce::String parse(std::initializer_list<const char*> words, render::RenderOptions& options)
{
    juce::StringArray arguments;
    for (auto* word : words)
        arguments.add(word);
    return render::parseRenderOptions(arguments, options);
}

juce::AudioBuffer<float> sine(int channels, double rate, double hz, float amplitude, double seconds)
{
    juce::AudioBuffer<float> buffer(channels, (int) (rate * seconds));
    for (int channel = 0; channel < channels; ++channel)
        for (int i = 0; i < buffer.getNumSamples(); ++i)
            buffer.setSample(channel, i, amplitude * (float) std::sin(2.0 * juce::MathConstants<double>::pi * hz * i / rate));
    return buffer;
}
juce::String parseError(std::initializer_list<const char*> words)
{
    render::RenderOptions options;
    return parse(words, options);
}
} // namespace

TEST(RenderOptions, ReadsEveryOption)
{
    render::RenderOptions options;
    ASSERT_EQ(parse({ "-i", "in.wav", "-o", "out.wav", "--sample-rate", "44100", "--block-size", "64", "--set",
                      "Mix=0.5", "--set", "Delay = 12 ms", "--bundle", "x.vst3", "--seconds", "2.5", "--bits", "24",
                      "--list-parameters" },
                    options),
              "");

    EXPECT_EQ(options.inputPath, "in.wav");
    EXPECT_EQ(options.outputPath, "out.wav");
    EXPECT_EQ(options.bundlePath, "x.vst3");
    EXPECT_DOUBLE_EQ(options.sampleRate, 44100.0);
    EXPECT_EQ(options.blockSize, 64);
    EXPECT_DOUBLE_EQ(options.seconds, 2.5);
    EXPECT_EQ(options.bitsPerSample, 24);
    EXPECT_TRUE(options.listParameters);
    ASSERT_EQ(options.settings.size(), 2u);
    EXPECT_EQ(options.settings[0].name, "Mix");
    EXPECT_EQ(options.settings[0].text, "0.5");
    EXPECT_EQ(options.settings[1].name, "Delay");
    EXPECT_EQ(options.settings[1].text, "12 ms");
}

TEST(RenderOptions, DefaultsNeedOnlyAnOutput)
{
    render::RenderOptions options;
    ASSERT_EQ(parse({ "-o", "out.wav" }, options), "");
    EXPECT_TRUE(options.inputPath.isEmpty() && options.bundlePath.isEmpty()) << "the demo through the built bundle";
    EXPECT_EQ(parseError({ "--list-parameters" }), "") << "listing alone needs no output";
    render::RenderOptions help;
    EXPECT_EQ(parse({ "--help" }, help), "");
    EXPECT_TRUE(help.showHelp);
}

TEST(RenderOptions, RefusesBadCommandLines)
{
    EXPECT_TRUE(parseError({}).contains("output"));
    EXPECT_TRUE(parseError({ "-o" }).contains("needs a value"));
    EXPECT_TRUE(parseError({ "-o", "a.wav", "--frobnicate" }).contains("unknown option"));
    EXPECT_TRUE(parseError({ "-o", "a.wav", "--sample-rate", "fast" }).contains("--sample-rate"));
    EXPECT_TRUE(parseError({ "-o", "a.wav", "--sample-rate", "0" }).contains("--sample-rate"));
    EXPECT_TRUE(parseError({ "-o", "a.wav", "--sample-rate", "nan" }).contains("--sample-rate"));
    EXPECT_TRUE(parseError({ "-o", "a.wav", "--block-size", "0" }).contains("--block-size"));
    EXPECT_TRUE(parseError({ "-o", "a.wav", "--block-size", "12.5" }).contains("--block-size"));
    EXPECT_TRUE(parseError({ "-o", "a.wav", "--block-size", "99999999999" }).contains("--block-size"));
    EXPECT_TRUE(parseError({ "-o", "a.wav", "--seconds", "-1" }).contains("--seconds"));
    EXPECT_TRUE(parseError({ "-o", "a.wav", "--bits", "16" }).contains("--bits"));
    EXPECT_TRUE(parseError({ "-o", "a.wav", "--set", "Mix" }).contains("Name=text"));
    EXPECT_TRUE(parseError({ "-o", "a.wav", "--set", "=0.5" }).contains("Name=text"));
}

TEST(ParameterSetting, SplitsAtTheFirstEqualsSign)
{
    auto setting = host::parseParameterSetting("LFO Rate = 1/4 = quarter");
    ASSERT_TRUE(setting.has_value());
    EXPECT_EQ(setting->name, "LFO Rate");
    EXPECT_EQ(setting->text, "1/4 = quarter");

    EXPECT_FALSE(host::parseParameterSetting("Mix").has_value());
    EXPECT_FALSE(host::parseParameterSetting("  =1").has_value());

    auto empty = host::parseParameterSetting("Mix=");
    ASSERT_TRUE(empty.has_value());
    EXPECT_TRUE(empty->text.isEmpty());
}

TEST(BundlePath, ClimbsFromTheModuleBinaryToTheBundle)
{
    const juce::File module("/build/Flux Deck.vst3/Contents/x86_64-linux/Flux Deck.so");
    EXPECT_EQ(host::PluginHost::bundleOfModule(module).getFullPathName(), "/build/Flux Deck.vst3");
}

TEST(DemoSignal, IsALoudStereoGrooveAndAlwaysTheSame)
{
    const auto demo = host::makeDemoSignal(48000.0, 3.0);
    ASSERT_EQ(demo.getNumChannels(), 2);
    ASSERT_EQ(demo.getNumSamples(), 144000);

    const auto peak = std::max(demo.getMagnitude(0, 0, 144000), demo.getMagnitude(1, 0, 144000));
    EXPECT_NEAR(peak, 0.708f, 0.001f) << "normalised to -3 dBFS";

    // Sound throughout: no quarter second is silent.
    for (int start = 0; start + 12000 <= 144000; start += 12000)
        EXPECT_GT(demo.getRMSLevel(0, start, 12000), 0.02f) << "at sample " << start;

    // The two channels are related but not the same.
    float difference = 0.0f;
    for (int i = 0; i < 144000; ++i)
        difference = std::max(difference, std::abs(demo.getSample(0, i) - demo.getSample(1, i)));
    EXPECT_GT(difference, 0.05f);

    const auto again = host::makeDemoSignal(48000.0, 3.0);
    for (int channel = 0; channel < 2; ++channel)
        EXPECT_EQ(std::memcmp(demo.getReadPointer(channel), again.getReadPointer(channel), 144000 * sizeof(float)), 0);

    float highBand = 0.0f;
    for (int i = 1; i < 144000; ++i)
        highBand += std::abs(demo.getSample(0, i) - demo.getSample(0, i - 1));
    EXPECT_GT(highBand / 144000.0f, 0.01f) << "bright: plenty of energy near the top";

    EXPECT_EQ(host::makeDemoSignal(48000.0, 0.0).getNumSamples(), 0);
    EXPECT_EQ(host::makeDemoSignal(0.0, 2.0).getNumSamples(), 0);
}

class AudioFilesTest : public ::testing::Test
{
protected:
    juce::TemporaryFile temporary{ ".wav" };
    juce::File file = temporary.getFile();

    static host::AudioClip ramp(int channels, int length)
    {
        host::AudioClip clip;
        clip.sampleRate = 44100.0;
        clip.samples.setSize(channels, length);
        for (int channel = 0; channel < channels; ++channel)
            for (int i = 0; i < length; ++i)
                clip.samples.setSample(channel, i, (float) (i - length / 2) / (float) length * (channel ? -1.5f : 1.0f));
        return clip;
    }
};

TEST_F(AudioFilesTest, FloatWavKeepsEverySampleExactly)
{
    const auto written = ramp(2, 1000);
    ASSERT_EQ(host::writeWavFile(file, written, 32), "");

    host::AudioClip read;
    ASSERT_EQ(host::readAudioFile(file, read), "");
    EXPECT_EQ(read.sampleRate, 44100.0);
    ASSERT_EQ(read.samples.getNumChannels(), 2);
    ASSERT_EQ(read.samples.getNumSamples(), 1000);
    for (int channel = 0; channel < 2; ++channel)
        for (int i = 0; i < 1000; ++i)
            ASSERT_EQ(read.samples.getSample(channel, i), written.samples.getSample(channel, i));
}

TEST_F(AudioFilesTest, TwentyFourBitWavIsCloseToTheFloats)
{
    const auto written = ramp(1, 1000); // -0.5 .. 0.5
    ASSERT_EQ(host::writeWavFile(file, written, 24), "");
    EXPECT_GE(file.getSize(), 3 * 1000);
    EXPECT_LT(file.getSize(), 4 * 1000) << "three bytes a sample, not four";

    host::AudioClip read;
    ASSERT_EQ(host::readAudioFile(file, read), "");
    for (int i = 0; i < 1000; ++i)
        ASSERT_NEAR(read.samples.getSample(0, i), written.samples.getSample(0, i), 1.0e-6f);

    EXPECT_NE(host::writeWavFile(file, written, 16), "");
}

TEST_F(AudioFilesTest, UnreadableInputsGiveMessages)
{
    host::AudioClip clip;
    EXPECT_TRUE(host::readAudioFile(juce::File("/nonexistent/in.wav"), clip).contains("no input"));

    ASSERT_TRUE(file.replaceWithText("RIFF? not really a wave file"));
    EXPECT_TRUE(host::readAudioFile(file, clip).contains("not a readable WAV"));

    host::AudioClip surround;
    surround.sampleRate = 48000.0;
    surround.samples.setSize(6, 100);
    surround.samples.clear();
    ASSERT_EQ(host::writeWavFile(file, surround, 32), "");
    EXPECT_TRUE(host::readAudioFile(file, clip).contains("channels"));

    EXPECT_TRUE(host::writeWavFile(juce::File("/nonexistent/dir/out.wav"), ramp(1, 10), 32).isNotEmpty());
}

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

TEST_F(AudioFilesTest, FloatWavHasTheNonPcmHeaderStrictReadersWant)
{
    host::AudioClip clip{ sine(2, 48000.0, 440.0, 0.5f, 0.01), 48000.0 };
    ASSERT_EQ(host::writeWavFile(file, clip, 32), "");

    juce::MemoryBlock bytes;
    ASSERT_TRUE(file.loadFileAsData(bytes));
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
