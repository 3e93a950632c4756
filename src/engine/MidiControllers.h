#pragma once
// MIDI controllers as the engine names them: the source text of a connection driven by
// a controller ("@MIDI CC 74"), and the texts a person picks a controller by.

#include "element/String.h"

namespace oxa::MidiControllers
{
constexpr int count = 128;

/** The connection source for controller `number`: "@MIDI CC <number>". */
String sourceFor(int number);

/** Whether a connection source is any MIDI source (it begins "@MIDI"). */
bool isMidiSource(const String& source);

/** The controller of a "@MIDI CC <number>" source; -1 for anything else. */
int controllerOfSource(const String& source);

/** The controller's name in the MIDI standard, "Undefined" where it has none. */
const char* standardName(int number);

/** An entry of the list of controllers: "MIDI CC 74 (Brightness)". */
String listEntry(int number);

/** The label of a binding: "MIDI CC 74", or "None" for a number below 0. */
String bindingLabel(int number);

/** Controllers a performer can bind by moving them: not the ones the engine's transport
    listens to (117 to 119), nor the channel mode messages (120 and up). */
bool isLearnable(int number);
} // namespace oxa::MidiControllers
