#pragma once
// The generic processor frame of the engine's products: builds nothing itself, but
// adapts the host's buffers, MIDI and play head to the engine and renders it in place.

#include "engine/Engine.h"
#include "engine/EngineProxy.h"
#include "engine/HostTransport.h"
#include "plugin/AutomationParameterInterface.h"
#include "plugin/HostAudioBlock.h"
#include "plugin/HostReaderGate.h"
#include "plugin/LatencyBypass.h"
#include "plugin/PluginDefinition.h"
#include "resources/SettingsStore.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <atomic>
#include <cmath>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace tinyxml2
{
class XMLDocument;
}

namespace oxa
{
class ExportedPluginParameter;

class Plugin : public juce::AudioProcessor, public AutomationParameterInterface, public juce::VST3ClientExtensions
{
public:
    Plugin(const PluginDefinition& definition, const BusesProperties& buses);
    ~Plugin() override;

    // ---- juce::AudioProcessor ----
    const juce::String getName() const override { return definition.productName(); }
    void prepareToPlay(double sampleRate, int maximumBlockSize) override;
    void releaseResources() override {}
    void memoryWarningReceived() override {}
    void processBlock(juce::AudioBuffer<double>&, juce::MidiBuffer&) override {}
    void processBlock(juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midi) override;
    bool canAddBus(bool) const override { return false; }
    bool canRemoveBus(bool) const override { return false; }
    bool supportsDoublePrecisionProcessing() const override { return false; }
    double getTailLengthSeconds() const override { return std::numeric_limits<double>::infinity(); }
    bool acceptsMidi() const override { return true; }
    bool producesMidi() const override { return false; }
    bool supportsMPE() const override { return false; }
    bool isMidiEffect() const override { return false; }
    void reset() override;
    /** Our own, so that bypassing keeps the reported latency; not in the exported list. */
    juce::AudioProcessorParameter* getBypassParameter() const override { return bypassParameter.get(); }
    bool hasEditor() const override { return true; }
    int getNumPrograms() override { return 1; }
    int getCurrentProgram() override { return 0; }
    void setCurrentProgram(int) override {}
    const juce::String getProgramName(int) override { return programName; }
    void changeProgramName(int, const juce::String& name) override { programName = name; }
    void getStateInformation(juce::MemoryBlock& destination) override;
    void setStateInformation(const void* data, int sizeInBytes) override;
    void processorLayoutsChanged() override { layoutChanged = true; }
    void updateTrackProperties(const TrackProperties& properties) override;
    bool isBusesLayoutSupported(const BusesLayout& layouts) const override;

    // ---- juce::VST3ClientExtensions: no control-surface interfaces are offered ----
    int32_t queryIEditController(const Steinberg::TUID, void** obj) override;
    int32_t queryIAudioProcessor(const Steinberg::TUID, void** obj) override;
    bool getPluginHasMainInput() const override { return true; }

    // ---- AutomationParameterInterface (host parameter bindings) ----
    bool bind(const AutomationTarget& target, const String& displayName) override;
    void unbind(const AutomationTarget& target) override;
    bool save(tinyxml2::XMLElement* node) override;
    void load(const tinyxml2::XMLElement* node) override;

    // ---- host parameter slots ----
    /** A new slot bound to the parameter with registry id `id` at `path`. */
    ExportedPluginParameter* exportParameter(const String& path, uint32_t id, const String& displayName,
                                             bool automatable);
    /** A new slot bound by parameter name; unbound, it shows `defaultName`. */
    ExportedPluginParameter* exportParameter(const String& path, const String& parameterName,
                                             const String& defaultName, const String& displayName);
    /** A new unbound slot that shows only `defaultName`. */
    ExportedPluginParameter* exportParameter(const String& defaultName);
    size_t parameterCount() const { return slots.size(); }
    ExportedPluginParameter* parameterAt(size_t index) const;
    void bindSlot(size_t index, const AutomationTarget& target, const String& displayName = String());
    void unbindSlot(size_t index, bool tellHost = true);
    std::optional<size_t> findSlot(const String& path, uint32_t id) const;
    EngineProxy* getProxy() const { return proxy.get(); }

    // ---- the engine's side ----
    /** Appends an engine event for this block; system messages are dropped. */
    virtual void enqueueHostEvent(uint8_t port, uint8_t channel, uint8_t status, uint8_t data1, uint8_t data2,
                                  int sampleOffset);
    /** Renders with flush-to-zero and denormals-are-zero on. */
    virtual void renderHostBlock(HostAudioBlock& block);
    virtual void renderEngine(HostAudioBlock& block, int, int);

    /** Takes the engine as the tree's root and (re)binds the proxy; null unbinds every slot,
        destroys the proxy and releases the engine. */
    void setEngine(const std::shared_ptr<Engine>& engine);
    const std::shared_ptr<Engine>& getEngine() const { return engine; }
    RenderContext& renderContext() { return *context; }
    const EventList& pendingEvents() const { return events; }
    juce::CriticalSection& renderLock() { return renderLock_; }
    double preparedSampleRate() const { return sampleRate_.load(); }
    int preparedBlockSize() const { return blockSize_.load(); }

    /** Host threads pass it to use the elements the host parameters point at. */
    const HostReaderGate& hostGate() const { return hostGate_; }

    /** Applies every pending deferred write with its side effects before the caller reads
        the tree: lets a rendering audio thread do it (it applies them at the head of its
        next block), or, when it does not render, applies them under the render lock. */
    void applyPendingWrites();
    /** Whether the audio thread rendered a block within the last `milliseconds`. */
    bool audioIsLive(uint32_t milliseconds = idleAfterMilliseconds) const;
    static constexpr uint32_t idleAfterMilliseconds = 50;

    static int liveInstances() { return liveCount.load(); }
    /** The wrapper's settings key ("SOFTWARE\\<maker>\\<product>\\VST3"), or null. */
    SettingsStore* settingsKey() const { return settings.get(); }

    // ---- host state chunk ----
    /** The document held in a state chunk, or an empty one when the chunk holds none. */
    static std::shared_ptr<tinyxml2::XMLDocument> parseStateChunk(const void* data, int sizeInBytes);
    /** Wraps printed XML (without its terminator) into a state chunk. */
    static void writeStateChunk(const char* xml, int length, juce::MemoryBlock& destination);

protected:
    /** The longest latency this product reports at a sample rate; sizes the bypass delay. */
    virtual int maximumLatency(double sampleRate) const { return (int) std::ceil(sampleRate * 0.1); }
    /** Reports latency to the host and to the bypass, which delays the dry signal by it. */
    void setReportedLatency(int samples);

    void updateTransport(int numSamples);
    void rebuildBuses(double sampleRate, int blockSize);
    /** Saves the engine below the document's root; message thread. */
    void saveEngineInto(tinyxml2::XMLDocument& document);
    /** Replaces the engine by the one in the document, on the calling thread; the
        interface side follows on the message thread. */
    void applyState(const std::shared_ptr<tinyxml2::XMLDocument>& document, const String& basePath);
    /** Message thread: moves the proxy and its watchers to the current engine, applies
        held automation, then lets retired engines go. */
    void followEngineOnMessageThread();
    /** Points every host parameter at its element in the current engine, then waits
        until no host call can still be inside an older tree. */
    void retargetHostParameters();
    bool treeHasPendingWrites() const;

    /** Guards the engine pointer and the tree's replacement against the non-audio
        threads that read it (state, latency, reset, prepare). Recursive, because host
        notifications may call back in. The audio thread never takes it. */
    std::recursive_mutex treeMutex;
    /** Queued calls hold a weak copy, so that they do nothing once the plug-in is gone. */
    std::shared_ptr<bool> lifeToken = std::make_shared<bool>(true);

    const PluginDefinition& definition;
    std::shared_ptr<Engine> engine;
    std::unique_ptr<EngineProxy> proxy;
    std::vector<ExportedPluginParameter*> slots; // owned by juce::AudioProcessor
    std::map<std::pair<String, String>, size_t> slotOfTarget;
    size_t roundRobin = 0;
    std::unique_ptr<AudioBus> mainBus;
    std::vector<std::shared_ptr<AudioBus>> auxBuses;
    HostAudioBlock hostBlock;
    std::unique_ptr<RenderContext> context;
    EventList events;
    juce::CriticalSection renderLock_;
    HostTransportTracker transport;
    std::vector<float> auxScratch;
    std::vector<float*> auxScratchPointers;
    uint32_t auxScratchChannels = 0;
    uint32_t auxScratchBlockSize = 0;
    std::string settingsKeyPath;
    std::unique_ptr<SettingsStore> settings; // the wrapper's own key; none for unknown wrappers
    std::shared_ptr<tinyxml2::XMLDocument> pendingState;
    juce::CriticalSection pendingStateLock; // the pointer only; taken briefly from any thread
    bool layoutChanged = true;
    juce::String programName { "Default" };
    std::atomic<double> sampleRate_ {0.0};
    std::atomic<int> blockSize_ {0};

private:
    class IdleWriteTimer;
    static std::atomic<int> liveCount;

    HostReaderGate hostGate_;
    std::vector<std::shared_ptr<Engine>> retiredEngines; // until the interface side has moved on
    std::unique_ptr<juce::AudioParameterBool> bypassParameter;
    LatencyBypass bypass;
    juce::CriticalSection bypassLock_; // prepare against the audio thread, which only tries it
    std::atomic<int> reportedLatency {0};
    bool renderedThisBlock = false;                  // audio thread only
    std::atomic<bool> resetRequested {false};        // a reset that found the render lock taken
    std::atomic<uint32_t> lastRenderMilliseconds {0};
    std::atomic<uint32_t> renderedBlocks {0};
    std::unique_ptr<IdleWriteTimer> idleWriteTimer;
};
} // namespace oxa
