#include "plugin/FluxDeckPlugin.h"
#include "resources/VolumeTable.h"
#include "engine/SignalConnection.h"
#include "engine/instrument/TestInstrument.h"
#include "tape/FluxDeckProcessor.h"

#include <cstring>

namespace oxa
{
FluxDeckPlugin::FluxDeckPlugin()
    : Plugin(FluxDeckPluginDefinition::instance(),
             BusesProperties()
                 .withInput("Input", juce::AudioChannelSet::stereo(), true)
                 .withOutput("Output", juce::AudioChannelSet::stereo(), true))
{
    ensureDefaultVolumes(); // "/" and the embedded "$Resource" archive
    FluxDeckProcessor::registerType();
    SignalConnection::registerType(); // connections a saved state may carry

    auto newEngine = std::make_shared<Engine>();
    latencyForwarder.connect(this, [this] { updateLatency(); });

    // The standalone application has no track to sit on: a test voice ahead of the
    // effect lets it be played from the keyboard. Plug-in hosts get the effect alone.
    if (wrapperType == wrapperType_Standalone)
        TestInstrument::addTo(*newEngine);

    auto processor = std::make_shared<FluxDeckProcessor>(String("FluxDeck"));
    newEngine->addElement(processor);
    setEngine(newEngine);

    const String fxPath("/FluxDeck");
    const uint32_t lowLatencyId = processor->parameterId("ApplyLowLatency");
    lowLatencyWatcher = std::make_unique<ElementParameterValue<bool>>(
        getProxy(), fxPath, lowLatencyId, [this](bool) { latencyForwarder.fire(); });

    for (const HostParameter& p : hostParameters())
        exportParameter(fxPath, String(p.name), String(p.label), String());

    markLoaded();
    updateLatency();
}

FluxDeckPlugin::~FluxDeckPlugin()
{
    lowLatencyWatcher.reset();
    latencyForwarder.disconnect(this);
}

const std::vector<FluxDeckPlugin::HostParameter>& FluxDeckPlugin::hostParameters()
{
    static const std::vector<HostParameter> list {
        {"SyncToHost", "SyncToHost"},
        {"ApplyRecordHead", "Apply Tape Simulation"},
        {"MagneticHardness", "Magnetic Hardness"},
        {"Hysteresis", "Magnetic Resistance"},
        {"NoiseGain", "Noise Gain"},
        {"ApplyNoiseGate", "Apply Noise Gate"},
        {"DegradeDepth", "Demagnetization Depth"},
        {"DegradeRate", "Demagnetization Rate"},
        {"ApplyPlayheadFilter", "Apply Playback Filter"},
        {"Spacing", "Spacing"},
        {"Thickness", "Thickness"},
        {"Azimuth", "Azimuth"},
        {"TrackWidthRatio", "Width"},
        {"Speed", "Tape Speed"},
        {"ApplyTransport", "Apply Transport Modulations"},
        {"ApplyLowLatency", "Low Latency Mode"},
        {"WowMod", "Wow Depth"},
        {"WowRate", "Wow Rate"},
        {"FlutterMod", "Flutter Depth"},
        {"FlutterRate", "Flutter Rate"},
        {"NoiseSync", "Random Channel Unsync"},
        {"NoiseMod", "Random Depth"},
        {"NoiseRate", "Random Rate"},
        {"Delay", "Delay"},
        {"ApplyFeedbackCompensation", "Compensate Feedback"},
        {"Feedback", "Feedback"},
        {"Drive", "Drive"},
        {"InputGain", "Input Gain"},
        {"OutputGain", "Output Gain"},
        {"Mix", "Mix"},
        {"MaxRelativeDelay", "Flange Depth"},
        {"RelativeDelay", "Manual Flange"},
        {"Fade", "Fade"},
        {"PhaseInvert", "Phase Invert"},
        {"FlangeMode", "Flange Mode"},
        {"LFOFreq", "LFO Rate"},
        {"LFOPhase", "LFO Phase"},
        {"LFOShape", "LFO Shape"},
        {"LFOSymmetry", "LFO Symmetry"},
        {"LFOSwing", "LFO Swing"},
        {"ApplyCompander", "Apply Compander"},
        {"NoiseReductionEncoder", "Noise Reduction Encoder"},
        {"NoiseReductionDecoder", "Noise Reduction Decoder"},
        {"NRLink", "Link NR Encoder and Decoder"},
        {"OutputPad", "Output Pad"},
    };
    return list;
}

bool FluxDeckPlugin::isBusesLayoutSupported(const BusesLayout& layouts) const
{
    return Plugin::isBusesLayoutSupported(layouts);
}

void FluxDeckPlugin::prepareToPlay(double sampleRate, int maximumBlockSize)
{
    Plugin::prepareToPlay(sampleRate, maximumBlockSize);
    updateLatency();
}

int FluxDeckPlugin::latencyFor(double sampleRate, bool lowLatency)
{
    const double seconds = lowLatency ? 0.01 : (double) 0.06f;
    return (int) (float) (sampleRate * seconds);
}

void FluxDeckPlugin::updateLatency()
{
    const std::lock_guard<std::recursive_mutex> tree(treeMutex);
    if (engine == nullptr)
        return;
    bool lowLatency = false;
    if (Element* fx = engine->findElement(String("FluxDeck")))
        if (const uint32_t id = fx->parameterId("ApplyLowLatency"))
            lowLatency = fx->boolParameter(id);
    const double prepared = sampleRate_.load();
    setReportedLatency(latencyFor(prepared > 0 ? prepared : defaultSampleRate, lowLatency));
}

void FluxDeckPlugin::renderHostBlock(HostAudioBlock& block)
{
    // The effect always sees as many input channels as output channels: mono in,
    // stereo out feeds channel 0 to both.
    const uint32_t ci = (uint32_t) getMainBusNumInputChannels();
    const uint32_t co = std::min<uint32_t>((uint32_t) getMainBusNumOutputChannels(), block.channelCount());
    if (ci < co)
    {
        for (uint32_t c = ci; c < co; ++c)
            std::memset(block.channels[c], 0, sizeof(float) * block.length);
        if (ci == 1)
            std::memcpy(block.channels[1], block.channels[0], sizeof(float) * block.length);
    }
    Plugin::renderHostBlock(block);
}

void FluxDeckPlugin::setStateInformation(const void* data, int sizeInBytes)
{
    Plugin::setStateInformation(data, sizeInBytes);
    if (juce::MessageManager::getInstance()->isThisTheMessageThread())
        markLoaded();
    else
    {
        std::weak_ptr<bool> token = lifeToken;
        juce::MessageManager::callAsync([this, token] {
            if (token.lock())
                markLoaded();
        });
    }
    updateLatency(); // the new tree may be in the other latency mode; hosts may ask at once
}

void FluxDeckPlugin::markLoaded()
{
    const std::lock_guard<std::recursive_mutex> tree(treeMutex);
    if (engine == nullptr)
        return;
    engine->clearModified();
    if (Element* fx = engine->findElement(String("FluxDeck")))
        fx->clearModified();
}

juce::AudioProcessorEditor* FluxDeckPlugin::createEditor()
{
    return new juce::GenericAudioProcessorEditor(*this);
}
} // namespace oxa

juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter()
{
    return new oxa::FluxDeckPlugin();
}
