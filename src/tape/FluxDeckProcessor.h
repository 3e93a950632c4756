#pragma once
// The effect's element at "/FluxDeck": the two-deck tape flanger's parameter
// table, the routing of every parameter write into the decks of all channels,
// the block render, and the live values the editor polls.

#include "engine/BasicProcessingElement.h"
#include "tape/FluxDeckParameters.h"
#include "tape/OutputLevels.h"
#include "tape/SignalMonitoringFIFO.h"
#include "tape/TapeEffect.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace oxa
{
class FluxDeckProcessor : public BasicProcessingElement
{
public:
    class State : public ProcessingElementState, public TapeEffectState
    {
    public:
        explicit State(Element* owner, TapeStorage storage = TapeStorage::allocated);

        void prepare(double sampleRate, int blockSize) override;
        void reset(double sampleRate, int blockSize) override;
        std::unique_ptr<ElementState> clone(StatePool*) const override { return std::make_unique<State>(*this); }

        // The flange depth asked for, before the low latency limit.
        double requestedFlangeDepth = 0.005;
    };

    using Ids = FluxDeckParameterIds;
    static const Ids& ids() { return FluxDeckParameters::ids(); }

    /** Registers the type with the element factory, once per process. */
    static void registerType();

    explicit FluxDeckProcessor(const String& name = String("FluxDeck"));
    ~FluxDeckProcessor() override;

    uint32_t mapParameterId(uint32_t id) const override;
    void saveXmlAttributes(tinyxml2::XMLElement* node, int& version) override;
    bool loadXmlAttributes(const tinyxml2::XMLElement* node, int version) override;
    void valuesReplaced() override;
    void prepareToRender() override;
    void setBus(uint32_t index, AudioBus* bus) override;
    // Never polyphonic: becoming monophonic again would promote the second state, which
    // mirrors the settings without tape, to rendering.
    void setPolyphonic(bool) override {}

    void processAudio(RenderContext& context, ElementState* state, uint32_t numSamples, float* const* channels,
                      const bool* inputWasSilent) override;
    void processSilence(RenderContext&, ElementState*, uint32_t) override {}

protected:
    using BasicProcessingElement::movedByPendingWrites;
    bool movedByPendingWrites(uint32_t id, float& value) const override;
    bool movedByPendingWrites(uint32_t id, int& value) const override;

public:

    /** The tape speed stream for the editor; made on first call (message thread). */
    std::shared_ptr<SignalMonitoringFIFO> getMonitor();

    /** Flange position in -1..1, written once a block. */
    std::atomic<float> flangePosition{0.0f};
    /** Output peaks for the window's meters, raised once a block. */
    OutputLevels outputLevels;
    float hostTempo() const { return hostTempo_.load(); }
    bool syncToHost() const { return syncToHost_.load(); }

    static constexpr int currentVersion = 1;

private:
    void bindParameters();

    // Getters and setters, in table order.
    float fade(const State& s) const;
    void setFade(State& s, float v);
    float maxRelativeDelay(const State& s) const;
    void setMaxRelativeDelay(State& s, float v);
    float relativeDelay(const State& s) const;
    void setRelativeDelay(State& s, float v);
    float delay(const State& s) const;
    void setDelay(State& s, float v);
    bool phaseInvert(const State& s) const;
    void setPhaseInvert(State& s, bool v);
    float magneticHardness(const State& s) const;
    void setMagneticHardness(State& s, float v);
    float hysteresis(const State& s) const;
    void setHysteresis(State& s, float v);
    float noiseGain(const State& s) const;
    void setNoiseGain(State& s, float v);
    float spacing(const State& s) const;
    void setSpacing(State& s, float v);
    float thickness(const State& s) const;
    void setThickness(State& s, float v);
    float azimuth(const State& s) const;
    void setAzimuth(State& s, float v);
    float trackWidthRatio(const State& s) const;
    void setTrackWidthRatio(State& s, float v);
    float speed(const State& s) const;
    void setSpeed(State& s, float v);
    float wowMod(const State& s) const;
    void setWowMod(State& s, float v);
    float wowRate(const State& s) const;
    void setWowRate(State& s, float v);
    float flutterMod(const State& s) const;
    void setFlutterMod(State& s, float v);
    float flutterRate(const State& s) const;
    void setFlutterRate(State& s, float v);
    float noiseMod(const State& s) const;
    void setNoiseMod(State& s, float v);
    float noiseRate(const State& s) const;
    void setNoiseRate(State& s, float v);
    float feedback(const State& s) const;
    void setFeedback(State& s, float v);
    float inputGain(const State& s) const;
    void setInputGain(State& s, float v);
    float outputGain(const State& s) const;
    void setOutputGain(State& s, float v);
    bool applyPlayheadFilter(const State& s) const;
    void setApplyPlayheadFilter(State& s, bool v);
    int noiseReductionEncoder(const State& s) const;
    void setNoiseReductionEncoder(State& s, int v);
    int noiseReductionDecoder(const State& s) const;
    void setNoiseReductionDecoder(State& s, int v);
    int flangeMode(const State& s) const;
    void setFlangeMode(State& s, int v);
    float lfoFreq(const State& s) const;
    void setLfoFreq(State& s, float v);
    float lfoPhase(const State& s) const;
    void setLfoPhase(State& s, float v);
    float lfoShape(const State& s) const;
    void setLfoShape(State& s, float v);
    float lfoSymmetry(const State& s) const;
    void setLfoSymmetry(State& s, float v);
    float lfoSwing(const State& s) const;
    void setLfoSwing(State& s, float v);
    bool applyRecordHead(const State& s) const;
    void setApplyRecordHead(State& s, bool v);
    bool applyTransport(const State& s) const;
    void setApplyTransport(State& s, bool v);
    float drive(const State& s) const;
    void setDrive(State& s, float v);
    bool noiseSync(const State& s) const;
    void setNoiseSync(State& s, bool v);
    float mix(const State& s) const;
    void setMix(State& s, float v);
    bool nrLink(const State& s) const;
    void setNrLink(State& s, bool v);
    float degradeDepth(const State& s) const;
    void setDegradeDepth(State& s, float v);
    float degradeRate(const State& s) const;
    void setDegradeRate(State& s, float v);
    bool applyNoiseGate(const State& s) const;
    void setApplyNoiseGate(State& s, bool v);
    bool applyCompander(const State& s) const;
    void setApplyCompander(State& s, bool v);
    bool applyFeedbackCompensation(const State& s) const;
    void setApplyFeedbackCompensation(State& s, bool v);
    bool applyLowLatency(const State& s) const;
    void setApplyLowLatency(State& s, bool v);
    float outputPad(const State& s) const;
    void setOutputPad(State& s, float v);

    // Bound to the element, not to a state.
    bool syncToHostValue() const { return syncToHost_.load(); }
    void setSyncToHost(bool on);

    std::atomic<float> hostTempo_{120.0f};
    std::atomic<bool> syncToHost_{false};
    std::atomic<bool> hostPlaying{false}; // as the last block saw it
    std::size_t firstOwnParameter = 0;

    std::mutex monitorCreation; // message thread only
    std::shared_ptr<SignalMonitoringFIFO> monitor;
    // Written once, before monitorPublished; the audio thread locks it without waiting.
    std::weak_ptr<SignalMonitoringFIFO> monitorForAudio;
    std::atomic<bool> monitorPublished{false};
};
} // namespace oxa
