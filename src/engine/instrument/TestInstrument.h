#pragma once
// The one-voice instrument the standalone application plays the effect with: a
// Program, "Layer 0", a Keygroup with a sawtooth and an amplitude envelope.

#include <memory>

namespace oxa
{
class Engine;
class Program;

namespace TestInstrument
{
/** Makes the instrument's classes known to the element factory, so that a saved
    standalone state brings the instrument back. Safe to call again. */
void registerTypes();

/** Builds the instrument and appends it to the engine's render order: call it before
    adding the effect, which then processes what the instrument plays. */
std::shared_ptr<Program> addTo(Engine& engine);
} // namespace TestInstrument
} // namespace oxa
