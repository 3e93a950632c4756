// The processor inside an engine: loaded gains, the two states, and the monitoring
// ring (the dry path's timing is the deck's own test, the live values the editor's).
#include "engine/Engine.h"
#include "resources/VolumeTable.h"
#include "resources/presets/PresetBank.h"
#include "support/EngineRenderRig.h"
#include "tape/FluxDeckProcessor.h"
#include "tape/SignalMonitoringFIFO.h"

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>
#include <tinyxml2.h>

#include <cmath>
#include <vector>

using namespace oxa;

namespace
{
struct EngineRig : test::EngineRenderRig
{
    explicit EngineRig(double sampleRate = 44100.0, uint32_t block = 512)
        : EngineRenderRig(block, 0.0f), processor(std::make_shared<FluxDeckProcessor>())
    {
        engine->addElement(processor);
        prepare(sampleRate, block);
    }

    std::shared_ptr<FluxDeckProcessor> processor;
};

} // namespace

// A state or preset loaded while the host plays glides to its gains; one loaded while the
// host stands still takes them at once.
TEST(ProcessorRender, LoadedGainsJumpOnlyWhileTheHostStandsStill)
{
    EngineRig rig;
    rig.render(512);
    const auto& state = *static_cast<const FluxDeckProcessor::State*>(rig.processor->mainState());
    tinyxml2::XMLDocument document;
    tinyxml2::XMLElement* node = document.NewElement("FluxDeck");
    ensureDefaultVolumes();
    FullPresetBank presets;
    presets.bind(rig.processor);
    juce::TemporaryFile file(".fxps");
    float mix = 0.2f;
    for (bool asPreset : {false, true})
        for (bool playing : {true, false})
        {
            rig.context.transport.playing = playing ? 1 : 0;
            rig.render(512);
            node->SetAttribute("Mix", mix);
            if (asPreset)
            {
                file.getFile().replaceWithText("<ModulePreset>\n    <FluxDeck Mix=\"" + juce::String(mix) + "\"/>\n</ModulePreset>\n");
                ASSERT_TRUE(presets.loadPreset(Path(file.getFile().getFullPathName())));
            }
            else
                rig.processor->loadXmlAttributes(node, FluxDeckProcessor::currentVersion);
            rig.render(64);
            EXPECT_EQ(state.dryGain.isMoving(), playing) << asPreset;
            EXPECT_EQ(state.dryGain.to, 1.0f - mix) << asPreset;
            mix = mix > 0.5f ? 0.2f : 0.6f;
        }
}

TEST(ProcessorRender, OnlyTheRenderingStateHoldsTapeAndTheMirrorFollowsTheSetters)
{
    EngineRig rig(48000.0, 512);
    rig.processor->setFloatParameter(FluxDeckProcessor::ids().feedback, 0.5f);
    rig.processor->setIntParameter(FluxDeckProcessor::ids().noiseReductionDecoder, 2);
    auto& main = *static_cast<FluxDeckProcessor::State*>(rig.processor->mainState());
    auto& mirror = *static_cast<FluxDeckProcessor::State*>(rig.processor->secondState());
    ASSERT_EQ(main.channels.size(), 2u);
    ASSERT_EQ(mirror.channels.size(), main.channels.size());
    for (std::size_t c = 0; c < main.channels.size(); ++c)
        for (int d = 0; d < 2; ++d)
        {
            const TapeDeck& rendering = main.channels[c].decks[d];
            const TapeDeck& mirrored = mirror.channels[c].decks[d];
            EXPECT_EQ(rendering.inputRing.size(), 96000u);
            EXPECT_TRUE(mirrored.inputRing.empty() && mirrored.outputRing.empty() && mirrored.spareRing.empty()
                        && mirrored.speedHistory.empty());
            EXPECT_EQ(mirrored.feedback, rendering.feedback);
            EXPECT_EQ(mirrored.decoderType, 2);
        }
    // A render, and a new sample rate afterwards, leave the mirror without tape.
    rig.render(512);
    rig.engine->prepare(44100.0, 512);
    EXPECT_TRUE(mirror.channels[0].decks[0].inputRing.empty());
    EXPECT_EQ(main.channels[0].decks[0].inputRing.size(), 88200u);

    // Asked to go polyphonic and back, it keeps rendering with its own tape.
    rig.processor->setPolyphonic(true);
    rig.processor->setPolyphonic(false);
    EXPECT_EQ(rig.processor->mainState(), &main);
    EXPECT_EQ(main.channels[0].decks[0].inputRing.size(), 88200u);
}

TEST(MonitoringRing, KeepsTheNewestSamplesWhenTheReaderLagsAndIsBoundedByItsStorage)
{
    SignalMonitoringFIFO ring;
    EXPECT_EQ(ring.available(), 0u);
    ring.append(nullptr, 4); // no capacity yet, nothing happens
    ring.setCapacity(8);
    const float first[] = {1, 2, 3, 4, 5};
    const float second[] = {6, 7, 8, 9, 10, 11};
    ring.append(first, 5);
    float out[16] = {};
    ASSERT_EQ(ring.read(out, 2), 2u);
    EXPECT_EQ(out[0], 1.0f);
    EXPECT_EQ(out[1], 2.0f);

    ring.append(second, 6); // overtakes the reader: 3 is lost
    ASSERT_EQ(ring.available(), 7u);
    ASSERT_EQ(ring.read(out, 16), 7u);
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(out[i], static_cast<float>(5 + i));

    const float many[] = {20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30};
    ring.append(many, 11); // more than fits: only the newest seven stay
    ASSERT_EQ(ring.read(out, 16), 7u);
    EXPECT_EQ(out[0], 24.0f);
    EXPECT_EQ(out[6], 30.0f);

    ring.append(first, 3);
    ring.clear();
    EXPECT_EQ(ring.available(), 0u);

    // The storage bounds the capacity; a smaller one afterwards starts afresh.
    ring.setCapacity(4000000);
    EXPECT_EQ(ring.capacity(), SignalMonitoringFIFO::maximumCapacity);
    std::vector<float> block(1000, 0.25f);
    for (int i = 0; i < 250; ++i)
        ring.append(block.data(), 1000);
    EXPECT_EQ(ring.available(), SignalMonitoringFIFO::maximumCapacity - 1);
    ring.setCapacity(8);
    ring.append(first, 3);
    ASSERT_EQ(ring.read(out, 8), 3u);
    EXPECT_EQ(out[2], 3.0f);
}
