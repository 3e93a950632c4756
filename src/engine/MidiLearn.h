#pragma once
// Binding one parameter to MIDI controllers, for the window: the parameter is named by
// its element's path and its id, and everything goes through the engine proxy, so a
// binding outlives nothing it should not (a state load takes it along with the tree).
// Message thread only.

#include "element/String.h"

#include <juce_events/juce_events.h>

#include <cstdint>
#include <functional>

namespace oxa
{
class Element;
class EngineProxy;
class ElementParamEnvelope;

class MidiLearn
{
public:
    MidiLearn(EngineProxy& proxy, const String& elementPath, uint32_t parameterId);

    /** Whether the parameter exists now and takes connections. */
    bool canBind() const;
    /** The controller of the first MIDI connection to the parameter, or -1. */
    int boundController() const;
    /** Whether any connection from a MIDI source ("@MIDI...") reaches the parameter. */
    bool hasMidiConnection() const;

    /** Connects controller `number` (0..127) with source "@MIDI CC <number>". The
        controller sets the parameter outright over its range; with `asModulation` it
        moves the parameter around its own value instead. Any other MIDI connection to
        the parameter goes first. False when the parameter cannot take it. */
    bool bind(int number, bool asModulation = false);
    /** Removes every connection from a MIDI source to the parameter; the count removed. */
    int unbind();

private:
    Element* element() const;
    ElementParamEnvelope* envelope() const;

    EngineProxy& proxy_;
    String path_;
    uint32_t parameterId_;
};

/** Listens for the next controller a performer moves and binds it to the parameter.
    Polls the engine's count of controller messages, so the audio thread only counts. */
class NextControllerLearner : private juce::Timer
{
public:
    using Learned = std::function<void(int controller)>;

    NextControllerLearner(EngineProxy& proxy, const String& elementPath, uint32_t parameterId, Learned learned = {});
    ~NextControllerLearner() override;

    /** Controllers that arrived before this call are not taken. */
    void start();
    void cancel();
    bool isListening() const { return isTimerRunning(); }

    /** One look at the engine: binds a controller that arrived since start(). */
    void poll();

private:
    void timerCallback() override { poll(); }

    EngineProxy& proxy_;
    MidiLearn binding_;
    Learned learned_;
    uint32_t seenMessages_ = 0;
};
} // namespace oxa
