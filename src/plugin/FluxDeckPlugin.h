#pragma once
// The product: a tree of Engine and the tape processor at "/FluxDeck".

#include "element/AsyncUpdateForwarder.h"
#include "element/ElementView.h"
#include "plugin/Plugin.h"

namespace oxa
{
class FluxDeckPlugin : public Plugin
{
public:
    FluxDeckPlugin();
    ~FluxDeckPlugin() override;

    void prepareToPlay(double sampleRate, int maximumBlockSize) override;
    void renderHostBlock(HostAudioBlock& block) override;
    void setStateInformation(const void* data, int sizeInBytes) override;
    bool isBusesLayoutSupported(const BusesLayout& layouts) const override;
    juce::AudioProcessorEditor* createEditor() override;
    double getTailLengthSeconds() const override { return std::numeric_limits<double>::infinity(); }
    const juce::String getName() const override { return "Flux Deck"; }

    /** Latency from the sample rate: 60 ms, or 10 ms in low latency mode. */
    void updateLatency();
    /** The latency in samples for a sample rate and mode, as reported to the host. */
    static int latencyFor(double sampleRate, bool lowLatency);

    /** The host's list: (target parameter name, name shown while unbound), in slot order. */
    struct HostParameter
    {
        const char* name;
        const char* label;
    };
    static const std::vector<HostParameter>& hostParameters();

    /** Hosts that read latency before preparing get the one of this rate. */
    static constexpr double defaultSampleRate = 44100.0;

protected:
    int maximumLatency(double sampleRate) const override { return latencyFor(sampleRate, false); }

private:
    void markLoaded();

    std::unique_ptr<ElementParameterValue<bool>> lowLatencyWatcher;
    AsyncUpdateForwarder latencyForwarder;
};
} // namespace oxa
