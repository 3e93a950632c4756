#include "tape/FluxDeckProcessor.h"

#include "element/ElementFactory.h"
#include "element/NoteLengths.h"
#include "element/ParameterInfo.h"
#include "element/LegacyScales.h"
#include "element/ParameterRegistry.h"
#include "tape/Decibels.h"
#include "tape/TapeControls.h"

#include <tinyxml2.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace oxa
{
namespace
{
// Out-of-range writes are held to the table's range; a value that is no number keeps the old state.
bool clampToRange(uint32_t id, float& value)
{
    if (!std::isfinite(value))
        return false;
    if (const ParameterDescription<float>* description = ParameterRegistry::instance().floatDescription(id))
        value = description->clamp(value);
    return true;
}

int clampType(int value, int count) { return std::clamp(value, 0, count - 1); }

constexpr float bpmToHz = 0.016666668f;
} // namespace

// ---- state ---------------------------------------------------------------------

FluxDeckProcessor::State::State(Element* owner, TapeStorage storage) : ProcessingElementState(owner)
{
    tapeStorage = storage;
    // One channel holds the settings until the bus says how many there are.
    channels.resize(1);
}

void FluxDeckProcessor::State::prepare(double sampleRate, int blockSize)
{
    uint32_t count = 1;
    if (auto* processor = dynamic_cast<FluxDeckProcessor*>(owner))
        count = std::max<uint32_t>(processor->channelCount(), 1);
    TapeEffectState::prepare(sampleRate, static_cast<uint32_t>(std::max(blockSize, 1)), count);
}

void FluxDeckProcessor::State::reset(double, int) { TapeEffectState::reset(); }

// ---- element -------------------------------------------------------------------

void FluxDeckProcessor::registerType()
{
    static const bool registered = [] {
        ElementFactory::instance().registerType(
            "Flux Deck", "FluxDeck", [] { return std::shared_ptr<Element>(std::make_shared<FluxDeckProcessor>()); },
            String::fromInt(2), 256);
        return true;
    }();
    (void) registered;
}

FluxDeckProcessor::FluxDeckProcessor(const String& name) : BasicProcessingElement(String("FluxDeck"), name)
{
    (void) ids();
    // Only the main state renders. The second one mirrors the parameter values (the
    // element framework keeps it as the template a polyphonic element hands its voices;
    // this effect is never polyphonic), so it takes the settings but no tape: two
    // copies of the tape would double the instance's memory for nothing. A state load
    // builds a whole new tree, so no swap ever promotes the second state to rendering.
    setStates(std::make_unique<State>(this), std::make_unique<State>(this, TapeStorage::none));
    bindParameters();
    // Setters store some values in other units and precisions than the deck's own
    // initial fields; a fresh processor must hold what a reload of it would hold.
    // The base class's flags keep their own starting values.
    const uint32_t firstOwnId = ids().fade;
    applyParameterDefaults(firstOwnId);
    for (const auto& parameter : parameters())
        if (parameter->id() < firstOwnId)
            ++firstOwnParameter;
}

FluxDeckProcessor::~FluxDeckProcessor()
{
    monitorPublished.store(false);
    monitor.reset();
}

void FluxDeckProcessor::bindParameters()
{
    const Ids& id = ids();
    using P = FluxDeckProcessor;
    using F = ParameterInfo<float>;
    using I = ParameterInfo<int>;
    using B = ParameterInfo<bool>;
    addParameters(
        {
            new F(id.fade, this, &P::fade, &P::setFade),
            new F(id.maxRelativeDelay, this, &P::maxRelativeDelay, &P::setMaxRelativeDelay),
            new F(id.relativeDelay, this, &P::relativeDelay, &P::setRelativeDelay),
            new F(id.delay, this, &P::delay, &P::setDelay),
            new F(id.magneticHardness, this, &P::magneticHardness, &P::setMagneticHardness),
            new F(id.hysteresis, this, &P::hysteresis, &P::setHysteresis),
            new F(id.noiseGain, this, &P::noiseGain, &P::setNoiseGain),
            new F(id.spacing, this, &P::spacing, &P::setSpacing),
            new F(id.thickness, this, &P::thickness, &P::setThickness),
            new F(id.azimuth, this, &P::azimuth, &P::setAzimuth),
            new F(id.trackWidthRatio, this, &P::trackWidthRatio, &P::setTrackWidthRatio),
            new F(id.speed, this, &P::speed, &P::setSpeed),
            new F(id.wowMod, this, &P::wowMod, &P::setWowMod),
            new F(id.wowRate, this, &P::wowRate, &P::setWowRate),
            new F(id.flutterMod, this, &P::flutterMod, &P::setFlutterMod),
            new F(id.flutterRate, this, &P::flutterRate, &P::setFlutterRate),
            new F(id.noiseMod, this, &P::noiseMod, &P::setNoiseMod),
            new F(id.noiseRate, this, &P::noiseRate, &P::setNoiseRate),
            new F(id.feedback, this, &P::feedback, &P::setFeedback),
            new F(id.inputGain, this, &P::inputGain, &P::setInputGain),
            new F(id.outputGain, this, &P::outputGain, &P::setOutputGain),
            new F(id.lfoFreq, this, &P::lfoFreq, &P::setLfoFreq),
            new F(id.lfoPhase, this, &P::lfoPhase, &P::setLfoPhase),
            new F(id.lfoShape, this, &P::lfoShape, &P::setLfoShape),
            new F(id.lfoSymmetry, this, &P::lfoSymmetry, &P::setLfoSymmetry),
            new F(id.lfoSwing, this, &P::lfoSwing, &P::setLfoSwing),
            new F(id.drive, this, &P::drive, &P::setDrive),
            new F(id.mix, this, &P::mix, &P::setMix),
            new F(id.degradeDepth, this, &P::degradeDepth, &P::setDegradeDepth),
            new F(id.degradeRate, this, &P::degradeRate, &P::setDegradeRate),
            new F(id.outputPad, this, &P::outputPad, &P::setOutputPad),
        },
        {
            new I(id.noiseReductionEncoder, this, &P::noiseReductionEncoder, &P::setNoiseReductionEncoder),
            new I(id.noiseReductionDecoder, this, &P::noiseReductionDecoder, &P::setNoiseReductionDecoder),
            new I(id.flangeMode, this, &P::flangeMode, &P::setFlangeMode),
        },
        {
            new B(syncToHostId(), this, &P::syncToHostValue, &P::setSyncToHost),
            new B(id.phaseInvert, this, &P::phaseInvert, &P::setPhaseInvert),
            new B(id.applyPlayheadFilter, this, &P::applyPlayheadFilter, &P::setApplyPlayheadFilter),
            new B(id.applyRecordHead, this, &P::applyRecordHead, &P::setApplyRecordHead),
            new B(id.applyTransport, this, &P::applyTransport, &P::setApplyTransport),
            new B(id.noiseSync, this, &P::noiseSync, &P::setNoiseSync),
            new B(id.nrLink, this, &P::nrLink, &P::setNrLink),
            new B(id.applyNoiseGate, this, &P::applyNoiseGate, &P::setApplyNoiseGate),
            new B(id.applyCompander, this, &P::applyCompander, &P::setApplyCompander),
            new B(id.applyFeedbackCompensation, this, &P::applyFeedbackCompensation,
                  &P::setApplyFeedbackCompensation),
            new B(id.applyLowLatency, this, &P::applyLowLatency, &P::setApplyLowLatency),
        });
    // Their setters move other parameters: the mode resets the manual position, the
    // encoder and the link drive a linked decoder, the sync flag converts the LFO rate.
    setMovesOthers({id.flangeMode, id.noiseReductionEncoder, id.nrLink, syncToHostId()});
}

bool FluxDeckProcessor::movedByPendingWrites(uint32_t id, float& value) const
{
    const Ids& ids_ = ids();
    if (id == ids_.relativeDelay)
    {
        // switching to Manual puts the position at its start
        const auto* mode = findIntInfo(ids_.flangeMode);
        if (mode == nullptr || !mode->isPending() || mode->deferredValue() != TapeChannel::manualMode)
            return false;
        value = -1.0f;
        return true;
    }
    if (id == ids_.lfoFreq)
    {
        // a sync switch converts the rate by the host's tempo: not known beforehand
        const auto* sync = findBoolInfo(syncToHostId());
        if (sync == nullptr || !sync->isPending() || sync->deferredValue() == syncToHost_.load())
            return false;
        value = std::numeric_limits<float>::quiet_NaN();
        return true;
    }
    return false;
}

bool FluxDeckProcessor::movedByPendingWrites(uint32_t id, int& value) const
{
    const Ids& ids_ = ids();
    if (id != ids_.noiseReductionDecoder)
        return false;
    const auto* encoder = findIntInfo(ids_.noiseReductionEncoder);
    const auto* link = findBoolInfo(ids_.nrLink);
    const bool encoderPending = encoder != nullptr && encoder->isPending();
    const bool linkPending = link != nullptr && link->isPending();
    if ((!encoderPending && !linkPending) || !pendingBoolParameter(ids_.nrLink))
        return false;
    value = clampType(pendingIntParameter(ids_.noiseReductionEncoder), 4);
    return true;
}

uint32_t FluxDeckProcessor::mapParameterId(uint32_t id) const
{
    const int index = aliasIndex(id);
    if (index < 0 || static_cast<std::size_t>(index) < firstOwnParameter)
        return id;
    const std::size_t row = static_cast<std::size_t>(index) - firstOwnParameter;
    return row < Ids::rowCount ? ids().exposedOrder[row] : id;
}

void FluxDeckProcessor::saveXmlAttributes(tinyxml2::XMLElement* node, int& version)
{
    version = currentVersion;
    BasicProcessingElement::saveXmlAttributes(node, version);
}

bool FluxDeckProcessor::loadXmlAttributes(const tinyxml2::XMLElement* node, int version)
{
    const bool loaded = BasicProcessingElement::loadXmlAttributes(node, version);
    if (node != nullptr)
        LegacyScales::convertLoaded(*this, *node, version);
    // The flange mode loads after the manual position, and switching to Manual moves the
    // position to its start; a project saved in Manual mode reopens where it was left.
    float manualPosition = 0.0f;
    if (node != nullptr && intParameter(ids().flangeMode) == TapeChannel::manualMode
        && node->QueryFloatAttribute("RelativeDelay", &manualPosition) == tinyxml2::XML_SUCCESS
        && std::isfinite(manualPosition))
        setFloatParameter(ids().relativeDelay, std::clamp(manualPosition, -1.0f, 1.0f));
    valuesReplaced();
    return loaded;
}

void FluxDeckProcessor::valuesReplaced()
{
    // With the host standing still nobody hears a step, and the next play should start
    // at the loaded gains rather than glide into them.
    if (!hostPlaying.load(std::memory_order_relaxed))
        for (ElementState* state : {mainState(), secondState()})
            if (auto* s = dynamic_cast<State*>(state))
                s->jumpToTargetsAtNextBlock();
}

void FluxDeckProcessor::prepareToRender()
{
    BasicProcessingElement::prepareToRender();
    if (!monitorPublished.load(std::memory_order_acquire))
        return;
    if (auto live = monitorForAudio.lock())
        live->setCapacity(static_cast<uint32_t>(sampleRate()));
}

void FluxDeckProcessor::setBus(uint32_t index, AudioBus* bus)
{
    const uint32_t before = channelCount();
    BasicProcessingElement::setBus(index, bus);
    // A bus that arrives after prepare brings the channel count the states were missing;
    // only the channels it adds need tape, the prepared ones keep theirs.
    if (index == 0 && isPrepared() && channelCount() != before && channelCount() > 0)
        for (ElementState* state : {mainState(), secondState()})
            if (auto* s = dynamic_cast<State*>(state); s != nullptr && s->sampleRate > 0.0)
                s->setChannelCount(channelCount());
}

std::shared_ptr<SignalMonitoringFIFO> FluxDeckProcessor::getMonitor()
{
    const std::lock_guard<std::mutex> guard(monitorCreation);
    if (!monitor)
    {
        auto made = std::make_shared<SignalMonitoringFIFO>();
        if (isPrepared())
            made->setCapacity(static_cast<uint32_t>(sampleRate()));
        monitor = made;
        monitorForAudio = made;
        monitorPublished.store(true, std::memory_order_release);
    }
    return monitor;
}

void FluxDeckProcessor::processAudio(RenderContext& context, ElementState* state, uint32_t numSamples,
                                     float* const* channels, const bool*)
{
    if (state == nullptr || numSamples == 0)
        return;
    auto& s = *static_cast<State*>(state);
    TapeHostInfo host;
    host.tempo = context.transport.tempo;
    host.playing = context.transport.playing == 1;
    host.positionBeats = context.transport.position;
    hostPlaying.store(host.playing, std::memory_order_relaxed);

    float* speedScratch = context.arena1.allocateSamples(numSamples);
    float* dryScratch = context.arena1.allocateSamples(numSamples);
    if (speedScratch == nullptr || dryScratch == nullptr)
        return;

    float tempo = hostTempo_.load(std::memory_order_relaxed);
    const float position = s.render(channels, channelCount(), numSamples, host, syncToHost_.load(), tempo,
                                    speedScratch, dryScratch);
    hostTempo_.store(tempo, std::memory_order_relaxed);
    flangePosition.store(position, std::memory_order_relaxed);
    outputLevels.publish(channels, channelCount(), numSamples);

    if (monitorPublished.load(std::memory_order_acquire))
        if (auto live = monitorForAudio.lock())
            live->append(speedScratch, numSamples);
}

// ---- getters and setters -------------------------------------------------------
// Getters read back from the first deck (or the state), so the state is the truth.

namespace
{
const TapeDeck& firstDeck(const FluxDeckProcessor::State& s) { return s.channels.front().decks[0]; }
const TapeDeck& secondDeck(const FluxDeckProcessor::State& s) { return s.channels.front().decks[1]; }
PlaybackHeadSettings headOf(const FluxDeckProcessor::State& s) { return firstDeck(s).playbackFilters.getSettings(); }
} // namespace

float FluxDeckProcessor::fade(const State& s) const { return static_cast<float>(firstDeck(s).fade); }
void FluxDeckProcessor::setFade(State& s, float v)
{
    if (clampToRange(ids().fade, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.fade = v; });
}

float FluxDeckProcessor::maxRelativeDelay(const State& s) const
{
    return static_cast<float>(secondDeck(s).flangeDepth);
}
void FluxDeckProcessor::setMaxRelativeDelay(State& s, float v)
{
    if (!clampToRange(ids().maxRelativeDelay, v))
        return;
    s.requestedFlangeDepth = v;
    s.setFlangeDepth(v);
}

float FluxDeckProcessor::relativeDelay(const State& s) const
{
    return static_cast<float>(secondDeck(s).flangePhase * 2.0 - 1.0);
}
void FluxDeckProcessor::setRelativeDelay(State& s, float v)
{
    if (clampToRange(ids().relativeDelay, v))
        s.TapeEffectState::setRelativeDelay(v);
}

float FluxDeckProcessor::delay(const State& s) const
{
    return static_cast<float>(firstDeck(s).heads[TapeDeck::feedbackHeadIndex].delay);
}
void FluxDeckProcessor::setDelay(State& s, float v)
{
    if (clampToRange(ids().delay, v))
        s.setFeedbackDelay(v);
}

bool FluxDeckProcessor::phaseInvert(const State& s) const { return s.channels.front().phaseInvert; }
void FluxDeckProcessor::setPhaseInvert(State& s, bool v)
{
    for (TapeChannel& channel : s.channels)
        channel.phaseInvert = v;
}

float FluxDeckProcessor::magneticHardness(const State& s) const
{
    return static_cast<float>((firstDeck(s).recordHead.a - 5.0) * -0.25);
}
void FluxDeckProcessor::setMagneticHardness(State& s, float v)
{
    if (!clampToRange(ids().magneticHardness, v))
        return;
    const double a = TapeControls::recordHardness(v);
    s.forEachDeck([a](TapeDeck& deck) { deck.setRecordHardness(a); });
}

float FluxDeckProcessor::hysteresis(const State& s) const
{
    return static_cast<float>(std::log10(firstDeck(s).recordHead.k * 0.01) / 3.0);
}
void FluxDeckProcessor::setHysteresis(State& s, float v)
{
    if (!clampToRange(ids().hysteresis, v))
        return;
    const double k = TapeControls::recordResistance(v);
    s.forEachDeck([k](TapeDeck& deck) { deck.setRecordResistance(k); });
}

float FluxDeckProcessor::noiseGain(const State& s) const
{
    return linearToDb(static_cast<float>(firstDeck(s).noiseGain));
}
void FluxDeckProcessor::setNoiseGain(State& s, float v)
{
    if (!clampToRange(ids().noiseGain, v))
        return;
    const float gain = dbToLinear(v);
    s.forEachDeck([gain](TapeDeck& deck) { deck.noiseGain = gain; });
}

float FluxDeckProcessor::spacing(const State& s) const
{
    return static_cast<float>(std::log10(headOf(s).spacing * 100000.00252621254));
}
void FluxDeckProcessor::setSpacing(State& s, float v)
{
    if (!clampToRange(ids().spacing, v))
        return;
    const double spacing = TapeControls::headSpacing(v);
    s.forEachDeck([spacing](TapeDeck& deck) { deck.setSpacing(spacing); });
}

float FluxDeckProcessor::thickness(const State& s) const
{
    return static_cast<float>(std::log10(headOf(s).thickness * 200000.00505242508));
}
void FluxDeckProcessor::setThickness(State& s, float v)
{
    if (!clampToRange(ids().thickness, v))
        return;
    const double thickness = TapeControls::tapeThickness(v);
    s.forEachDeck([thickness](TapeDeck& deck) { deck.setThickness(thickness); });
}

float FluxDeckProcessor::azimuth(const State& s) const
{
    return static_cast<float>((headOf(s).azimuth - 0.0001) * 1111.111);
}
void FluxDeckProcessor::setAzimuth(State& s, float v)
{
    if (!clampToRange(ids().azimuth, v))
        return;
    const double azimuth = TapeControls::headAzimuth(v);
    s.forEachDeck([azimuth](TapeDeck& deck) { deck.setAzimuth(azimuth); });
}

float FluxDeckProcessor::trackWidthRatio(const State& s) const
{
    return static_cast<float>((headOf(s).ratio - 1.1) * 1.1111111);
}
void FluxDeckProcessor::setTrackWidthRatio(State& s, float v)
{
    if (!clampToRange(ids().trackWidthRatio, v))
        return;
    const double ratio = TapeControls::trackWidthRatio(v);
    s.forEachDeck([ratio](TapeDeck& deck) { deck.setTrackWidthRatio(ratio); });
}

float FluxDeckProcessor::speed(const State& s) const
{
    return static_cast<float>(std::log10(firstDeck(s).speed * 9.99999985));
}
void FluxDeckProcessor::setSpeed(State& s, float v)
{
    if (!clampToRange(ids().speed, v))
        return;
    const float tapeSpeed = TapeControls::tapeSpeed(v);
    s.setTapeSpeed(tapeSpeed);
}

float FluxDeckProcessor::wowMod(const State& s) const
{
    return static_cast<float>(firstDeck(s).transport.wowDepth * 3.3333333333333335);
}
void FluxDeckProcessor::setWowMod(State& s, float v)
{
    if (clampToRange(ids().wowMod, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.transport.wowDepth = 0.3 * v; });
}

float FluxDeckProcessor::wowRate(const State& s) const { return static_cast<float>(firstDeck(s).transport.wowRate); }
void FluxDeckProcessor::setWowRate(State& s, float v)
{
    if (!clampToRange(ids().wowRate, v))
        return;
    s.forEachDeck([v](TapeDeck& deck) { deck.transport.wowRate = v; });
    // The depth control's picture depends on the rate.
    notifyParameterChanged(ids().wowMod);
}

float FluxDeckProcessor::flutterMod(const State& s) const
{
    return static_cast<float>(firstDeck(s).transport.flutterDepth * 19.9999997);
}
void FluxDeckProcessor::setFlutterMod(State& s, float v)
{
    if (clampToRange(ids().flutterMod, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.transport.flutterDepth = 0.05 * v; });
}

float FluxDeckProcessor::flutterRate(const State& s) const
{
    return static_cast<float>(firstDeck(s).transport.flutterRate);
}
void FluxDeckProcessor::setFlutterRate(State& s, float v)
{
    if (clampToRange(ids().flutterRate, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.transport.flutterRate = v; });
}

float FluxDeckProcessor::noiseMod(const State& s) const
{
    return static_cast<float>(firstDeck(s).transport.randomDepth * 9.99999985);
}
void FluxDeckProcessor::setNoiseMod(State& s, float v)
{
    if (clampToRange(ids().noiseMod, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.transport.randomDepth = 0.1 * v; });
}

float FluxDeckProcessor::noiseRate(const State& s) const
{
    return static_cast<float>(firstDeck(s).transport.randomRate);
}
void FluxDeckProcessor::setNoiseRate(State& s, float v)
{
    if (clampToRange(ids().noiseRate, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.transport.randomRate = v; });
}

float FluxDeckProcessor::feedback(const State& s) const { return static_cast<float>(firstDeck(s).feedback); }
void FluxDeckProcessor::setFeedback(State& s, float v)
{
    if (clampToRange(ids().feedback, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.feedback = v; });
}

float FluxDeckProcessor::inputGain(const State& s) const
{
    return linearToDb(static_cast<float>(firstDeck(s).inputGain));
}
void FluxDeckProcessor::setInputGain(State& s, float v)
{
    if (!clampToRange(ids().inputGain, v))
        return;
    const float gain = dbToLinear(v);
    s.forEachDeck([gain](TapeDeck& deck) { deck.inputGain = gain; });
}

float FluxDeckProcessor::outputGain(const State& s) const { return linearToDb(s.outputGain); }
void FluxDeckProcessor::setOutputGain(State& s, float v)
{
    if (clampToRange(ids().outputGain, v))
        s.outputGain = dbToLinear(v);
}

bool FluxDeckProcessor::applyPlayheadFilter(const State& s) const { return firstDeck(s).playbackFilters.isOn(); }
void FluxDeckProcessor::setApplyPlayheadFilter(State& s, bool v)
{
    s.forEachDeck([v](TapeDeck& deck) { deck.setPlaybackFilterOn(v); });
}

int FluxDeckProcessor::noiseReductionEncoder(const State& s) const { return firstDeck(s).encoderType; }
void FluxDeckProcessor::setNoiseReductionEncoder(State& s, int v)
{
    // Written into the decks even while the compander is off: that engages the type.
    v = clampType(v, 4);
    const bool linked = s.nrLink;
    s.forEachDeck([v, linked](TapeDeck& deck) {
        deck.setEncoderType(v);
        if (linked)
            deck.setDecoderType(v);
    });
    s.encoderType = v;
    if (linked)
    {
        s.decoderType = v;
        notifyParameterChanged(ids().noiseReductionDecoder);
    }
}

int FluxDeckProcessor::noiseReductionDecoder(const State& s) const { return firstDeck(s).decoderType; }
void FluxDeckProcessor::setNoiseReductionDecoder(State& s, int v)
{
    v = clampType(v, 4);
    s.forEachDeck([v](TapeDeck& deck) { deck.setDecoderType(v); });
    s.decoderType = v;
}

int FluxDeckProcessor::flangeMode(const State& s) const { return s.channels.front().flangeMode; }
void FluxDeckProcessor::setFlangeMode(State& s, int v)
{
    v = clampType(v, 2);
    s.TapeEffectState::setFlangeMode(v);
    if (v == TapeChannel::manualMode)
        notifyParameterChanged(ids().relativeDelay);
}

float FluxDeckProcessor::lfoFreq(const State& s) const { return s.lfoFreq; }
void FluxDeckProcessor::setLfoFreq(State& s, float v)
{
    // Synchronised, the value is a note length in beats and may exceed the hertz range.
    const bool synced = syncToHost_.load();
    if (!std::isfinite(v) || v <= 0.0f || (!synced && !clampToRange(ids().lfoFreq, v)))
        return;
    s.setLfoFrequency(v, synced, hostTempo_.load());
}

float FluxDeckProcessor::lfoPhase(const State& s) const { return firstDeck(s).LFOPhase; }
void FluxDeckProcessor::setLfoPhase(State& s, float v)
{
    if (clampToRange(ids().lfoPhase, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.LFOPhase = v; });
}

float FluxDeckProcessor::lfoShape(const State& s) const { return firstDeck(s).LFOShape; }
void FluxDeckProcessor::setLfoShape(State& s, float v)
{
    if (clampToRange(ids().lfoShape, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.LFOShape = v; });
}

float FluxDeckProcessor::lfoSymmetry(const State& s) const { return firstDeck(s).LFOSymmetry; }
void FluxDeckProcessor::setLfoSymmetry(State& s, float v)
{
    if (clampToRange(ids().lfoSymmetry, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.LFOSymmetry = v; });
}

float FluxDeckProcessor::lfoSwing(const State& s) const { return firstDeck(s).LFOSwing; }
void FluxDeckProcessor::setLfoSwing(State& s, float v)
{
    if (clampToRange(ids().lfoSwing, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.LFOSwing = v; });
}

bool FluxDeckProcessor::applyRecordHead(const State& s) const { return firstDeck(s).recordHead.on != 0; }
void FluxDeckProcessor::setApplyRecordHead(State& s, bool v)
{
    s.forEachDeck([v](TapeDeck& deck) { deck.setRecordHeadOn(v); });
}

bool FluxDeckProcessor::applyTransport(const State& s) const { return firstDeck(s).transport.transportOn != 0; }
void FluxDeckProcessor::setApplyTransport(State& s, bool v)
{
    s.forEachDeck([v](TapeDeck& deck) { deck.transport.transportOn = v ? 1 : 0; });
}

float FluxDeckProcessor::drive(const State& s) const { return linearToDb(static_cast<float>(firstDeck(s).drive)); }
void FluxDeckProcessor::setDrive(State& s, float v)
{
    if (!clampToRange(ids().drive, v))
        return;
    const float gain = dbToLinear(v);
    s.forEachDeck([gain](TapeDeck& deck) { deck.setDrive(gain); });
}

bool FluxDeckProcessor::noiseSync(const State& s) const { return s.noiseSync; }
void FluxDeckProcessor::setNoiseSync(State& s, bool v) { s.TapeEffectState::setNoiseSync(v); }

float FluxDeckProcessor::mix(const State& s) const { return s.mix; }
void FluxDeckProcessor::setMix(State& s, float v)
{
    if (clampToRange(ids().mix, v))
        s.mix = v;
}

bool FluxDeckProcessor::nrLink(const State& s) const { return s.nrLink; }
void FluxDeckProcessor::setNrLink(State& s, bool v)
{
    s.nrLink = v;
    if (!v)
        return;
    s.decoderType = s.encoderType;
    s.forEachDeck([](TapeDeck& deck) { deck.setDecoderType(deck.encoderType); });
    notifyParameterChanged(ids().noiseReductionDecoder);
}

float FluxDeckProcessor::degradeDepth(const State& s) const
{
    return static_cast<float>(firstDeck(s).demagnetisation.getDepth());
}
void FluxDeckProcessor::setDegradeDepth(State& s, float v)
{
    if (clampToRange(ids().degradeDepth, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.setDegradeDepth(v); });
}

float FluxDeckProcessor::degradeRate(const State& s) const
{
    return static_cast<float>(firstDeck(s).demagnetisation.getRate());
}
void FluxDeckProcessor::setDegradeRate(State& s, float v)
{
    // The section pattern restarts at each deck's own sample position.
    if (clampToRange(ids().degradeRate, v))
        s.forEachDeck([v](TapeDeck& deck) { deck.setDegradeRate(v); });
}

bool FluxDeckProcessor::applyNoiseGate(const State& s) const { return firstDeck(s).recordHead.gateOn != 0; }
void FluxDeckProcessor::setApplyNoiseGate(State& s, bool v)
{
    s.forEachDeck([v](TapeDeck& deck) { deck.setNoiseGateOn(v); });
}

bool FluxDeckProcessor::applyCompander(const State& s) const { return s.compander; }
void FluxDeckProcessor::setApplyCompander(State& s, bool v)
{
    // Off runs the decks without noise reduction but keeps the chosen types for later.
    s.compander = v;
    const int encoder = v ? s.encoderType : 0;
    const int decoder = v ? s.decoderType : 0;
    s.forEachDeck([encoder, decoder](TapeDeck& deck) {
        deck.setEncoderType(encoder);
        deck.setDecoderType(decoder);
    });
    notifyParameterChanged(ids().noiseReductionEncoder);
    notifyParameterChanged(ids().noiseReductionDecoder);
}

bool FluxDeckProcessor::applyFeedbackCompensation(const State& s) const { return firstDeck(s).compensationOn != 0; }
void FluxDeckProcessor::setApplyFeedbackCompensation(State& s, bool v)
{
    s.forEachDeck([v](TapeDeck& deck) { deck.setCompensationOn(v); });
}

bool FluxDeckProcessor::applyLowLatency(const State& s) const { return s.lowLatency; }
void FluxDeckProcessor::setApplyLowLatency(State& s, bool v) { s.setLowLatency(v, s.requestedFlangeDepth); }

float FluxDeckProcessor::outputPad(const State& s) const { return linearToDb(s.outputPad); }
void FluxDeckProcessor::setOutputPad(State& s, float v)
{
    if (clampToRange(ids().outputPad, v))
        s.outputPad = dbToLinear(v);
}

void FluxDeckProcessor::setSyncToHost(bool on)
{
    if (on == syncToHost_.load())
        return;
    syncToHost_.store(on);
    const float tempo = hostTempo_.load();
    for (ElementState* state : {mainState(), secondState()})
    {
        auto* s = dynamic_cast<State*>(state);
        if (s == nullptr || !(s->lfoFreq > 0.0f))
            continue;
        // Keep the musical speed: hertz to beats per cycle and back.
        if (on)
            s->lfoFreq = nearestNoteLengthBelow(tempo / s->lfoFreq * bpmToHz);
        else
            s->lfoFreq = std::clamp(tempo * bpmToHz / s->lfoFreq, 0.01f, 10.0f);
    }
    notifyParameterChanged(ids().lfoFreq);
}
} // namespace oxa
