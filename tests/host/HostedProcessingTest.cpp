// Audio through the built bundle, as a host sends it.

#include "HostedPluginSupport.h"

namespace oxa::host::testing
{
namespace
{
constexpr double kRate = 44100.0;
constexpr int kBlock = 512;

float rmsAfter(const juce::AudioBuffer<float>& buffer, int channel, int start)
{
    const auto length = buffer.getNumSamples() - start;
    return length > 0 ? buffer.getRMSLevel(channel, start, length) : 0.0f;
}

void setAll(juce::AudioPluginInstance& plugin, float value)
{
    for (auto* parameter : effectParameters(plugin))
        parameter->setValueNotifyingHost(value);
}
} // namespace

TEST(HostedProcessing, ZeroSampleBlockIsHarmless)
{
    HostedInstance hosted(kRate, kBlock);
    ASSERT_NE(hosted.plugin, nullptr);
    const auto latency = hosted.plugin->getLatencySamples();
    juce::AudioBuffer<float> empty(2, 0);
    juce::MidiBuffer midi;
    midi.addEvent(juce::MidiMessage::noteOn(1, 60, 0.8f), 0);
    hosted.plugin->processBlock(empty, midi);
    hosted.plugin->processBlock(empty, midi);

    // Ordinary blocks still run afterwards.
    const auto output = hosted.renderer->render(makeNoise(2, 4 * kBlock), latency);
    EXPECT_EQ(output.getNumSamples(), 4 * kBlock + latency);
    EXPECT_TRUE(allFinite(output));
    EXPECT_EQ(hosted.plugin->getLatencySamples(), latency);
}

TEST(HostedProcessing, MonoInputGivesTwoEqualOutputChannels)
{
    auto plugin = loadBuiltPlugin(kRate, kBlock);
    ASSERT_NE(plugin, nullptr);
    OfflineRenderer renderer(*plugin, kBlock);
    ASSERT_EQ(renderer.prepare(kRate, 1), "");
    ASSERT_EQ(plugin->getMainBusNumInputChannels(), 1);
    ASSERT_EQ(renderer.outputChannels(), 2);

    const auto latency = plugin->getLatencySamples();
    const auto output = renderer.render(makeNoise(1, (int) (0.3 * kRate)), latency);
    ASSERT_EQ(output.getNumChannels(), 2);

    // Both channels see the same input; only the tape hiss, -80 dB by default, may differ.
    float difference = 0.0f;
    for (int i = 0; i < output.getNumSamples(); ++i)
        difference = std::max(difference, std::abs(output.getSample(0, i) - output.getSample(1, i)));
    EXPECT_LT(difference, 1.0e-3f);
    EXPECT_GT(rmsAfter(output, 0, latency), 0.01f) << "the mono input must come out, not silence";
    EXPECT_GT(rmsAfter(output, 1, latency), 0.01f);
}

TEST(HostedProcessing, StereoChannelsStayApart)
{
    HostedInstance hosted(kRate, kBlock);
    ASSERT_NE(hosted.plugin, nullptr);
    const auto latency = hosted.plugin->getLatencySamples();
    // Noise on the left only: the right output must stay near silence, the left must not.
    auto input = makeNoise(2, (int) (0.3 * kRate));
    input.clear(1, 0, input.getNumSamples());
    const auto output = hosted.renderer->render(input, latency);

    EXPECT_GT(rmsAfter(output, 0, latency), 0.01f);
    EXPECT_LT(rmsAfter(output, 1, 0), 1.0e-3f) << "left input leaks into the right output";
}

TEST(HostedProcessing, ExtremeAndInvalidParameterValuesKeepTheOutputFinite)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const std::pair<const char*, std::vector<float>> cases[] = {
        { "every parameter at 0", { 0.0f } },
        { "every parameter at 1", { 1.0f } },
        { "after NaN and infinite parameter writes", { nan, infinity } },
    };
    for (const auto& [label, writes] : cases)
    {
        HostedInstance hosted(kRate, kBlock);
        ASSERT_NE(hosted.plugin, nullptr);
        for (auto value : writes)
            setAll(*hosted.plugin, value);
        const auto output = hosted.renderer->render(makeNoise(2, (int) (0.5 * kRate)), hosted.plugin->getLatencySamples());
        EXPECT_TRUE(allFinite(output)) << label;
    }
}

TEST(HostedProcessing, LowLatencyModeTellsTheHostItsShorterLatency)
{
    HostedInstance hosted(kRate, kBlock);
    ASSERT_NE(hosted.plugin, nullptr);
    auto& plugin = hosted.plugin;
    ASSERT_EQ(plugin->getLatencySamples(), 2646);
    auto* lowLatency = findParameter(*plugin, "Low Latency Mode");
    ASSERT_NE(lowLatency, nullptr);
    const auto waitForLatency = [&](int expected) {
        for (int attempt = 0; attempt < 20 && plugin->getLatencySamples() != expected; ++attempt)
            hosted.settle();
        return plugin->getLatencySamples();
    };

    lowLatency->setValueNotifyingHost(1.0f);
    EXPECT_EQ(waitForLatency(441), 441);

    lowLatency->setValueNotifyingHost(0.0f);
    EXPECT_EQ(waitForLatency(2646), 2646);
}
} // namespace oxa::host::testing
