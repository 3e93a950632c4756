// flux-deck-render: renders audio through the built VST3 bundle, headless.

#include "host/AudioFiles.h"
#include "host/DemoSignal.h"
#include "host/HostedParameters.h"
#include "host/Loudness.h"
#include "host/OfflineRenderer.h"
#include "host/PluginHost.h"
#include "render/AudioAnalysis.h"
#include "render/ParameterSettings.h"
#include "render/PresetOptions.h"
#include "render/ProgressBar.h"
#include "render/RenderOptions.h"
#include "render/Spectrogram.h"

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

/** The bundle named on the command line; else the VST3 installed beside this program
    (<prefix>/bin and <prefix>/lib/vst3), else the one of this build. */
juce::File chooseBundle(const render::RenderOptions& options)
{
    if (options.bundlePath.isNotEmpty())
        return resolve(options.bundlePath);

    const auto built = host::PluginHost::bundleOfModule(juce::File(juce::String(FLUXDECK_BUILT_VST3_MODULE)));
    const auto installed = juce::File::getSpecialLocation(juce::File::currentExecutableFile)
                               .getParentDirectory()
                               .getSiblingFile("lib")
                               .getChildFile("vst3")
                               .getChildFile(built.getFileName());

    return installed.isDirectory() ? installed : built;
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

/** A file the render will write: its folder must be there, so that a long render does
    not end in a failed write. */
juce::String checkWritable(const juce::File& file)
{
    if (file.isDirectory())
        return "\"" + file.getFullPathName() + "\" is a folder, not a file";

    const auto folder = file.getParentDirectory();
    if (!folder.isDirectory())
        return "the folder \"" + folder.getFullPathName() + "\" does not exist";

    if (!folder.hasWriteAccess())
        return "the folder \"" + folder.getFullPathName() + "\" is not writable";

    return {};
}

/** The input as the output's channels hear it: a mono input feeds both sides. */
juce::AudioBuffer<float> widenedTo(const juce::AudioBuffer<float>& input, int channels)
{
    juce::AudioBuffer<float> wide(juce::jmax(1, channels), input.getNumSamples());
    for (int channel = 0; channel < wide.getNumChannels(); ++channel)
        wide.copyFrom(channel, 0, input, juce::jmin(channel, input.getNumChannels() - 1), 0, input.getNumSamples());
    return wide;
}

int run(const render::RenderOptions& options)
{
    if (options.listPresets)
    {
        std::cout << render::describeFactoryPresets();
        if (options.outputPath.isEmpty() && !options.listParameters)
            return 0;
    }

    const auto outputFile = resolve(options.outputPath);
    const auto pictureFile = resolve(options.spectrogramPath);

    if (options.outputPath.isNotEmpty())
        if (auto error = checkWritable(outputFile); error.isNotEmpty())
            return fail(error);

    if (options.spectrogramPath.isNotEmpty())
    {
        if (!pictureFile.hasFileExtension(".png"))
            return fail("--spectrogram writes PNG: give it a .png file, not \"" + options.spectrogramPath + "\"");
        if (auto error = checkWritable(pictureFile); error.isNotEmpty())
            return fail(error);
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

    // A preset first, as the editor's preset bar would; the settings then turn knobs on top.
    if (auto error = render::applyPresetOptions(plugin, options); error.isNotEmpty())
        return fail(error);

    host::OfflineRenderer renderer(plugin, options.blockSize);
    if (auto error = renderer.prepare(source.sampleRate, source.samples.getNumChannels()); error.isNotEmpty())
        return fail(error);

    const auto settings = render::applySettingsInOrder(plugin, renderer, options.settings);
    if (settings.error.isNotEmpty())
        return fail(settings.error);

    // Start the render from rest: the settings' delivery blocks moved the decks along.
    if (auto error = renderer.prepare(source.sampleRate, source.samples.getNumChannels()); error.isNotEmpty())
        return fail(error);

    host::PluginHost::pumpMessages(kSettleMs);

    std::cout << "plug-in:    " << plugin.getName() << "  (" << plugin.getPluginDescription().pluginFormatName
              << ", " << bundle.getFullPathName() << ")\n"
              << "latency:    " << plugin.getLatencySamples() << " samples at " << source.sampleRate << " Hz\n"
              << "parameters: " << host::automatableParameters(plugin).size() << "\n";

    for (const auto& line : settings.lines)
        std::cout << "set:        " << line << "\n";

    if (options.listParameters)
        std::cout << host::describeParameters(plugin);

    if (options.outputPath.isEmpty())
        return 0;

    render::ProgressBar progress;
    auto output = renderer.render(source.samples, plugin.getLatencySamples(),
                                  [&progress](double fraction) { progress.update(fraction); });
    progress.finish();
    host::PluginHost::pumpMessages(kSettleMs);

    const auto& stats = renderer.stats();
    const auto outputChannels = output.getNumChannels();
    host::AudioClip result{ std::move(output), source.sampleRate };

    if (auto error = host::writeWavFile(outputFile, result, options.bitsPerSample); error.isNotEmpty())
        return fail(error);

    std::cout << "rendered:   " << juce::String(stats.audioSeconds, 2) << " s, " << source.samples.getNumChannels()
              << " -> " << outputChannels << " channels, " << options.bitsPerSample << "-bit, to "
              << outputFile.getFullPathName() << "\n"
              << "real-time factor: " << juce::String(stats.realTimeFactor(), 4);

    if (stats.processSeconds > 0.0)
        std::cout << "  (" << juce::String(stats.audioSeconds / stats.processSeconds, 1) << "x real time)";

    const auto loudness = host::measureLoudness(result.samples, source.sampleRate);
    std::cout << "\nloudness:   " << juce::String(loudness.integratedLufs, 1) << " LUFS, peak "
              << juce::String(loudness.peakDbfs, 1) << " dBFS" << std::endl;

    if (options.analyze)
    {
        const auto heard = widenedTo(source.samples, outputChannels);
        std::cout << render::describeLevels(render::measureLevels(result.samples, source.sampleRate),
                                            render::measureLevels(heard, source.sampleRate));
    }

    if (options.spectrogramPath.isNotEmpty())
    {
        render::SpectrogramPicture picture;
        picture.title = plugin.getName() + " (" + plugin.getPluginDescription().pluginFormatName + "), "
                        + (options.inputPath.isEmpty() ? juce::String("built-in demo") : resolve(options.inputPath).getFileName())
                        + ", " + juce::String(source.sampleRate / 1000.0, 1) + " kHz";
        picture.settings = settings.lines;

        const auto image = render::drawSpectrograms(source.samples, result.samples, source.sampleRate, picture);
        if (auto error = render::writePng(image, pictureFile); error.isNotEmpty())
            return fail(error);

        std::cout << "spectrogram: " << pictureFile.getFullPathName() << std::endl;
    }

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
