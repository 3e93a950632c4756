#include "engine/Engine.h"
#include "element/ParameterMapper.h"
#include "element/ParameterRegistry.h"

#include <algorithm>
#include <cmath>
#include <tinyxml2.h>

namespace oxa
{
// ---- MidiState --------------------------------------------------------------------

MidiState::MidiState()
{
    for (size_t i = 0; i < curve.size(); ++i)
        curve[i] = (float) i / 127.0f;
    controllers.fill(-1);
    blockStart_.fill(-1);
}

void MidiState::beginBlock()
{
    blockStart_ = controllers;
    changeCount_ = 0;
}

void MidiState::handle(const EngineEvent& e)
{
    switch (e.type)
    {
        case EventType::noteOn:
            if (e.data1 < 128)
                notes[e.data1] = { (uint8_t) e.data2, true };
            break;
        case EventType::noteOff:
            if (e.data1 < 128)
                notes[e.data1].on = false;
            break;
        case EventType::controller:
            if (e.data1 < 128)
            {
                const auto value = (uint8_t) std::min<uint32_t>(e.data2, 127);
                controllers[e.data1] = value;
                if (changeCount_ < changes_.size())
                    changes_[changeCount_++] = { e.sampleOffset, (uint8_t) e.data1, value };
                lastController_.store((int) e.data1, std::memory_order_relaxed);
                controllerMessages_.fetch_add(1, std::memory_order_release);
            }
            break;
        default:
            break;
    }
}

int MidiState::controllerAt(uint32_t controller, uint32_t index) const
{
    if (controller >= controllerCount)
        return -1;
    const uint64_t at = (uint64_t) index * ProcessingElement::controlBlockSize;
    int value = blockStart_[controller];
    for (uint32_t i = 0; i < changeCount_ && changes_[i].offset <= at; ++i)
        if (changes_[i].controller == controller)
            value = changes_[i].value;
    return value;
}

// ---- Engine -----------------------------------------------------------------------

const Engine::Ids& Engine::ids()
{
    static const Ids made = [] {
        (void) ProcessingElement::syncToHostId();
        auto& registry = ParameterRegistry::instance();
        Ids ids {};
        ids.globalTune = registry.registerFloat(ParameterDescription<float>(
            "GlobalTune", 440.0f, 391.99542236328125f, 493.88330078125f, 7, 0,
            new LogMapper(391.99542236328125f, 493.88330078125f), false, true));
        ids.tempo = registry.registerFloat(ParameterDescription<float>("Tempo", 120.0f, 10.0f, 400.0f, 0, 0, nullptr,
                                                                       false, true));
        ids.playing = registry.registerBool(ParameterDescription<bool>("Playing", false, false, true));
        ids.recording = registry.registerBool(ParameterDescription<bool>("Recording", false, false, true));
        ids.autoPlay = registry.registerBool(ParameterDescription<bool>("AutoPlay", true, false, true));
        ids.displayName = registry.registerString(ParameterDescription<String>("DisplayName", String("Default"),
                                                                               false, true));
        ids.meterNumerator = registry.registerInt(ParameterDescription<int>("MeterNumerator", 4, 1, 0, 0, false, true));
        ids.meterDenominator = registry.registerInt(ParameterDescription<int>("MeterDenominator", 4, 1, 0, 0, false,
                                                                              true));
        return ids;
    }();
    return made;
}

Engine::Engine(const String& name) : ProcessingElement(String("Engine"), String("Engine"))
{
    (void) name; // the root always calls itself "Engine"
    const Ids& id = ids();
    addParameters(
        { new ParameterInfo<float>(id.globalTune, this, &Engine::globalTune, &Engine::setGlobalTune),
          new ParameterInfo<float>(id.tempo, this, &Engine::tempoParameter, &Engine::setTempoParameter) },
        { new ParameterInfo<int>(id.meterNumerator, this, &Engine::meterNumeratorParameter, &Engine::setMeterNumerator),
          new ParameterInfo<int>(id.meterDenominator, this, &Engine::meterDenominatorParameter,
                                 &Engine::setMeterDenominator) },
        { new ParameterInfo<bool>(id.playing, this, &Engine::playingParameter, &Engine::setPlaying),
          new ParameterInfo<bool>(id.recording, this, &Engine::recordingParameter, &Engine::setRecording),
          new ParameterInfo<bool>(id.autoPlay, this, &Engine::autoPlayParameter, &Engine::setAutoPlay),
          new ParameterInfo<bool>(syncToHostId(), this, &Engine::syncToHostParameter, &Engine::setSyncToHost) },
        { new ParameterInfo<String>(id.displayName, this, &Engine::displayNameParameter, &Engine::setDisplayName) });
    displayName_ = String("Default Multi");
    setEventRingCapacity(64);
    setBehaviour(receivesEvents, true);
    localEvents_.reserve(1024 + 64);
}

Engine::~Engine() = default;

void Engine::setTempoParameter(float v)
{
    tempoSetByUser_ = v;
    if (!syncToHost_)
        tempo_ = v;
}

void Engine::addElement(const std::shared_ptr<ProcessingElement>& element)
{
    if (!element)
        return;
    owned_.push_back(element);
    children_.push_back(element.get());
    addChild(element);
    if (isPrepared())
    {
        element->prepare(sampleRate(), maxBlockSize());
        element->setBus(0, bus(0));
    }
}

void Engine::removeAllElements()
{
    std::lock_guard<std::recursive_mutex> guard(engineLock_);
    // only the rendered elements: the parameter envelopes are children as well
    for (auto it = children_.rbegin(); it != children_.rend(); ++it)
        removeChild(*it);
    children_.clear();
    owned_.clear();
}

void Engine::prepareToRender()
{
    ProcessingElement::prepareToRender();
}

void Engine::setBus(uint32_t index, AudioBus* newBus)
{
    ProcessingElement::setBus(index, newBus);
    if (index == 0)
        for (ProcessingElement* child : children_)
            child->setBus(0, newBus);
}

void Engine::processEvents(RenderContext& context, EventList& events, uint32_t numSamples)
{
    std::unique_lock<std::recursive_mutex> lock(engineLock_, std::try_to_lock);
    if (lock.owns_lock())
    {
        ProcessingElement::processEvents(context, events, numSamples);
        return;
    }
    if (!isBypassed())
        for (const EngineEvent& e : events)
            pushToRing(e);
}

void Engine::render(RenderContext& context, uint32_t numSamples)
{
    std::unique_lock<std::recursive_mutex> lock(engineLock_, std::try_to_lock);
    if (lock.owns_lock())
        ProcessingElement::render(context, numSamples);
}

void Engine::renderAudio(RenderContext& context, uint32_t numSamples, ElementState*)
{
    for (ProcessingElement* child : children_)
        child->render(context, numSamples);
}

void Engine::announce(uint32_t id)
{
    publishParameter(id);
    notifyParameterChanged(id);
}

void Engine::armPreCount(const RenderContext& context)
{
    const double spb = samplesPerBeat(context);
    preCountActive_ = true;
    preCountSamples_ = (int32_t) (spb * 3.95);
    position_ = (double) (~(int64_t) (spb * 4.0)) / spb;
}

void Engine::emit(uint32_t type, const EngineEvent& at)
{
    EngineEvent e;
    e.type = type;
    e.sampleOffset = at.sampleOffset;
    e.port = at.port;
    e.channel = at.channel;
    localEvents_.push_back(e);
}

void Engine::handleEvents(RenderContext& context, EventList& events, uint32_t numSamples)
{
    std::unique_lock<std::recursive_mutex> lock(engineLock_, std::try_to_lock);
    if (!lock.owns_lock())
        return; // the clock stands still for this block

    ProcessingElement::handleEvents(context, events, numSamples);
    const Ids& id = ids();
    localEvents_.clear();

    auto setPlayingAndSignal = [&](bool on) {
        if (playing_ != on)
        {
            playing_ = on;
            announce(id.playing);
        }
    };

    // 1. Transport commands, from the host's own events or MIDI controllers 117-119.
    for (const EngineEvent& e : events)
    {
        const double offsetBeats = (double) e.sampleOffset / samplesPerBeat(context);
        switch (e.type)
        {
            case EventType::transportStart:
                position_ = stopPosition_ - offsetBeats;
                setPlayingAndSignal(true);
                break;
            case EventType::transportStop:
                preCountActive_ = false;
                stopPosition_ = position_ + offsetBeats;
                if (playing_)
                {
                    setPlayingAndSignal(false);
                    if (recording_)
                    {
                        recording_ = false;
                        announce(id.recording);
                    }
                }
                break;
            case EventType::transportRecord:
                if (!playing_)
                    armPreCount(context);
                break;
            case EventType::transportLocate:
                stopPosition_ = (double) e.position;
                position_ = stopPosition_ - offsetBeats;
                context.transport.flags = 1;
                break;
            case EventType::controller:
                // Transport buttons act when pressed (64 and up): their release, and a VST3
                // host resending its controller stand-ins at 0, leave the transport alone.
                if (e.data2 < 64)
                    break;
                if (e.data1 == 117)
                {
                    emit(EventType::transportStop, e);
                    stopPosition_ = 0;
                    position_ = 0 - offsetBeats;
                    context.transport.flags = 1;
                    setPlayingAndSignal(false);
                    if (recording_)
                    {
                        recording_ = false;
                        emit(EventType::transportRecordOff, e);
                        announce(id.recording);
                    }
                }
                else if (e.data1 == 118)
                {
                    if (playing_ && !recording_)
                    {
                        emit(EventType::transportStop, e);
                        stopPosition_ = position_ + offsetBeats;
                        setPlayingAndSignal(false);
                    }
                    else if (playing_ && recording_)
                    {
                        emit(EventType::transportRecordOff, e);
                        recording_ = false;
                        announce(id.recording);
                    }
                    else
                    {
                        emit(EventType::transportStart, e);
                        position_ = stopPosition_ - offsetBeats;
                        setPlayingAndSignal(true);
                    }
                }
                else if (e.data1 == 119)
                {
                    if (recording_)
                        emit(EventType::transportRecordOff, e);
                    else
                    {
                        emit(EventType::transportRecord, e);
                        if (!playing_)
                            armPreCount(context);
                    }
                    recording_ = !recording_;
                    announce(id.recording);
                }
                break;
            default:
                break;
        }
    }

    // 2. Pre-count before recording.
    if (preCountActive_ && !playing_)
    {
        if (preCountSamples_ < (int32_t) numSamples)
        {
            preCountActive_ = false;
            EngineEvent at;
            at.sampleOffset = (uint64_t) std::max<int32_t>(preCountSamples_, 0);
            emit(EventType::transportStart, at);
            setPlayingAndSignal(true);
        }
        preCountSamples_ -= (int32_t) numSamples;
    }
    else
        preCountActive_ = false;

    // 3. Tuning.
    context.setTuning(globalTune_);

    // 4. Tempo and meter follow the host. The denominator is compared against the stored
    //    numerator: long-standing behaviour that saved projects rely on.
    TransportInfo& t = context.transport;
    if (syncToHost_)
    {
        if ((double) t.tempo != tempo_)
        {
            tempo_ = t.tempo;
            announce(id.tempo);
        }
        if (meterNumerator_ != t.numerator)
        {
            meterNumerator_ = t.numerator;
            announce(id.meterNumerator);
        }
        if (t.denominator != meterNumerator_)
        {
            meterDenominator_ = t.denominator;
            announce(id.meterDenominator);
        }
    }
    else
        t.tempo = (float) tempo_;

    // 5./6. With the host stopped or unknown the internal clock is the context's clock.
    const int32_t hostPlaying = t.playing;
    if (t.playing != -1)
        t.stoppedPosition = t.position;
    if (t.playing != 1)
    {
        const double spb = samplesPerBeat(context);
        t.position = position_;
        const double bar = (double) meterNumerator_ / (double) meterDenominator_ * 4.0;
        t.positionInBar = std::fmod(position_, bar);
        const double x = std::fmod(bar - t.positionInBar, bar);
        t.samplesToNextBar = spb * x;
        t.samplesToNextBeat = (x - std::floor(x)) * spb;
        if (hostPlaying == -1)
            t.stoppedPosition = playing_ ? position_ : stopPosition_;
    }

    // 7. A start or stop of the host moves the engine when it follows the host.
    const bool hostIsPlaying = hostPlaying == 1;
    const bool hostChange = autoPlay_ && hostIsPlaying != hostWasPlaying_;

    // 8.
    t.playing = playing_ ? 1 : 0;

    // 9.
    midiState_.beginBlock();
    for (const EngineEvent& e : events)
        midiState_.handle(e);

    // 10./11. Hand the events on.
    if (localEvents_.empty() && !hostChange)
        ProcessingElement::forwardEventsToChildren(context, events, numSamples);
    else
    {
        for (const EngineEvent& e : events)
            localEvents_.push_back(e);
        if (hostChange)
        {
            EngineEvent at;
            if (hostWasPlaying_)
            {
                emit(EventType::transportStop, at);
                playing_ = false;
            }
            else
            {
                emit(EventType::transportStart, at);
                playing_ = true;
            }
            announce(id.playing);
            t.playing = playing_ ? 1 : 0;
        }
        localEvents_.sortByOffset();
        ProcessingElement::forwardEventsToChildren(context, localEvents_, numSamples);
    }

    // 12. The clock runs on also when stopped; only a start or a locate puts it back.
    hostWasPlaying_ = hostIsPlaying;
    position_ += (double) numSamples / samplesPerBeat(context);
}

void Engine::reportError(std::unique_ptr<Error> error)
{
    if (!error)
        return;
    const std::string relative = error->sourcePath.str();
    if (relative.empty() || relative[0] != '/')
        error->sourcePath = String("/" + relative);
    if (errorSignal.hasSlots())
    {
        // Listeners copy what they need; the engine owns the record.
        errorSignal(error.get());
        return;
    }
    errors.push_back(std::move(error));
    while (errors.size() > maxKeptErrors)
        errors.pop_front();
}

void Engine::drainErrors()
{
    while (!errors.empty() && errorSignal.hasSlots())
    {
        std::unique_ptr<Error> error = std::move(errors.front());
        errors.pop_front();
        errorSignal(error.get());
    }
}
} // namespace oxa
