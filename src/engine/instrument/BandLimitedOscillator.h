#pragma once
// A test-tone oscillator whose steps are band-limited: each jump of the sawtooth or the
// square is smoothed by a two-sample polynomial step residual, so the tone does not
// alias into the audible band at ordinary pitches. Plain data, allocation free.

#include <cstdint>

namespace oxa
{
struct BandLimitedOscillator
{
    enum Waveform : int
    {
        sine = 0,
        sawtooth = 1,
        square = 2
    };

    /** Next sample in -1..1 for a phase increment of `frequency / sampleRate` (below 0.5). */
    float next(int waveform, double increment);
    void reset() { phase = 0.0; }

    double phase = 0.0; // 0..1
};
} // namespace oxa
