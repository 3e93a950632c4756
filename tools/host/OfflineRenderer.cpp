#include "host/OfflineRenderer.h"

#include "host/PluginHost.h"

namespace oxa::host
{
namespace
{
constexpr int kLatencySettleMs = 20;
constexpr int kDeliveryBlock = 32;
constexpr int kDeliveryMs = 20;
constexpr int kMostDeliverySlices = 50;
constexpr int kQuietSlices = 3; // a timer-driven answer may miss one slice on a busy machine

bool isLv2(juce::AudioProcessor& plugin)
{
    auto* instance = dynamic_cast<juce::AudioPluginInstance*>(&plugin);
    return instance != nullptr && instance->getPluginDescription().pluginFormatName == "LV2";
}
} // namespace

OfflineRenderer::OfflineRenderer(juce::AudioProcessor& pluginToRun, int maximumBlockSize)
    : plugin(pluginToRun), blockSize(juce::jmax(1, maximumBlockSize))
{
}

bool OfflineRenderer::tryLayout(const juce::AudioChannelSet& in, const juce::AudioChannelSet& out)
{
    juce::AudioProcessor::BusesLayout layout;
    layout.inputBuses.add(in);
    layout.outputBuses.add(out);
    return plugin.setBusesLayout(layout);
}

juce::String OfflineRenderer::prepare(double rate, int inputChannels)
{
    if (rate <= 0.0 || !std::isfinite(rate))
        return "the sample rate must be above 0";

    // Layouts can only change while the plug-in is inactive.
    plugin.releaseResources();

    const auto mono = juce::AudioChannelSet::mono();
    const auto stereo = juce::AudioChannelSet::stereo();
    bool accepted = false;

    if (inputChannels == 1)
        accepted = tryLayout(mono, stereo) || tryLayout(mono, mono);
    else if (inputChannels == 2)
        accepted = tryLayout(stereo, stereo);

    if (!accepted)
        return "the plug-in takes no layout for " + juce::String(inputChannels) + " input channel(s)";

    inputCount = plugin.getMainBusNumInputChannels();
    outputCount = plugin.getMainBusNumOutputChannels();
    sampleRate = rate;

    plugin.setNonRealtime(true);
    plugin.setRateAndBufferSizeDetails(rate, blockSize);
    plugin.prepareToPlay(rate, blockSize);

    // An LV2 plug-in reports its latency through an output port, which the host reads
    // after a run: one short block tells it, and a second activation starts from rest.
    if (isLv2(plugin))
    {
        deliverPendingChanges();
        plugin.releaseResources();
        plugin.prepareToPlay(rate, blockSize);
    }

    // The plug-in learns its latency while being activated and reports it back through
    // the message thread; let that arrive before anyone reads it.
    PluginHost::pumpMessages(kLatencySettleMs);
    return {};
}

void OfflineRenderer::deliverPendingChanges()
{
    juce::AudioBuffer<float> silence(juce::jmax(1, inputCount), juce::jmin(kDeliveryBlock, blockSize));
    silence.clear();
    render(silence, 0);

    // The plug-in's answers (a write's side effects on other parameters) come back through
    // the message thread; on a busy machine one slice may not be enough, so wait until the
    // values stand still.
    const auto snapshot = [this] {
        juce::Array<float> values;
        for (auto* parameter : plugin.getParameters())
            values.add(parameter->getValue());
        return values;
    };
    auto before = snapshot();
    for (int slice = 0, quiet = 0; slice < kMostDeliverySlices && quiet < kQuietSlices; ++slice)
    {
        PluginHost::pumpMessages(kDeliveryMs);
        auto after = snapshot();
        quiet = after == before ? quiet + 1 : 0;
        before = std::move(after);
    }
}

juce::AudioBuffer<float> OfflineRenderer::render(const juce::AudioBuffer<float>& input, int extraSamples,
                                                 const Progress& progress)
{
    const auto inputLength = input.getNumSamples();
    const auto total = inputLength + juce::jmax(0, extraSamples);
    juce::AudioBuffer<float> output(outputCount, total);
    output.clear();

    // The plug-in works in place on one buffer wide enough for both buses.
    juce::AudioBuffer<float> block(juce::jmax(inputCount, outputCount, 1), blockSize);
    juce::MidiBuffer midi;
    double processTicks = 0.0;

    for (int start = 0; start < total; start += blockSize)
    {
        const auto count = juce::jmin(blockSize, total - start);
        block.clear();

        const auto fromInput = juce::jlimit(0, count, inputLength - start);
        for (int channel = 0; channel < inputCount && channel < input.getNumChannels(); ++channel)
            if (fromInput > 0)
                block.copyFrom(channel, 0, input, channel, start, fromInput);

        juce::AudioBuffer<float> view(block.getArrayOfWritePointers(), block.getNumChannels(), count);
        midi.clear();

        const auto before = juce::Time::getHighResolutionTicks();
        plugin.processBlock(view, midi);
        processTicks += (double) (juce::Time::getHighResolutionTicks() - before);

        for (int channel = 0; channel < outputCount; ++channel)
            output.copyFrom(channel, start, view, channel, 0, count);

        if (progress)
            progress((double) (start + count) / (double) total);
    }

    lastStats.audioSeconds = (double) total / sampleRate;
    lastStats.processSeconds = processTicks / (double) juce::Time::getHighResolutionTicksPerSecond();
    return output;
}
} // namespace oxa::host
