#pragma once
// Per-block work of a parameter's modulation envelope on the render path: the values
// of each control block from the active connections, and writing one of them into
// the parameter. Audio thread: no allocation beyond scratch arena 1, no lock.

#include <cstdint>

namespace oxa
{
class Element;
class ElementParamEnvelope;
class ElementState;
class RenderContext;

/** Fills the envelope's per-control-block values for this block from scratch arena 1.
    Returns false when the values move inside the block, so that it must be cut. */
bool runEnvelope(ElementParamEnvelope& envelope, RenderContext& context, uint32_t numSamples, ElementState& state);

/** Writes the envelope's value of control block `index` into its parameter. */
void applyEnvelopeValue(ElementParamEnvelope& envelope, Element& element, ElementState* state, uint32_t index);
} // namespace oxa
