#pragma once
// The root of the element tree: renders its children in order on bus 0, keeps the
// musical clock, turns transport commands into state, and collects the tree's errors.

#include "engine/ProcessingElement.h"

#include <array>
#include <atomic>
#include <list>
#include <memory>
#include <mutex>

namespace tinyxml2
{
class XMLDocument;
}

namespace oxa
{
class AutomationParameterInterface;

/** Incoming notes and controllers. Controllers are kept with their timing inside the
    block, so that a learned controller moves its parameter at the right control block. */
class MidiState
{
public:
    static constexpr uint32_t controllerCount = 128;

    MidiState();
    /** Starts a block: the values reached so far become the block's starting values. Audio thread. */
    void beginBlock();
    /** Events of one block in order of sample offset. Audio thread. */
    void handle(const EngineEvent& event);

    /** 0..127: the controller's value for the control block that starts at sample
        `index` * 32, counting the changes up to and including that sample; -1 while
        the controller has never been received. Audio thread. */
    int controllerAt(uint32_t controller, uint32_t index) const;

    /** How many controller messages arrived so far, and the number of the last one; a
        learning window on the message thread polls these. */
    uint32_t controllerMessageCount() const { return controllerMessages_.load(std::memory_order_acquire); }
    int lastController() const { return lastController_.load(std::memory_order_relaxed); }

    struct Record
    {
        uint8_t velocity = 0;
        bool on = false;
    };
    std::array<Record, 128> notes {};
    std::array<int16_t, 128> controllers {}; // the latest value, -1 while never received
    std::array<float, 128> curve {};

private:
    struct Change
    {
        uint64_t offset;
        uint8_t controller;
        uint8_t value;
    };
    std::array<int16_t, 128> blockStart_ {};
    // A block with more changes than this keeps their final values, not their timing.
    std::array<Change, 256> changes_ {};
    uint32_t changeCount_ = 0;
    std::atomic<uint32_t> controllerMessages_ { 0 };
    std::atomic<int> lastController_ { -1 };
};

class Engine : public ProcessingElement
{
public:
    struct Ids
    {
        uint32_t globalTune, tempo, playing, recording, autoPlay, displayName, meterNumerator, meterDenominator;
    };
    static const Ids& ids();

    explicit Engine(const String& name = String());
    ~Engine() override;

    // ---- tree ----
    /** Appends a top-level element in render order; prepares it when the engine is prepared. */
    void addElement(const std::shared_ptr<ProcessingElement>& element);
    void removeAllElements();
    const std::vector<ProcessingElement*>& renderOrder() const { return children_; }

    // ---- rendering ----
    void prepareToRender() override;
    void setBus(uint32_t index, AudioBus* bus) override;
    void processEvents(RenderContext& context, EventList& events, uint32_t numSamples) override;
    void render(RenderContext& context, uint32_t numSamples) override;
    void renderAudio(RenderContext& context, uint32_t numSamples, ElementState* state) override;
    void handleEvents(RenderContext& context, EventList& events, uint32_t numSamples) override;
    /** The engine hands events on from its clock step, with its own transport commands merged. */
    void forwardEventsToChildren(RenderContext& context, EventList& events, uint32_t numSamples) override {}

    // ---- persistence ----
    /** Lets the element factory make engines by the type name "Engine"; once per process. */
    static void registerType();
    /** The base attributes, each saved child, then the host bindings as "Automation". */
    tinyxml2::XMLElement* saveXml(tinyxml2::XMLElement* parent, SaveOptions& options) override;
    /** Rebuilds the children through the element factory; holds "Automation" back. */
    bool loadXml(const tinyxml2::XMLElement* node, SaveOptions& options, int version) override;
    void finishLoading() override;

    // ---- errors ----
    void reportError(std::unique_ptr<Error> error) override;
    /** Fires the error signal for each kept error in order, while somebody listens. */
    void drainErrors();
    size_t keptErrorCount() const { return errors.size(); }
    /** Errors kept while nobody listens: the newest, so a tree that keeps failing
        with no window open does not grow without end. */
    static constexpr size_t maxKeptErrors = 64;
    Signal<Error*> errorSignal;

    // ---- the rest ----
    Engine* engine() override { return this; }
    std::recursive_mutex& engineLock() { return engineLock_; }
    void setAutomation(AutomationParameterInterface* automation) { automation_ = automation; }
    AutomationParameterInterface* automation() const { return automation_; }
    /** Applies automation XML held back from a load, then drops it. */
    void applyHeldAutomation();
    std::unique_ptr<tinyxml2::XMLDocument>& heldAutomationXml() { return heldAutomation_; }
    void setTrackProperties(std::shared_ptr<void> properties) { trackProperties_ = std::move(properties); }

    double tempo() const { return tempo_; }
    double position() const { return position_; }
    bool isPlaying() const { return playing_; }
    bool isRecording() const { return recording_; }
    int meterNumerator() const { return meterNumerator_; }
    int meterDenominator() const { return meterDenominator_; }
    bool syncsToHost() const { return syncToHost_; }
    const MidiState& midiState() const { return midiState_; }

private:
    float globalTune() const { return globalTune_; }
    void setGlobalTune(float v) { globalTune_ = v; }
    float tempoParameter() const { return (float) tempo_; }
    void setTempoParameter(float v);
    bool playingParameter() const { return playing_; }
    void setPlaying(bool v) { playing_ = v; }
    bool recordingParameter() const { return recording_; }
    void setRecording(bool v) { recording_ = v; }
    bool autoPlayParameter() const { return autoPlay_; }
    void setAutoPlay(bool v) { autoPlay_ = v; }
    String displayNameParameter() const { return displayName_; }
    void setDisplayName(String v) { displayName_ = v; }
    int meterNumeratorParameter() const { return meterNumerator_; }
    void setMeterNumerator(int v) { meterNumerator_ = v; }
    int meterDenominatorParameter() const { return meterDenominator_; }
    void setMeterDenominator(int v) { meterDenominator_ = v; }
    bool syncToHostParameter() const { return syncToHost_; }
    void setSyncToHost(bool v) { syncToHost_ = v; }

    double samplesPerBeat(const RenderContext& context) const { return 60.0 / tempo_ * context.sampleRate; }
    void armPreCount(const RenderContext& context);
    /** Publishes a value the clock changed and tells listeners. */
    void announce(uint32_t id);
    void emit(uint32_t type, const EngineEvent& at);

    std::vector<ProcessingElement*> children_;
    std::vector<std::shared_ptr<ProcessingElement>> owned_;
    float globalTune_ = 440.0f;
    int meterNumerator_ = 4;
    int meterDenominator_ = 4;
    double tempo_ = 120.0;
    double position_ = 0;
    bool syncToHost_ = true;
    float tempoSetByUser_ = 120.0f;
    String displayName_;
    MidiState midiState_;
    bool autoPlay_ = true;
    bool playing_ = false;
    bool recording_ = false;
    bool hostWasPlaying_ = false;
    double stopPosition_ = 0;
    bool preCountActive_ = false;
    int32_t preCountSamples_ = 0;
    std::list<std::unique_ptr<Error>> errors;
    AutomationParameterInterface* automation_ = nullptr;
    std::unique_ptr<tinyxml2::XMLDocument> heldAutomation_;
    std::recursive_mutex engineLock_;
    std::shared_ptr<void> trackProperties_;
    EventList localEvents_; // transport commands made in this block; reserved up front
};
} // namespace oxa
