// The factory banks through the built bundle: each preset applied as the
// editor's bars apply it, then the demo rendered and measured.

#include "HostedPluginSupport.h"
#include "host/DemoSignal.h"
#include "host/HostedPresets.h"
#include "host/Loudness.h"

#include <algorithm>
#include <iostream>

#ifndef FLUXDECK_RESOURCE_ARCHIVE
#define FLUXDECK_RESOURCE_ARCHIVE ""
#endif

namespace oxa::host::testing
{
namespace
{
constexpr double kRate = 48000.0;
constexpr int kBlock = 512;
// Stepping through a bank may change the loudness by about 3 dB at most.
constexpr double kWindowDb = 3.0;

juce::File archive()
{
    return juce::File(juce::String(FLUXDECK_RESOURCE_ARCHIVE));
}

struct Rendering
{
    juce::String name;
    LoudnessReport report;
    juce::AudioBuffer<float> audio;
};

// A fresh instance with the preset applied, rendering the demo.
Rendering render(const juce::String& entry, PresetKind kind, const juce::AudioBuffer<float>& demo)
{
    Rendering result{ entry.fromLastOccurrenceOf("/", false, false).dropLastCharacters(5), {}, {} };
    auto plugin = loadBuiltPlugin(kRate, kBlock);
    if (plugin == nullptr)
        return result;
    const auto error = applyPreset(*plugin, findPreset(archive(), kind, entry.fromLastOccurrenceOf("/", false, false)
                                                                            .dropLastCharacters(5)),
                                   kind);
    EXPECT_EQ(error, "") << entry;
    OfflineRenderer renderer(*plugin, kBlock);
    EXPECT_EQ(renderer.prepare(kRate, 2), "");
    PluginHost::pumpMessages(20);
    result.audio = renderer.render(demo, plugin->getLatencySamples());
    result.report = measureLoudness(result.audio, kRate);
    return result;
}

// Every factory preset of one kind, each in a fresh instance rendering the same demo.
std::vector<Rendering> renderBank(PresetKind kind)
{
    const auto demo = makeDemoSignal(kRate, 6.0);
    std::vector<Rendering> bank;
    for (const auto& entry : listFactoryPresets(archive(), kind))
        bank.push_back(render(entry, kind, demo));
    return bank;
}

void checkBank(const std::vector<Rendering>& bank)
{
    std::vector<double> levels;
    for (const auto& r : bank)
        levels.push_back(r.report.integratedLufs);
    std::sort(levels.begin(), levels.end());
    const double median = levels[levels.size() / 2];
    for (const auto& r : bank)
    {
        std::cout << "  " << r.name.paddedRight(' ', 28) << juce::String(r.report.integratedLufs, 1) << " LUFS  peak "
                  << juce::String(r.report.peakDbfs, 1) << " dBFS\n";
        EXPECT_TRUE(r.report.finite) << r.name;
        EXPECT_LT(r.report.peakDbfs, 0.0) << r.name;
        EXPECT_NEAR(r.report.integratedLufs, median, kWindowDb / 2) << r.name;
    }
}

TEST(HostedPresets, FactoryPresetsRenderCleanLevelMatchedAndDistinct)
{
    const auto all = renderBank(PresetKind::full);
    ASSERT_EQ(all.size(), 36);
    checkBank(all);

    for (size_t a = 0; a < all.size(); ++a)
        for (size_t b = a + 1; b < all.size(); ++b)
            EXPECT_GT(largestDifference(all[a].audio, all[b].audio), 1.0e-3f)
                << all[a].name << " and " << all[b].name << " sound the same";
}

TEST(HostedPresets, TapePresetsRenderCleanAndLevelMatched)
{
    const auto all = renderBank(PresetKind::tape);
    ASSERT_EQ(all.size(), 18);
    checkBank(all);
}

TEST(HostedPresets, TapePresetChangesOnlyTheTapeParameters)
{
    auto plugin = loadBuiltPlugin(kRate, kBlock);
    ASSERT_NE(plugin, nullptr);
    // Every parameter away from its default, so that a reset to a default shows too;
    // switches and lists at their last step, which the host's cached value then matches.
    for (auto* parameter : effectParameters(*plugin))
        parameter->setValueNotifyingHost(parameter->isDiscrete() || parameter->isBoolean() ? 1.0f : 0.37f);
    PluginHost::pumpMessages(20);

    // Host names of the values that a tape preset may set.
    const juce::StringArray tapeNames{ "Apply Tape Simulation", "Magnetic Hardness", "Magnetic Resistance",
                                       "Demagnetization Depth", "Demagnetization Rate", "Noise Gain",
                                       "Apply Playback Filter", "Spacing", "Thickness", "Azimuth", "Width",
                                       "Tape Speed", "Apply Transport Modulations", "Wow Depth", "Wow Rate",
                                       "Flutter Depth", "Flutter Rate", "Random Channel Unsync", "Random Depth",
                                       "Random Rate", "Apply Compander", "Noise Reduction Encoder",
                                       "Noise Reduction Decoder", "Link NR Encoder and Decoder", "Output Pad",
                                       "Low Latency Mode" };
    for (const auto& entry : listFactoryPresets(archive(), PresetKind::tape))
    {
        std::map<juce::String, float> before;
        for (auto* parameter : effectParameters(*plugin))
            before[parameter->getName(100)] = parameter->getValue();
        const auto name = entry.fromLastOccurrenceOf("/", false, false).dropLastCharacters(5);
        ASSERT_EQ(applyPreset(*plugin, findPreset(archive(), PresetKind::tape, name), PresetKind::tape), "");
        PluginHost::pumpMessages(20);
        int changed = 0;
        for (auto* parameter : effectParameters(*plugin))
        {
            const auto hostName = parameter->getName(100);
            const bool moved = std::abs(parameter->getValue() - before[hostName]) > 1.0e-6f;
            if (tapeNames.contains(hostName))
                changed += moved ? 1 : 0;
            else
                EXPECT_FALSE(moved) << name << " changed " << hostName;
        }
        EXPECT_GT(changed, 0) << name;
    }
}

TEST(HostedPresets, RefusedPresetLeavesThePluginAlone)
{
    auto plugin = loadBuiltPlugin(kRate, kBlock);
    ASSERT_NE(plugin, nullptr);
    auto* mix = findParameter(*plugin, "Mix");
    ASSERT_NE(mix, nullptr);
    mix->setValueNotifyingHost(0.25f);
    const PresetSource cases[] = {
        { "not xml", "x.fxps", {} },
        { "<Other><FluxDeck Mix=\"1\"/></Other>", "x.fxps", {} },
        { "<ModulePreset><TapeEcho Mix=\"1\"/></ModulePreset>", "x.fxps", {} },
        { "<ModulePreset/>", "x.fxps", {} },
        findPreset(archive(), PresetKind::full, "No Such Preset"),
    };
    for (const auto& source : cases)
    {
        EXPECT_NE(applyPreset(*plugin, source, PresetKind::full), "") << source.text;
        EXPECT_FLOAT_EQ(mix->getValue(), 0.25f);
    }
}
} // namespace
} // namespace oxa::host::testing
