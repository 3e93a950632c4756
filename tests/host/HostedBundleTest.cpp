// What a DAW sees of the built bundle before it sends any audio.

#include "HostedPluginSupport.h"

#include <iterator>

namespace oxa::host::testing
{
namespace
{
const char* const kHostParameterNames[] = {
    "SyncToHost", "Apply Tape Simulation", "Magnetic Hardness", "Magnetic Resistance", "Noise Gain",
    "Apply Noise Gate", "Demagnetization Depth", "Demagnetization Rate", "Apply Playback Filter", "Spacing",
    "Thickness", "Azimuth", "Width", "Tape Speed", "Apply Transport Modulations", "Low Latency Mode",
    "Wow Depth", "Wow Rate", "Flutter Depth", "Flutter Rate", "Random Channel Unsync", "Random Depth",
    "Random Rate", "Delay", "Compensate Feedback", "Feedback", "Drive", "Input Gain", "Output Gain", "Mix",
    "Flange Depth", "Manual Flange", "Fade", "Phase Invert", "Flange Mode", "LFO Rate", "LFO Phase",
    "LFO Shape", "LFO Symmetry", "LFO Swing", "Apply Compander", "Noise Reduction Encoder",
    "Noise Reduction Decoder", "Link NR Encoder and Decoder", "Output Pad",
};

juce::AudioProcessor::BusesLayout layoutOf(const juce::AudioChannelSet& in, const juce::AudioChannelSet& out)
{
    juce::AudioProcessor::BusesLayout layout;
    layout.inputBuses.add(in);
    layout.outputBuses.add(out);
    return layout;
}

int latencyAfterPrepare(double sampleRate, int blockSize)
{
    HostedInstance hosted(sampleRate, blockSize);
    if (hosted.plugin == nullptr)
        return -1;
    PluginHost::pumpMessages(20);
    return hosted.plugin->getLatencySamples();
}
} // namespace

TEST(HostedBundle, LoadsUnderItsProductNameWithOneProgram)
{
    auto plugin = loadBuiltPlugin();
    ASSERT_NE(plugin, nullptr);

    EXPECT_EQ(plugin->getName(), "Flux Deck");
    EXPECT_EQ(plugin->getPluginDescription().pluginFormatName, "VST3");
    EXPECT_FALSE(plugin->getPluginDescription().isInstrument);
    EXPECT_LE(plugin->getNumPrograms(), 1);
    EXPECT_EQ(plugin->getMainBusNumInputChannels(), 2) << "stereo in by default";
    EXPECT_EQ(plugin->getMainBusNumOutputChannels(), 2) << "stereo out by default";
}

TEST(HostedBundle, AnEmptyBundleGivesAnErrorNotAnInstance)
{
    // A missing one is the render tool's command-line case.
    PluginHost pluginHost;
    const auto emptyBundle = juce::File::createTempFile(".vst3");
    ASSERT_TRUE(emptyBundle.createDirectory());
    auto empty = pluginHost.load(emptyBundle, 44100.0, 512);
    EXPECT_FALSE(empty);
    EXPECT_TRUE(empty.error.isNotEmpty());
    emptyBundle.deleteRecursively();
}

TEST(HostedBundle, LatencyIsSixtyMillisecondsTruncatedAtAnyBlockSize)
{
    EXPECT_EQ(latencyAfterPrepare(44100.0, 32), 2646);
    EXPECT_EQ(latencyAfterPrepare(48000.0, 4096), 2880);
    EXPECT_EQ(latencyAfterPrepare(96000.0, 512), 5760);
}

TEST(HostedBundle, TailIsReportedAsInfinite)
{
    HostedInstance hosted(44100.0, 512);
    ASSERT_NE(hosted.plugin, nullptr);
    auto& plugin = hosted.plugin;

    // The VST3 host maps the format's "infinite tail" marker to infinity, not to a length.
    EXPECT_TRUE(std::isinf(plugin->getTailLengthSeconds())) << plugin->getTailLengthSeconds();
    EXPECT_GT(plugin->getTailLengthSeconds(), 0.0);
}

TEST(HostedBundle, ExportsTheFortyFiveParametersInHostOrder)
{
    auto plugin = loadBuiltPlugin();
    ASSERT_NE(plugin, nullptr);

    const auto names = parameterNames(*plugin);
    constexpr int kCount = (int) std::size(kHostParameterNames);
    ASSERT_GE(names.size(), kCount) << names.joinIntoString(" | ", 0, 50);

    const juce::StringArray expected(kHostParameterNames, kCount);
    const juce::StringArray leading(names.begin(), kCount);
    ASSERT_EQ(leading.joinIntoString("\n"), expected.joinIntoString("\n"));

    for (int i = 0; i < kCount; ++i)
        EXPECT_TRUE(plugin->getParameters()[i]->isAutomatable()) << names[i];

    // Of what the wrapper adds after the list, only its bypass is automatable (the rest
    // stand in for MIDI controllers).
    EXPECT_EQ(effectParameters(*plugin).size(), kCount);
    ASSERT_EQ(names.size(), kCount + 1) << names.joinIntoString(" | ", kCount);
    EXPECT_EQ(plugin->getParameters()[kCount], plugin->getBypassParameter());
    EXPECT_GT(plugin->getParameters().size(), kCount + 1) << "the controller stand-ins are there, hidden from automation";
}

TEST(HostedBundle, EveryParameterTextParsesBackToTheSameText)
{
    auto plugin = loadBuiltPlugin();
    ASSERT_NE(plugin, nullptr);

    for (auto* parameter : effectParameters(*plugin))
    {
        for (auto value : { 0.0f, 0.3f, 1.0f })
        {
            const auto text = parameter->getText(value, 1024);
            const auto parsed = parameter->getValueForText(text);
            EXPECT_EQ(parameter->getText(parsed, 1024), text)
                << parameter->getName(1024) << " at " << value << " reads \"" << text << "\"";
        }
    }
}

TEST(HostedBundle, AcceptsExactlyMonoMonoMonoStereoAndStereoStereo)
{
    auto plugin = loadBuiltPlugin();
    ASSERT_NE(plugin, nullptr);

    const auto mono = juce::AudioChannelSet::mono();
    const auto stereo = juce::AudioChannelSet::stereo();

    EXPECT_TRUE(plugin->checkBusesLayoutSupported(layoutOf(mono, mono)));
    EXPECT_TRUE(plugin->checkBusesLayoutSupported(layoutOf(mono, stereo)));
    EXPECT_TRUE(plugin->checkBusesLayoutSupported(layoutOf(stereo, stereo)));

    EXPECT_FALSE(plugin->checkBusesLayoutSupported(layoutOf(stereo, mono)));
    EXPECT_FALSE(plugin->checkBusesLayoutSupported(layoutOf(stereo, juce::AudioChannelSet::createLCR())));
    EXPECT_FALSE(plugin->checkBusesLayoutSupported(layoutOf(juce::AudioChannelSet::quadraphonic(),
                                                            juce::AudioChannelSet::quadraphonic())));
    EXPECT_FALSE(plugin->checkBusesLayoutSupported(layoutOf(juce::AudioChannelSet::create5point1(),
                                                            juce::AudioChannelSet::create5point1())));

    // A refused request leaves the layout that was there.
    EXPECT_FALSE(plugin->setBusesLayout(layoutOf(stereo, mono)));
    EXPECT_EQ(plugin->getMainBusNumInputChannels(), 2);
    EXPECT_EQ(plugin->getMainBusNumOutputChannels(), 2);
}
} // namespace oxa::host::testing
