// Temporary pass-through processor: lets the build, the bundle and the host
// tools stand before the element tree and the engine arrive.
#include <juce_audio_processors/juce_audio_processors.h>

namespace oxa
{
class FluxDeckPlugin final : public juce::AudioProcessor
{
public:
    FluxDeckPlugin()
        : AudioProcessor(BusesProperties()
                             .withInput("Input", juce::AudioChannelSet::stereo(), true)
                             .withOutput("Output", juce::AudioChannelSet::stereo(), true))
    {
    }

    const juce::String getName() const override { return "Flux Deck"; }
    void prepareToPlay(double sampleRate, int) override
    {
        setLatencySamples((int) (float) (sampleRate * (double) 0.06f));
    }
    void releaseResources() override {}
    void processBlock(juce::AudioBuffer<float>&, juce::MidiBuffer& midi) override { midi.clear(); }
    double getTailLengthSeconds() const override { return std::numeric_limits<double>::infinity(); }
    bool acceptsMidi() const override { return true; }
    bool producesMidi() const override { return false; }
    juce::AudioProcessorEditor* createEditor() override { return nullptr; }
    bool hasEditor() const override { return false; }
    int getNumPrograms() override { return 1; }
    int getCurrentProgram() override { return 0; }
    void setCurrentProgram(int) override {}
    const juce::String getProgramName(int) override { return "Default"; }
    void changeProgramName(int, const juce::String&) override {}
    void getStateInformation(juce::MemoryBlock&) override {}
    void setStateInformation(const void*, int) override {}
};
} // namespace oxa

juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter()
{
    return new oxa::FluxDeckPlugin();
}
