#pragma once

namespace oxa
{

// The flange LFO: a triangle that shape bends towards a square (shape > 0)
// or a spike (shape < 0), with symmetry and swing warps. t is in cycles,
// phase in -1..1. The result lies in about -0.99..0.99. The editor draws the
// same function.
float lfoWaveform(float t, float phase, float shape, float symmetry, float swing) noexcept;

// lfoWaveform with its shape exponent worked out once, for per-sample use.
struct LfoWaveform
{
    float phase = 0.0f;
    float exponent = 1.0f;
    float symmetry = 0.0f;
    float swing = 0.0f;

    LfoWaveform(float phase, float shape, float symmetry, float swing) noexcept;

    float operator()(float t) const noexcept;

    static float shapeExponent(float shape) noexcept;
    // The factor that takes the waveform's peak at zero phase to 1.
    static float normaliser(float shape) noexcept;
};

// Manual mode: the share of the second deck for a flange position 0..1, so
// that the flange fades in and out at the ends of its travel.
double manualCrossfade(double flangePhase, double fade) noexcept;

} // namespace oxa
