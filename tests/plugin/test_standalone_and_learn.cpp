// The plug-in's tree in each wrapper, the standalone voice through the whole plug-in,
// and MIDI-learned connections kept and dropped by the host's state.
#include "engine/MidiLearn.h"
#include "engine/instrument/SynthElements.h"
#include "plugin/FluxDeckPlugin.h"
#include "support/ScopedWrapperType.h"
#include "support/StateChunks.h"
#include "tape/FluxDeckProcessor.h"

#include <gtest/gtest.h>

using namespace oxa;
using namespace oxa::test;

namespace
{
std::unique_ptr<FluxDeckPlugin> makePlugin(juce::AudioProcessor::WrapperType type)
{
    test::ScopedWrapperType wrapper(type);
    return std::make_unique<FluxDeckPlugin>();
}

std::vector<std::string> topLevelNames(const FluxDeckPlugin& plugin)
{
    std::vector<std::string> names;
    for (const ProcessingElement* e : plugin.getEngine()->renderOrder())
        names.push_back(e->name().text().str());
    return names;
}

MidiLearn learnOf(FluxDeckPlugin& plugin, uint32_t id)
{
    return MidiLearn(*plugin.getProxy(), String("/FluxDeck"), id);
}

float rmsOfBlocks(FluxDeckPlugin& plugin, juce::MidiBuffer first, int blocks)
{
    juce::AudioBuffer<float> buffer(2, 512);
    float rms = 0.0f;
    for (int b = 0; b < blocks; ++b)
    {
        buffer.clear();
        juce::MidiBuffer midi;
        if (b == 0)
            midi = first;
        plugin.processBlock(buffer, midi);
        rms = buffer.getRMSLevel(0, 0, 512);
    }
    return rms;
}
} // namespace

TEST(PluginTree, OnlyTheStandaloneGetsTheTestVoiceAndTheEffectKeepsItsPath)
{
    const struct
    {
        juce::AudioProcessor::WrapperType type;
        std::vector<std::string> names;
    } cases[] = {{juce::AudioProcessor::wrapperType_VST3, {"FluxDeck"}},
                 {juce::AudioProcessor::wrapperType_Undefined, {"FluxDeck"}},
                 {juce::AudioProcessor::wrapperType_Standalone, {"Program", "FluxDeck"}}};
    for (const auto& c : cases)
    {
        auto plugin = makePlugin(c.type);
        EXPECT_EQ(topLevelNames(*plugin), c.names) << c.type;
        Element* fx = plugin->getEngine()->findElement(String("/FluxDeck"));
        ASSERT_NE(dynamic_cast<FluxDeckProcessor*>(fx), nullptr) << c.type;
        EXPECT_EQ(fx->path(), String("/FluxDeck"));
        EXPECT_EQ(plugin->getParameters().size(), 45);
    }
    EXPECT_EQ(FluxDeckPluginDefinition::instance().makerKey(), std::string("net"));
}

TEST(PluginTree, StandaloneVoicePlaysThroughTheEffectAndComesBackWithItsState)
{
    auto standalone = makePlugin(juce::AudioProcessor::wrapperType_Standalone);
    standalone->prepareToPlay(48000.0, 512);
    juce::MidiBuffer keyDown;
    keyDown.addEvent(juce::MidiMessage::noteOn(1, 60, (uint8_t) 110), 0);
    // the effect's own latency comes first
    EXPECT_GT(rmsOfBlocks(*standalone, keyDown, 12), 0.01f);
    juce::MidiBuffer keyUp;
    keyUp.addEvent(juce::MidiMessage::noteOn(1, 60, (uint8_t) 0), 0);
    EXPECT_LT(rmsOfBlocks(*standalone, keyUp, 40), 1.0e-3f) << "velocity 0 released it";

    // A standalone state brings its instrument back; a plug-in's state has none.
    const juce::MemoryBlock withVoice = stateOf(*standalone);
    auto restored = makePlugin(juce::AudioProcessor::wrapperType_Standalone);
    auto plugin = makePlugin(juce::AudioProcessor::wrapperType_VST3);
    setState(*restored, stateOf(*plugin));
    EXPECT_EQ(topLevelNames(*restored), std::vector<std::string>{"FluxDeck"});
    setState(*restored, withVoice);
    ASSERT_EQ(topLevelNames(*restored), (std::vector<std::string>{"Program", "FluxDeck"}));
    restored->prepareToPlay(48000.0, 512);
    EXPECT_GT(rmsOfBlocks(*restored, keyDown, 12), 0.01f);
}

TEST(MidiLearnState, LearnedControllerIsSavedRestoredAndDroppedWithTheState)
{
    const uint32_t mix = FluxDeckProcessor::ids().mix;
    auto source = makePlugin(juce::AudioProcessor::wrapperType_VST3);
    ASSERT_TRUE(learnOf(*source, mix).bind(74));
    const juce::MemoryBlock learned = stateOf(*source);
    EXPECT_NE(xmlOf(learned).find("ModulationSource=\"@MIDI CC 74\""), std::string::npos);

    auto target = makePlugin(juce::AudioProcessor::wrapperType_VST3);
    setState(*target, learned);
    MidiLearn restored = learnOf(*target, mix);
    EXPECT_EQ(restored.boundController(), 74);

    // a state without the connection, then one without the effect: the binding goes
    ASSERT_EQ(learnOf(*source, mix).unbind(), 1);
    setState(*target, stateOf(*source));
    EXPECT_EQ(restored.boundController(), -1);
    setState(*target, learned);
    std::string noEffect = xmlOf(learned);
    const size_t from = noEffect.find("<FluxDeck ");
    const size_t to = noEffect.find("</FluxDeck>") + std::strlen("</FluxDeck>");
    ASSERT_LT(from, to);
    noEffect.erase(from, to - from);
    setState(*target, chunkOf(noEffect));
    EXPECT_FALSE(restored.canBind());
    EXPECT_EQ(restored.boundController(), -1);
}
