// Host writes as a DAW sends them through the bundle: several in one block, a save
// with no block after the writes, and the plug-in's own bypass.

#include "HostedPluginSupport.h"

namespace oxa::host::testing
{
namespace
{
constexpr double kRate = 48000.0;
constexpr int kBlock = 256;

struct Hosted : HostedInstance
{
    Hosted() : HostedInstance(kRate, kBlock) {}

    juce::AudioProcessorParameter& parameter(const char* name) const
    {
        auto* found = findParameter(*plugin, name);
        EXPECT_NE(found, nullptr) << name;
        return found != nullptr ? *found : *plugin->getParameters()[0];
    }

    void write(const char* name, float normalised) { parameter(name).setValueNotifyingHost(normalised); }

    juce::String text(const char* name) const
    {
        auto& p = parameter(name);
        return p.getText(p.getValue(), 100);
    }

    /** One block of silence: every write made before it arrives in that block. */
    void oneBlock()
    {
        juce::AudioBuffer<float> silence(2, kBlock);
        silence.clear();
        renderer->render(silence, 0);
        PluginHost::pumpMessages(30);
    }

    /** Channel 0 of the response to an impulse at sample 0. */
    std::vector<float> impulseResponse(int length)
    {
        juce::AudioBuffer<float> impulse(2, length);
        impulse.clear();
        impulse.setSample(0, 0, 1.0f);
        impulse.setSample(1, 0, 1.0f);
        const auto out = renderer->render(impulse, 0);
        return {out.getReadPointer(0), out.getReadPointer(0) + length};
    }
};
} // namespace

TEST(HostedHostWrites, TwoWritesInOneBlockKeepTheirMeaning)
{
    Hosted hosted;
    ASSERT_NE(hosted.plugin, nullptr);
    hosted.write("Manual Flange", 0.75f);
    hosted.oneBlock();

    // The position first, then the mode that would reset it.
    hosted.write("Manual Flange", 0.625f);
    hosted.write("Flange Mode", 0.0f);
    // With the link on the encoder moves the decoder; the decoder is then set apart
    // to where it was, which only a write compared with the moved value keeps.
    hosted.write("Noise Reduction Encoder", 1.0f / 3.0f);
    hosted.write("Noise Reduction Decoder", 0.0f);
    hosted.oneBlock();

    EXPECT_EQ(hosted.text("Flange Mode"), "Manual");
    EXPECT_EQ(hosted.parameter("Manual Flange").getValue(), 0.625f);
    EXPECT_EQ(hosted.parameter("Noise Reduction Encoder").getValue(), 1.0f / 3.0f);
    EXPECT_EQ(hosted.parameter("Noise Reduction Decoder").getValue(), 0.0f);
}

TEST(HostedHostWrites, ASaveRightAfterAWriteKeepsItsSideEffects)
{
    Hosted hosted;
    ASSERT_NE(hosted.plugin, nullptr);
    hosted.oneBlock();
    const auto typeB = hosted.parameter("Noise Reduction Encoder").getText(2.0f / 3.0f, 100);
    hosted.write("Noise Reduction Encoder", 2.0f / 3.0f); // "Link NR" is on by default
    const auto saved = hosted.state(); // no block in between

    Hosted reopened;
    ASSERT_NE(reopened.plugin, nullptr);
    reopened.restore(saved);
    EXPECT_EQ(reopened.text("Noise Reduction Encoder"), typeB);
    EXPECT_EQ(reopened.text("Noise Reduction Decoder"), typeB) << "reopens decoding what it encodes";
}

TEST(HostedHostWrites, BypassKeepsTheTimingOfTheDryPath)
{
    Hosted hosted;
    ASSERT_NE(hosted.plugin, nullptr);
    auto* bypass = hosted.plugin->getBypassParameter();
    ASSERT_NE(bypass, nullptr);
    EXPECT_EQ(effectParameters(*hosted.plugin).size(), 45) << "the host's list is unchanged";

    const int latency = hosted.plugin->getLatencySamples();
    const int length = latency + 4 * kBlock;
    auto peakAt = [](const std::vector<float>& response) {
        return (int) (std::max_element(response.begin(), response.end(),
                                       [](float a, float b) { return std::abs(a) < std::abs(b); })
                      - response.begin());
    };

    hosted.write("Mix", 0.0f);
    hosted.oneBlock();
    const int dryPeak = peakAt(hosted.impulseResponse(length));

    hosted.write("Mix", 1.0f);
    bypass->setValueNotifyingHost(1.0f);
    hosted.oneBlock();
    hosted.oneBlock(); // past the fade
    const auto bypassed = hosted.impulseResponse(length);
    EXPECT_EQ(dryPeak, latency);
    EXPECT_EQ(peakAt(bypassed), dryPeak);
    EXPECT_EQ(bypassed[(size_t) latency], 1.0f) << "bypassed: the input itself, only delayed";
}
} // namespace oxa::host::testing
