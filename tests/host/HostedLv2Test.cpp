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

juce::StringArray namesOf(const juce::Array<juce::AudioProcessorParameter*>& parameters)
{
    juce::StringArray names;
    for (auto* parameter : parameters)
        names.add(parameter->getName(1024));
    return names;
}

/** Each parameter of both instances to the same normalised place, away from its default. */
void setAlike(juce::AudioPluginInstance& a, juce::AudioPluginInstance& b)
{
    auto first = effectParameters(a);
    auto second = effectParameters(b);
    ASSERT_EQ(first.size(), second.size());
    const std::map<juce::String, float> values{ { "Mix", 0.7f }, { "Feedback", 0.35f }, { "LFO Rate", 0.6f },
                                                { "Flange Depth", 0.8f }, { "Wow Depth", 0.5f }, { "Drive", 0.65f } };
    for (int i = 0; i < first.size(); ++i)
        if (auto it = values.find(first[i]->getName(1024)); it != values.end())
        {
            first[i]->setValueNotifyingHost(it->second);
            second[i]->setValueNotifyingHost(it->second);
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

    const auto lv2Names = namesOf(effectParameters(*lv2));
    EXPECT_GE(lv2Names.size(), 45);
    EXPECT_EQ(lv2Names.joinIntoString("|"), namesOf(effectParameters(*vst3)).joinIntoString("|"));

    for (const auto rate : { 44100.0, 48000.0 })
    {
        OfflineRenderer renderer(*lv2, kBlock);
        ASSERT_EQ(renderer.prepare(rate, 2), "");
        PluginHost::pumpMessages(20);
        EXPECT_EQ(lv2->getLatencySamples(), (int) (rate * 0.06f)) << rate;
    }
}

TEST(HostedLv2, StateSurvivesTheHostsStateInterface)
{
    auto saved = loadLv2();
    ASSERT_NE(saved, nullptr);
    OfflineRenderer renderer(*saved, kBlock);
    ASSERT_EQ(renderer.prepare(kRate, 2), "");

    auto parameters = effectParameters(*saved);
    for (int i = 0; i < parameters.size(); ++i)
        if (!parameters[i]->isDiscrete())
            parameters[i]->setValueNotifyingHost(0.15f + 0.7f * (float) ((i * 7) % 11) / 10.0f);
    settle(*saved, renderer);

    juce::MemoryBlock chunk;
    saved->getStateInformation(chunk);
    ASSERT_GT(chunk.getSize(), 0u);

    auto restored = loadLv2();
    ASSERT_NE(restored, nullptr);
    OfflineRenderer restoredRenderer(*restored, kBlock);
    ASSERT_EQ(restoredRenderer.prepare(kRate, 2), "");
    restored->setStateInformation(chunk.getData(), (int) chunk.getSize());
    settle(*restored, restoredRenderer);

    auto after = effectParameters(*restored);
    ASSERT_EQ(after.size(), parameters.size());
    for (int i = 0; i < parameters.size(); ++i)
        EXPECT_NEAR(after[i]->getValue(), parameters[i]->getValue(), 1.0e-5f) << parameters[i]->getName(100);
}

TEST(HostedLv2, RendersWhatTheVst3RendersForTheSameSettings)
{
    auto lv2 = loadLv2();
    auto vst3 = loadBuiltPlugin(kRate, kBlock);
    ASSERT_NE(lv2, nullptr);
    ASSERT_NE(vst3, nullptr);

    OfflineRenderer lv2Renderer(*lv2, kBlock), vst3Renderer(*vst3, kBlock);
    ASSERT_EQ(lv2Renderer.prepare(kRate, 2), "");
    ASSERT_EQ(vst3Renderer.prepare(kRate, 2), "");
    setAlike(*lv2, *vst3);
    lv2Renderer.deliverPendingChanges();
    vst3Renderer.deliverPendingChanges();
    ASSERT_EQ(lv2Renderer.prepare(kRate, 2), "");
    ASSERT_EQ(vst3Renderer.prepare(kRate, 2), "");

    const auto input = makeNoise(2, (int) kRate);
    const auto fromLv2 = lv2Renderer.render(input, 0);
    const auto fromVst3 = vst3Renderer.render(input, 0);

    ASSERT_EQ(fromLv2.getNumChannels(), fromVst3.getNumChannels());
    float largestDifference = 0.0f;
    for (int channel = 0; channel < fromLv2.getNumChannels(); ++channel)
        for (int i = 0; i < fromLv2.getNumSamples(); ++i)
            largestDifference = juce::jmax(largestDifference,
                                           std::abs(fromLv2.getSample(channel, i) - fromVst3.getSample(channel, i)));
    EXPECT_LT(largestDifference, 1.0e-6f);
    EXPECT_GT(fromLv2.getMagnitude(0, 0, fromLv2.getNumSamples()), 0.01f) << "the comparison saw sound";
}

TEST(HostedLv2, BundlesItCannotReadGiveAnErrorNotAnInstance)
{
    const juce::TemporaryFile scratch;
    const auto root = scratch.getFile();
    ASSERT_TRUE(root.createDirectory());

    const auto noManifest = root.getChildFile("Empty.lv2");
    ASSERT_TRUE(noManifest.createDirectory());
    const auto noPlugin = root.getChildFile("Nothing.lv2");
    ASSERT_TRUE(noPlugin.createDirectory());
    ASSERT_TRUE(noPlugin.getChildFile("manifest.ttl").replaceWithText("@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"));
    const auto vst3AsLv2 = root.getChildFile("Renamed.lv2");
    ASSERT_TRUE(builtBundle().copyDirectoryTo(vst3AsLv2));
    const auto lv2AsVst3 = root.getChildFile("Renamed.vst3");
    ASSERT_TRUE(builtLv2Bundle().copyDirectoryTo(lv2AsVst3));

    struct Case { juce::File bundle; const char* error; };
    const Case cases[] = {
        { noManifest, "has no manifest.ttl" },
        { noPlugin, "declares no LV2 plug-in" },
        { vst3AsLv2, "has no manifest.ttl" },
        { lv2AsVst3, "holds no loadable VST3 plug-in" },
        { root.getChildFile("Missing.lv2"), "no LV2 bundle at" },
        { builtLv2Bundle().getChildFile("manifest.ttl"), "neither a VST3 bundle" },
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
