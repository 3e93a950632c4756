#pragma once
// What it takes to join a control signal source to one parameter of an element.

#include "element/String.h"

#include <cstdint>

namespace oxa
{
struct ConnectionSpec
{
    /** Path of the source from the target element, or a "@VoiceParam ..." name. */
    String source;
    /** Id of the target parameter; it must be modulatable. */
    uint32_t parameter = 0;
    /** Instance name; empty gives the next free "SignalConnection N". */
    String name;
    float ratio = 1.0f;
    /** False adds the connection with "Bypass" set. */
    bool enabled = true;
    /** 0 adds to the parameter's value; above 0 sets the value outright. */
    int mode = 0;
    bool inverted = false;
};
} // namespace oxa
