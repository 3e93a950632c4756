#pragma once
// Loads a VST3 or LV2 bundle the way a DAW does, with no display needed.

#include <juce_audio_processors/juce_audio_processors.h>

#include <map>
#include <memory>

namespace oxa::host
{
/** An instance, or the reason there is none. */
struct LoadedPlugin
{
    std::unique_ptr<juce::AudioPluginInstance> instance;
    juce::String error;

    explicit operator bool() const noexcept { return instance != nullptr; }
};

/** Owns the plug-in formats. The caller must hold a juce::ScopedJuceInitialiser_GUI and
    call from the message thread.

    LV2 plug-ins are known by URI, not by file: the LV2 format reads the folder that holds
    the bundle and takes the plug-in whose bundle is the one asked for. Two bundles with
    the same URI (a build and an installed copy) cannot live in one host; load each
    location with its own PluginHost. */
class PluginHost
{
public:
    PluginHost();
    ~PluginHost();

    /** First plug-in class of the bundle (X.vst3 or X.lv2), instantiated for the given
        rate and block size. */
    LoadedPlugin load(const juce::File& bundle, double sampleRate, int blockSize);

    /** The bundle folder (X.vst3) that holds a VST3 module binary (X.vst3/Contents/<arch>/X.so). */
    static juce::File bundleOfModule(const juce::File& moduleBinary);

    /** The bundle folder (X.lv2) that holds an LV2 module binary (X.lv2/X.so). */
    static juce::File bundleOfLv2Module(const juce::File& moduleBinary);

    /** Runs pending message-thread work (async updates, host restarts) for a while. */
    static void pumpMessages(int milliseconds);

private:
    juce::String findVst3(const juce::File& bundle, juce::OwnedArray<juce::PluginDescription>& found);
    juce::String findLv2(const juce::File& bundle, juce::OwnedArray<juce::PluginDescription>& found);

    juce::AudioPluginFormatManager formats;
    std::map<juce::String, juce::File> lv2BundlesByUri;
};
} // namespace oxa::host
