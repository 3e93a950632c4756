#pragma once
// Shared helpers for the tests that load the built bundle through the VST3 host.

#include "host/HostedParameters.h"
#include "host/OfflineRenderer.h"
#include "host/PluginHost.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#ifndef FLUXDECK_BUILT_VST3_MODULE
#define FLUXDECK_BUILT_VST3_MODULE ""
#endif

namespace oxa::host::testing
{
inline juce::File builtBundle()
{
    return PluginHost::bundleOfModule(juce::File(juce::String(FLUXDECK_BUILT_VST3_MODULE)));
}

/** A fresh instance of the built plug-in, or null (the test then fails on it). */
inline std::unique_ptr<juce::AudioPluginInstance> loadBuiltPlugin(double sampleRate = 44100.0, int blockSize = 512)
{
    static PluginHost pluginHost;
    auto loaded = pluginHost.load(builtBundle(), sampleRate, blockSize);
    EXPECT_TRUE(loaded) << loaded.error;
    return std::move(loaded.instance);
}

/** Deterministic white noise at about -10 dBFS RMS. */
inline juce::AudioBuffer<float> makeNoise(int channels, int length, juce::int64 seed = 1)
{
    juce::Random random(seed);
    juce::AudioBuffer<float> noise(channels, length);

    for (int channel = 0; channel < channels; ++channel)
        for (int i = 0; i < length; ++i)
            noise.setSample(channel, i, (random.nextFloat() * 2.0f - 1.0f) * 0.5f);

    return noise;
}

/** The effect's own parameters: automatable, and neither the wrapper's bypass nor its
    stand-ins for MIDI controllers (which are not automatable). */
inline juce::Array<juce::AudioProcessorParameter*> effectParameters(juce::AudioProcessor& plugin)
{
    juce::Array<juce::AudioProcessorParameter*> result;

    for (auto* parameter : plugin.getParameters())
        if (parameter != plugin.getBypassParameter() && parameter->isAutomatable())
            result.add(parameter);

    return result;
}

inline bool allFinite(const juce::AudioBuffer<float>& buffer)
{
    for (int channel = 0; channel < buffer.getNumChannels(); ++channel)
        for (int i = 0; i < buffer.getNumSamples(); ++i)
            if (!std::isfinite(buffer.getSample(channel, i)))
                return false;

    return true;
}

/** The largest sample-by-sample difference between two renderings of the same length. */
inline float largestDifference(const juce::AudioBuffer<float>& a, const juce::AudioBuffer<float>& b)
{
    EXPECT_EQ(a.getNumChannels(), b.getNumChannels());
    EXPECT_EQ(a.getNumSamples(), b.getNumSamples());
    float largest = 0.0f;
    for (int channel = 0; channel < juce::jmin(a.getNumChannels(), b.getNumChannels()); ++channel)
        for (int i = 0; i < juce::jmin(a.getNumSamples(), b.getNumSamples()); ++i)
            largest = juce::jmax(largest, std::abs(a.getSample(channel, i) - b.getSample(channel, i)));
    return largest;
}

/** Lets parameter writes reach the plug-in's audio side and its message-thread follow-ups. */
inline void settle(juce::AudioPluginInstance& plugin, OfflineRenderer& renderer)
{
    juce::AudioBuffer<float> silence(plugin.getMainBusNumInputChannels(), 256);
    silence.clear();
    renderer.render(silence, 0);
    PluginHost::pumpMessages(200);
}

/** The built plug-in loaded and prepared for stereo, with an offline renderer: the host's
    side of a test. plugin stays null when the load fails (the load reports why). */
struct HostedInstance
{
    std::unique_ptr<juce::AudioPluginInstance> plugin;
    std::unique_ptr<OfflineRenderer> renderer;

    explicit HostedInstance(double sampleRate = 48000.0, int blockSize = 256)
    {
        plugin = loadBuiltPlugin(sampleRate, blockSize);
        if (plugin != nullptr)
        {
            renderer = std::make_unique<OfflineRenderer>(*plugin, blockSize);
            EXPECT_EQ(renderer->prepare(sampleRate, 2), "");
        }
    }

    void settle() { testing::settle(*plugin, *renderer); }

    /** The effect's parameter values as the host reads them. */
    std::vector<float> values() const
    {
        std::vector<float> result;
        for (auto* parameter : effectParameters(*plugin))
            result.push_back(parameter->getValue());
        return result;
    }

    /** The host's state of the instance: its own XML around the plug-in's chunk. */
    juce::MemoryBlock state() const
    {
        juce::MemoryBlock chunk;
        plugin->getStateInformation(chunk);
        return chunk;
    }

    void restore(const juce::MemoryBlock& hostState)
    {
        plugin->setStateInformation(hostState.getData(), (int) hostState.getSize());
        settle();
    }
};

/** The host's state wraps the plug-in's own chunk in XML; this swaps that chunk. */
inline juce::MemoryBlock withComponentChunk(const juce::MemoryBlock& hostState, const juce::MemoryBlock& chunk)
{
    auto xml = juce::AudioProcessor::getXmlFromBinary(hostState.getData(), (int) hostState.getSize());
    juce::MemoryBlock result;
    if (xml == nullptr)
        return result;

    if (auto* component = xml->getChildByName("IComponent"))
    {
        component->deleteAllTextElements();
        component->addTextElement(chunk.toBase64Encoding());
    }

    juce::AudioProcessor::copyXmlToBinary(*xml, result);
    return result;
}

inline juce::MemoryBlock componentChunkOf(const juce::MemoryBlock& hostState)
{
    juce::MemoryBlock chunk;
    if (auto xml = juce::AudioProcessor::getXmlFromBinary(hostState.getData(), (int) hostState.getSize()))
        if (auto* component = xml->getChildByName("IComponent"))
            chunk.fromBase64Encoding(component->getAllSubText());
    return chunk;
}
} // namespace oxa::host::testing
