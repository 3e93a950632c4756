// The LV2 build as an LV2 host sees it: the same plug-in as the VST3, found by its URI.

#include "HostedPluginSupport.h"

#include <map>

#ifndef FLUXDECK_BUILT_LV2_MODULE
#define FLUXDECK_BUILT_LV2_MODULE ""
#endif

namespace oxa::host::testing
{
namespace
{
constexpr double kRate = 44100.0;
constexpr int kBlock = 256;

juce::File builtLv2Bundle()
{
    return PluginHost::bundleOfLv2Module(juce::File(juce::String(FLUXDECK_BUILT_LV2_MODULE)));
}

/** Every LV2 load gets its own host: a host knows each LV2 URI once. */
std::unique_ptr<juce::AudioPluginInstance> loadLv2(const juce::File& bundle = builtLv2Bundle())
{
    PluginHost pluginHost;
    auto loaded = pluginHost.load(bundle, kRate, kBlock);
    EXPECT_TRUE(loaded) << loaded.error;
    return std::move(loaded.instance);
}

juce::StringArray sortedNamesOf(const juce::Array<juce::AudioProcessorParameter*>& parameters)
{
    juce::StringArray names;
    for (auto* parameter : parameters)
        names.add(parameter->getName(1024));
    names.removeString("Bypass"); // LV2 has no bypass role: a plug-in's own bypass is a plain parameter there
    names.sort(false);
    return names;
}

/** Output for one second of noise, from rest, after the parameter writes have arrived. */
juce::AudioBuffer<float> renderNoise(juce::AudioPluginInstance& plugin)
{
    OfflineRenderer renderer(plugin, kBlock);
    EXPECT_EQ(renderer.prepare(kRate, 2), "");
    return renderer.render(makeNoise(2, (int) kRate), 0);
}

/** Writes some parameters to a running instance by name, one after another as a user
    turns knobs, each arriving before the next: LV2 hosts list parameters by URI, not in
    the plug-in's order, and the plug-in's end state may depend on the order of writes. */
void setWhileRunning(juce::AudioPluginInstance& plugin)
{
    const std::pair<const char*, float> writes[] = { { "Mix", 0.7f },          { "Feedback", 0.35f },
                                                     { "LFO Rate", 0.6f },     { "Flange Depth", 0.8f },
                                                     { "Wow Depth", 0.5f },    { "Drive", 0.65f } };
    OfflineRenderer renderer(plugin, kBlock);
    EXPECT_EQ(renderer.prepare(kRate, 2), "");

    for (const auto& [name, value] : writes)
    {
        auto* parameter = findParameter(plugin, name);
        ASSERT_NE(parameter, nullptr) << name;
        parameter->setValueNotifyingHost(value);
        renderer.deliverPendingChanges();
    }
}
} // namespace

TEST(HostedLv2, IsFluxDeckWithTheVst3sNameLatencyAndParameters)
{
    auto lv2 = loadLv2();
    auto vst3 = loadBuiltPlugin(kRate, kBlock);
    ASSERT_NE(lv2, nullptr);
    ASSERT_NE(vst3, nullptr);

    EXPECT_EQ(lv2->getName(), "Flux Deck");
    EXPECT_EQ(lv2->getPluginDescription().pluginFormatName, "LV2");
    EXPECT_EQ(lv2->getPluginDescription().fileOrIdentifier, "https://oxa.net/plugins/flux-deck");

    const auto lv2Names = sortedNamesOf(effectParameters(*lv2));
    EXPECT_EQ(lv2Names.size(), 45);
    EXPECT_EQ(lv2Names.joinIntoString("|"), sortedNamesOf(effectParameters(*vst3)).joinIntoString("|"));

    for (const auto& [rate, latency] : { std::pair{ 44100.0, 2646 }, std::pair{ 48000.0, 2880 } })
    {
        OfflineRenderer renderer(*lv2, kBlock);
        ASSERT_EQ(renderer.prepare(rate, 2), "");
        EXPECT_EQ(lv2->getLatencySamples(), latency) << rate;
    }
}

TEST(HostedLv2, StateSurvivesTheHostsStateInterface)
{
    // The host keeps no copy of the parameters a state brings, so the proof is the sound:
    // the restored instance renders what the saved one renders, and not what a fresh one does.
    auto saved = loadLv2();
    auto restored = loadLv2();
    auto fresh = loadLv2();
    ASSERT_TRUE(saved != nullptr && restored != nullptr && fresh != nullptr);

    setWhileRunning(*saved);
    juce::MemoryBlock chunk;
    saved->getStateInformation(chunk);
    ASSERT_GT(chunk.getSize(), 0u);

    OfflineRenderer(*restored, kBlock).prepare(kRate, 2);
    restored->setStateInformation(chunk.getData(), (int) chunk.getSize());
    PluginHost::pumpMessages(30);

    const auto fromSaved = renderNoise(*saved);
    EXPECT_LT(largestDifference(renderNoise(*restored), fromSaved), 1.0e-6f);
    EXPECT_GT(largestDifference(renderNoise(*fresh), fromSaved), 1.0e-3f) << "the saved settings change the sound";
}

TEST(HostedLv2, RendersWhatTheVst3RendersForTheSameSettings)
{
    auto lv2 = loadLv2();
    auto vst3 = loadBuiltPlugin(kRate, kBlock);
    ASSERT_NE(lv2, nullptr);
    ASSERT_NE(vst3, nullptr);

    setWhileRunning(*lv2);
    setWhileRunning(*vst3);

    const auto fromLv2 = renderNoise(*lv2);
    EXPECT_LT(largestDifference(fromLv2, renderNoise(*vst3)), 1.0e-6f);
    EXPECT_GT(fromLv2.getMagnitude(0, 0, fromLv2.getNumSamples()), 0.01f) << "the comparison saw sound";
}

TEST(HostedLv2, BundlesItCannotReadGiveAnErrorNotAnInstance)
{
    const juce::TemporaryFile scratch;
    const auto root = scratch.getFile();
    ASSERT_TRUE(root.createDirectory());

    // An empty folder, or a file that is no bundle at all, are the render tool's command-line cases.
    const auto noPlugin = root.getChildFile("Nothing.lv2");
    ASSERT_TRUE(noPlugin.createDirectory());
    ASSERT_TRUE(noPlugin.getChildFile("manifest.ttl").replaceWithText("@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"));
    const auto lv2AsVst3 = root.getChildFile("Renamed.vst3");
    ASSERT_TRUE(builtLv2Bundle().copyDirectoryTo(lv2AsVst3));

    struct Case { juce::File bundle; const char* error; };
    const Case cases[] = {
        { noPlugin, "declares no LV2 plug-in" },
        { lv2AsVst3, "holds no loadable VST3 plug-in" },
        { root.getChildFile("Missing.lv2"), "no LV2 bundle at" },
    };
    for (const auto& c : cases)
    {
        PluginHost pluginHost;
        auto loaded = pluginHost.load(c.bundle, kRate, kBlock);
        EXPECT_FALSE(loaded) << c.bundle.getFullPathName();
        EXPECT_TRUE(loaded.error.contains(c.error)) << loaded.error;
    }

    // A second copy of the same URI in one host would be the first one in disguise.
    const auto copy = root.getChildFile("Copy").getChildFile("Flux Deck.lv2");
    ASSERT_TRUE(builtLv2Bundle().copyDirectoryTo(copy));
    PluginHost pluginHost;
    ASSERT_TRUE(pluginHost.load(builtLv2Bundle(), kRate, kBlock));
    auto second = pluginHost.load(copy, kRate, kBlock);
    EXPECT_FALSE(second);
    EXPECT_TRUE(second.error.contains("already")) << second.error;
    root.deleteRecursively();
}
} // namespace oxa::host::testing
