#pragma once
// Loads a VST3 bundle the way a DAW does, with no display needed.

#include <juce_audio_processors/juce_audio_processors.h>

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

/** Owns the VST3 format; one per process is enough. The caller must hold a
    juce::ScopedJuceInitialiser_GUI and call from the message thread. */
class PluginHost
{
public:
    PluginHost();

    /** First plug-in class of the bundle, instantiated for the given rate and block size. */
    LoadedPlugin load(const juce::File& bundle, double sampleRate, int blockSize);

    /** The bundle folder (X.vst3) that holds a module binary (X.vst3/Contents/<arch>/X.so). */
    static juce::File bundleOfModule(const juce::File& moduleBinary);

    /** Runs pending message-thread work (async updates, host restarts) for a while. */
    static void pumpMessages(int milliseconds);

private:
    juce::AudioPluginFormatManager formats;
};
} // namespace oxa::host
