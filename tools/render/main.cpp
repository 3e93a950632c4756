// flux-deck-render: renders audio through the built VST3 bundle, headless.

#include "host/AudioFiles.h"
#include "host/DemoSignal.h"
#include "host/HostedParameters.h"
#include "host/Loudness.h"
#include "host/OfflineRenderer.h"
#include "host/PluginHost.h"
#include "render/PresetOptions.h"
#include "render/ProgressBar.h"
#include "render/RenderOptions.h"

#include <juce_events/juce_events.h>

#include <iostream>

#ifndef FLUXDECK_BUILT_VST3_MODULE
#define FLUXDECK_BUILT_VST3_MODULE ""
#endif

namespace
{
using namespace oxa;

constexpr double kDemoSampleRate = 48000.0;
constexpr double kDemoSeconds = 6.0;
constexpr int kSettleMs = 50;

int fail(const juce::String& message)
{
    std::cerr << "flux-deck-render: error: " << message << std::endl;
    return 1;
}

juce::File resolve(const juce::String& path)
{
    return juce::File::getCurrentWorkingDirectory().getChildFile(path);
}

juce::File chooseBundle(const render::RenderOptions& options)
{
    if (options.bundlePath.isNotEmpty())
        return resolve(options.bundlePath);

    return host::PluginHost::bundleOfModule(juce::File(juce::String(FLUXDECK_BUILT_VST3_MODULE)));
}

/** The audio to render and its rate, from the input file or the demo. */
juce::String chooseSource(const render::RenderOptions& options, host::AudioClip& source)
{
    if (options.inputPath.isEmpty())
    {
        source.sampleRate = options.sampleRate > 0.0 ? options.sampleRate : kDemoSampleRate;
        source.samples = host::makeDemoSignal(source.sampleRate,
                                              options.seconds > 0.0 ? options.seconds : kDemoSeconds);
        return {};
    }

    if (auto error = host::readAudioFile(resolve(options.inputPath), source); error.isNotEmpty())
        return error;

    if (options.sampleRate > 0.0 && options.sampleRate != source.sampleRate)
        return "the input runs at " + juce::String(source.sampleRate) + " Hz; this tool does not resample to "
               + juce::String(options.sampleRate) + " Hz";

    if (options.seconds > 0.0)
        source.samples.setSize(source.samples.getNumChannels(), (int) std::lround(options.seconds * source.sampleRate),
                               true, true);

    return {};
}

int run(const render::RenderOptions& options)
{
    if (options.listPresets)
    {
        std::cout << render::describeFactoryPresets();
        if (options.outputPath.isEmpty() && !options.listParameters)
            return 0;
    }

    host::AudioClip source;
    if (auto error = chooseSource(options, source); error.isNotEmpty())
        return fail(error);

    const auto bundle = chooseBundle(options);
    host::PluginHost pluginHost;
    auto loaded = pluginHost.load(bundle, source.sampleRate, options.blockSize);
    if (!loaded)
        return fail(loaded.error);

    auto& plugin = *loaded.instance;

    if (auto error = render::applyPresetOptions(plugin, options); error.isNotEmpty())
        return fail(error);

    for (const auto& setting : options.settings)
        if (auto error = host::applyParameterSetting(plugin, setting); error.isNotEmpty())
            return fail(error);

    host::OfflineRenderer renderer(plugin, options.blockSize);
    if (auto error = renderer.prepare(source.sampleRate, source.samples.getNumChannels()); error.isNotEmpty())
        return fail(error);

    host::PluginHost::pumpMessages(kSettleMs);

    std::cout << "plug-in:    " << plugin.getName() << "  (" << bundle.getFullPathName() << ")\n"
              << "latency:    " << plugin.getLatencySamples() << " samples at " << source.sampleRate << " Hz\n"
              << "parameters: " << plugin.getParameters().size() << "\n";

    if (options.listParameters)
        std::cout << host::describeParameters(plugin);

    if (options.outputPath.isEmpty())
        return 0;

    render::ProgressBar progress;
    auto output = renderer.render(source.samples, plugin.getLatencySamples(),
                                  [&progress](double fraction) { progress.update(fraction); });
    progress.finish();
    host::PluginHost::pumpMessages(kSettleMs);

    const auto loudness = host::measureLoudness(output, source.sampleRate);
    const auto outputFile = resolve(options.outputPath);
    if (auto error = host::writeWavFile(outputFile, { std::move(output), source.sampleRate }, options.bitsPerSample);
        error.isNotEmpty())
        return fail(error);

    const auto& stats = renderer.stats();
    std::cout << "rendered:   " << juce::String(stats.audioSeconds, 2) << " s, " << source.samples.getNumChannels()
              << " -> " << renderer.outputChannels() << " channels, " << options.bitsPerSample << "-bit, to "
              << outputFile.getFullPathName() << "\n"
              << "real-time factor: " << juce::String(stats.realTimeFactor(), 4);

    if (stats.processSeconds > 0.0)
        std::cout << "  (" << juce::String(stats.audioSeconds / stats.processSeconds, 1) << "x real time)";

    std::cout << "\nloudness:   " << juce::String(loudness.integratedLufs, 1) << " LUFS, peak "
              << juce::String(loudness.peakDbfs, 1) << " dBFS" << std::endl;
    return 0;
}
} // namespace

int main(int argc, char* argv[])
{
    juce::StringArray arguments;
    for (int i = 1; i < argc; ++i)
        arguments.add(juce::CharPointer_UTF8(argv[i]));

    oxa::render::RenderOptions options;
    if (auto error = oxa::render::parseRenderOptions(arguments, options); error.isNotEmpty())
    {
        std::cerr << "flux-deck-render: error: " << error << "\n\n" << oxa::render::renderUsage();
        return 2;
    }

    if (options.showHelp)
    {
        std::cout << oxa::render::renderUsage();
        return 0;
    }

    juce::ScopedJuceInitialiser_GUI juceRuntime;
    return run(options);
}
