// Saving and restoring the plug-in's state through the host, as a DAW project does.

#include "HostedPluginSupport.h"
#include "support/StateChunks.h"

namespace oxa::host::testing
{
using oxa::test::expectSameValues;

namespace
{
constexpr int kBlock = 256;

/** Moves every parameter away from its default, each to a different place; switches are
    turned away from theirs. Choices get one of their own steps: the host keeps what it
    wrote, the plug-in what it could take, and the two must agree for the comparisons. */
void scatterParameters(juce::AudioPluginInstance& plugin, float offset, bool flipSwitches = true)
{
    auto parameters = effectParameters(plugin);
    for (int i = 0; i < parameters.size(); ++i)
    {
        float value = std::fmod(offset + 0.137f * (float) i, 1.0f);
        const int steps = parameters[i]->getNumSteps();
        if (parameters[i]->isBoolean())
            value = flipSwitches ? 1.0f - std::round(parameters[i]->getDefaultValue()) : 1.0f;
        else if (parameters[i]->isDiscrete() && steps > 1)
            value = std::round(value * (float) (steps - 1)) / (float) (steps - 1);
        parameters[i]->setValueNotifyingHost(value);
    }
}

} // namespace

TEST(HostedState, ReopenedProjectSoundsTheSame)
{
    // Every parameter away from its default (which switches the tape machine's stages
    // off), then every switch on: hiss, wow, flutter and unsynced drift all running.
    for (const bool flipSwitches : {true, false})
    {
        SCOPED_TRACE(flipSwitches ? "every parameter moved" : "every switch on");
        // The session as the user left it, audio already played.
        HostedInstance original;
        ASSERT_NE(original.plugin, nullptr);
        scatterParameters(*original.plugin, 0.3f, flipSwitches);
        original.settle();
        original.renderer->render(makeNoise(2, 7 * kBlock, 11), 0);
        const auto chunk = original.state();

        // The same project opened again in a fresh instance.
        HostedInstance reopened;
        ASSERT_NE(reopened.plugin, nullptr);
        reopened.restore(chunk);
        expectSameValues(reopened.values(), original.values(), "reopened");

        // From the same start, the same input gives the same output, sample for sample.
        original.plugin->reset();
        reopened.plugin->reset();
        const auto input = makeNoise(2, 24 * kBlock, 7); // well past the 60 ms latency
        double energy = 0;
        for (int offset = 0; offset < input.getNumSamples(); offset += kBlock)
        {
            juce::AudioBuffer<float> a(2, kBlock), b(2, kBlock);
            for (int c = 0; c < 2; ++c)
            {
                a.copyFrom(c, 0, input, c, offset, kBlock);
                b.copyFrom(c, 0, input, c, offset, kBlock);
            }
            juce::MidiBuffer midi;
            original.plugin->processBlock(a, midi);
            reopened.plugin->processBlock(b, midi);
            for (int c = 0; c < 2; ++c)
                for (int i = 0; i < kBlock; ++i)
                {
                    ASSERT_EQ(a.getSample(c, i), b.getSample(c, i)) << "channel " << c << ", sample " << offset + i;
                    energy += (double) a.getSample(c, i) * a.getSample(c, i);
                }
        }
        EXPECT_GT(energy, 1e-3); // the comparison covered sound, not only the latency's silence
    }
}

TEST(HostedState, CorruptChunksLeaveTheCurrentStateInPlace)
{
    HostedInstance prepared;
    ASSERT_NE(prepared.plugin, nullptr);

    scatterParameters(*prepared.plugin, 0.3f);
    prepared.settle();
    const auto before = prepared.values();
    const auto hostState = prepared.state();

    // What the wrapper must pass on, or refuse itself; the plug-in's own refusals of every
    // kind of broken chunk are the state chunk's unit tests.
    juce::MemoryBlock garbage(300);
    juce::Random random(5);
    for (size_t i = 0; i < garbage.getSize(); ++i)
        garbage[i] = (char) random.nextInt(256);
    juce::MemoryBlock magicThenGarbage("OXA4\x01\x00\x00\x00\xff\xff\xff\x7f", 12);
    magicThenGarbage.append(garbage.getData(), 64);
    const std::pair<const char*, juce::MemoryBlock> corruptions[] = {
        { "right magic, absurd length", withComponentChunk(hostState, magicThenGarbage) },
        { "empty chunk", withComponentChunk(hostState, {}) },
        { "not even the host's XML", garbage },
    };
    for (const auto& [what, state] : corruptions)
    {
        prepared.restore(state);
        expectSameValues(prepared.values(), before, what);

        const auto output = prepared.renderer->render(makeNoise(2, 2048), 0);
        EXPECT_TRUE(allFinite(output)) << what;
    }
}
} // namespace oxa::host::testing
