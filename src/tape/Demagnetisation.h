#pragma once

#include "tape/StageRandom.h"

#include <cstdint>

namespace oxa
{

// Dropouts of worn tape: sections of smooth random gain dips separated by random gaps.
// A section and a gap each last 2 to 9 segments of 1 / rate seconds; within a section
// the dip moves between random depths along a smoothstep and returns to none at its end.
class Demagnetisation
{
public:
    static constexpr uint32_t seedA = 16807u;
    static constexpr uint32_t seedB = 282475249u;

    // Stores the sample rate and starts over as at reset.
    void prepare (double sampleRate) noexcept;

    // Seeds the generator and opens a one-segment section at sample 0.
    void reset() noexcept;

    // 0 leaves the signal untouched, 1 lets a full dip reach silence. Values outside
    // 0..1 are taken as they are (the gain is limited instead); NaN and infinity are refused.
    void setDepth (double depth) noexcept;

    // Rate in hertz; restarts the section pattern at the deck's current sample with a
    // single segment. Refused (false) unless positive and finite.
    bool setRate (double rate, uint64_t currentSample) noexcept;

    double getDepth() const noexcept { return degradeDepth; }
    double getRate() const noexcept { return degradeRate; }
    uint64_t getSectionStart() const noexcept { return sectionStart; }
    uint64_t getSectionLength() const noexcept { return sectionLength; }

    // Gain for the tape at sampleIndex, in 0..1. Called once per sample with increasing
    // indices; the random sequence advances whatever the depth.
    double gainAt (uint64_t sampleIndex) noexcept;

    // How many samples from sampleIndex on gainAt() would give exactly 1 and change
    // nothing but its own look-up cache: at depth 0, up to the next section or segment
    // start, where it draws. 0 when it must be called at sampleIndex. A block loop skips
    // those calls.
    uint64_t unitGainSamplesFrom (uint64_t sampleIndex) const noexcept;

private:
    uint64_t samplesPerSegment() const noexcept;
    void beginSegment (uint64_t sampleIndex, uint64_t segmentLength) noexcept;
    // The first sample at or after s (s inside the section) where a segment begins,
    // without a 64-bit division per sample.
    uint64_t nextSegmentStart (uint64_t s, uint64_t segmentLength) noexcept;
    // True when the curve's coefficients cannot make the cubic overflow.
    bool boundedCurve() const noexcept;

    StageRandom degradePair;
    double degradePrevious = 0.0;
    double degradeNext = 0.0;
    double curve[4] {}; // c0 + c1 t + c2 t^2 + c3 t^3, t in seconds
    double degradeDepth = 0.0;
    double degradeRate = 10.0;
    uint64_t sectionStart = 0;
    uint64_t sectionLength = 4800;
    double sampleRate = 48000.0;
    double samplePeriod = 1.0 / 48000.0;
    bool curveStaysFinite = true;
    // samplesPerSegment() for the current rate: two divisions a sample saved.
    uint64_t segmentSamples = 4800;
    // What nextSegmentStart() found, and for which section and segment length.
    uint64_t segmentBoundary = 0;
    uint64_t boundarySection = ~uint64_t {0};
    uint64_t boundaryStep = 0;
};

} // namespace oxa
