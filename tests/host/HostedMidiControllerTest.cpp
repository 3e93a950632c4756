// MIDI controllers sent by a VST3 host: they reach the plug-in through the wrapper's
// controller stand-ins and move a learned parameter (the transport's own controllers
// take the same road; what they do is the engine's own tests' business).

#include "HostedPluginSupport.h"
#include "support/StateChunks.h"

namespace oxa::host::testing
{
namespace
{
constexpr double kRate = 48000.0;
constexpr int kBlock = 512;

/** The state a performer leaves after binding controller `number` to `parameter` of the
    effect: set outright ("Edition") over the parameter's range. */
juce::MemoryBlock stateWithLearnedController(juce::AudioPluginInstance& plugin, int number, const char* parameter)
{
    juce::MemoryBlock hostState;
    plugin.getStateInformation(hostState);
    auto xml = juce::parseXML(oxa::test::xmlOf(componentChunkOf(hostState)));
    auto* engine = xml != nullptr ? xml->getChildByName("Engine") : nullptr;
    auto* effect = engine != nullptr ? engine->getChildByName("FluxDeck") : nullptr;
    if (effect == nullptr)
        return {};
    auto* connections = new juce::XmlElement("Connections");
    auto* connection = connections->createNewChildElement("SignalConnection");
    connection->setAttribute("Name", "SignalConnection 0");
    connection->setAttribute("ModulationSource", "@MIDI CC " + juce::String(number));
    connection->setAttribute("ModulationDestination", parameter);
    connection->setAttribute("ModulationRatio", 1);
    connection->setAttribute("Mode", "Edition");
    effect->prependChildElement(connections);
    return withComponentChunk(hostState, oxa::test::chunkOf(xml->toString(juce::XmlElement::TextFormat().withoutHeader()).toStdString()));
}

struct HostedRig : HostedInstance
{
    HostedRig() : HostedInstance(kRate, kBlock) {}

    /** One host block of noise with the given controller messages. */
    juce::AudioBuffer<float> block(std::initializer_list<std::pair<int, int>> numbersAndValues, int offset = 0,
                                   int channel = 1)
    {
        auto buffer = makeNoise(2, kBlock, ++seed);
        juce::MidiBuffer midi;
        for (auto [number, value] : numbersAndValues)
            midi.addEvent(juce::MidiMessage::controllerEvent(channel, number, value), offset);
        plugin->processBlock(buffer, midi);
        return buffer;
    }

    juce::int64 seed = 0;
};

float peak(const juce::AudioBuffer<float>& buffer, int start, int length)
{
    return buffer.getMagnitude(0, start, length);
}
} // namespace

TEST(HostedMidiControllers, LearnedControllerMovesItsParameterAtControlBlocks)
{
    HostedRig rig;
    ASSERT_NE(rig.plugin, nullptr);
    const auto learned = stateWithLearnedController(*rig.plugin, 74, "OutputGain");
    ASSERT_GT(learned.getSize(), 0u);
    rig.plugin->setStateInformation(learned.getData(), (int) learned.getSize());
    rig.settle();
    // JUCE's VST3 hosting turns a controller into a change of the stand-in parameter, at
    // the start of the block and only when its value moves. Past the latency the wet
    // signal is there; the controller then sets the output gain outright: 127 is +40 dB,
    // 0 is -40 dB. The gain itself glides over 20 ms so that the step does not click, so
    // the level is compared once the glide is over (the control-block timing of the
    // controller is checked in the engine's own tests).
    // (Whatever the stand-in held before, 64 then 127 are both changes.)
    rig.block({ { 74, 64 } });
    for (int i = 0; i < 8; ++i)
        rig.block({ { 74, 127 } });
    const auto loud = rig.block({});
    rig.block({ { 74, 0 } });
    for (int i = 0; i < 3; ++i)
        rig.block({});
    const auto quiet = rig.block({});
    ASSERT_GT(peak(quiet, 0, kBlock), 0.0f);
    EXPECT_GT(peak(loud, 0, kBlock), 1000.0f * peak(quiet, 0, kBlock));

    // Another controller leaves it alone.
    const auto other = rig.block({ { 75, 127 } });
    EXPECT_LT(peak(other, 0, kBlock), 10.0f * peak(quiet, 0, kBlock));
}
} // namespace oxa::host::testing
