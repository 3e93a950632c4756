#pragma once
// Runs whole buffers through a hosted plug-in, block by block, as a DAW's bounce does.

#include <juce_audio_processors/juce_audio_processors.h>

#include <functional>

namespace oxa::host
{
/** Times of one render. The factor is processing time over audio time: below 1 is
    faster than real time. */
struct RenderStats
{
    double audioSeconds = 0.0;
    double processSeconds = 0.0;

    double realTimeFactor() const { return audioSeconds > 0.0 ? processSeconds / audioSeconds : 0.0; }
};

class OfflineRenderer
{
public:
    using Progress = std::function<void(double fraction)>;

    OfflineRenderer(juce::AudioProcessor& plugin, int blockSize);

    /** Picks the layout for the input channel count (mono goes to stereo when the plug-in
        takes that) and prepares the plug-in. Returns an error message, empty on success. */
    juce::String prepare(double sampleRate, int inputChannels);

    int outputChannels() const noexcept { return outputCount; }

    /** Output of the plug-in for the input followed by extraSamples of silence; nothing is
        shifted or trimmed. Call after prepare. */
    juce::AudioBuffer<float> render(const juce::AudioBuffer<float>& input, int extraSamples,
                                    const Progress& progress = {});

    const RenderStats& stats() const noexcept { return lastStats; }

    /** Runs one short block of silence and the message thread, so that parameter writes
        made since the last block reach the plug-in, with their follow-ups, before the
        next write. Call after prepare. */
    void deliverPendingChanges();

private:
    bool tryLayout(const juce::AudioChannelSet& in, const juce::AudioChannelSet& out);

    juce::AudioProcessor& plugin;
    int blockSize;
    double sampleRate = 0.0;
    int inputCount = 0;
    int outputCount = 0;
    RenderStats lastStats;
};
} // namespace oxa::host
