#include "tape/Demagnetisation.h"

#include <algorithm>
#include <cmath>

namespace oxa
{

namespace
{
    // 2 to 9 segments (10 at the very top of the draw's range).
    uint64_t segmentCount (float draw) noexcept
    {
        const int count = static_cast<int> (draw * 10.0f + 5.0f);
        return static_cast<uint64_t> (std::max (count, 2));
    }
} // namespace

void Demagnetisation::prepare (double newSampleRate) noexcept
{
    if (std::isfinite (newSampleRate) && newSampleRate > 0.0)
        sampleRate = newSampleRate;
    samplePeriod = 1.0 / sampleRate;
    reset();
}

void Demagnetisation::reset() noexcept
{
    degradePair.seed (seedA, seedB);
    degradePrevious = degradeNext = 0.0;
    std::fill (curve, curve + 4, 0.0);
    curveStaysFinite = boundedCurve();
    sectionStart = 0;
    sectionLength = static_cast<uint64_t> (sampleRate / degradeRate);
    segmentSamples = samplesPerSegment();
}

void Demagnetisation::setDepth (double depth) noexcept
{
    if (std::isfinite (depth))
        degradeDepth = depth;
}

bool Demagnetisation::setRate (double rate, uint64_t currentSample) noexcept
{
    if (! (std::isfinite (rate) && rate > 0.0))
        return false;
    degradeRate = rate;
    sectionStart = currentSample;
    sectionLength = static_cast<uint64_t> (sampleRate / rate);
    segmentSamples = samplesPerSegment();
    return true;
}

uint64_t Demagnetisation::samplesPerSegment() const noexcept
{
    const double dt = 1.0 / sampleRate;
    const double samples = 1.0 / (dt * degradeRate);
    // A rate above the sample rate would give empty segments.
    return samples >= 1.0 ? static_cast<uint64_t> (samples) : 1u;
}

void Demagnetisation::beginSegment (uint64_t sampleIndex, uint64_t segmentLength) noexcept
{
    degradePrevious = degradeNext;
    degradeNext = static_cast<double> (degradePair.next()) + 0.5;
    if (sampleIndex == sectionStart + sectionLength - segmentLength)
        degradeNext = 0.0; // a section ends without a dip

    // The smoothstep between the endpoints, expanded into a cubic in absolute time.
    const double dt = 1.0 / sampleRate;
    const double t0 = static_cast<double> (sampleIndex) * dt;
    const double d = static_cast<double> (segmentLength) * dt;
    const double r = degradeRate;
    const double q = (degradeNext - degradePrevious) * r * r * r;
    curve[3] = -2.0 * q;
    curve[2] = 3.0 * q * (2.0 * t0 + d);
    curve[1] = -6.0 * q * (d + t0) * t0;
    curve[0] = degradePrevious + q * (3.0 * d + 2.0 * t0) * t0 * t0;
    curveStaysFinite = boundedCurve();
}

bool Demagnetisation::boundedCurve() const noexcept
{
    // t stays below 2^64 / sampleRate seconds; with coefficients below 1e200 and a sample
    // rate of at least 1 Hz the cubic cannot overflow.
    bool bounded = sampleRate >= 1.0;
    for (double c : curve)
        bounded = bounded && std::abs (c) <= 1e200;
    return bounded;
}

uint64_t Demagnetisation::nextSegmentStart (uint64_t s, uint64_t segmentLength) noexcept
{
    // Samples come one by one, so the boundary found last time holds while the section
    // and the segment length stay and s has not passed it or gone back more than a
    // segment; anything else (a new section, a setter, a jump) finds it afresh.
    const bool stale = boundarySection != sectionStart || boundaryStep != segmentLength || s > segmentBoundary
                       || segmentBoundary - s >= segmentLength;
    if (stale)
    {
        const uint64_t past = (s - sectionStart) % segmentLength;
        segmentBoundary = past == 0 ? s : s + (segmentLength - past);
        boundarySection = sectionStart;
        boundaryStep = segmentLength;
    }
    return segmentBoundary;
}

uint64_t Demagnetisation::unitGainSamplesFrom (uint64_t s) const noexcept
{
    if (degradeDepth != 0.0 || ! curveStaysFinite)
        return 0;
    const uint64_t sectionEnd = sectionStart + sectionLength;
    if (s >= sectionEnd)
        return 0; // a new section is drawn here (or the pattern was moved: let gainAt see it)
    if (s < sectionStart)
        return sectionStart - s; // in the gap: nothing happens until the section opens
    const uint64_t past = (s - sectionStart) % segmentSamples;
    if (past == 0)
        return 0;
    return std::min (segmentSamples - past, sectionEnd - s);
}

double Demagnetisation::gainAt (uint64_t s) noexcept
{
    const uint64_t segmentLength = segmentSamples;
    if (s == sectionStart + sectionLength)
    {
        sectionStart += segmentCount (degradePair.next()) * segmentLength + sectionLength;
        sectionLength = segmentCount (degradePair.next()) * segmentLength;
    }

    double v = 0.0;
    if (s >= sectionStart && s < sectionStart + sectionLength)
    {
        if (s == nextSegmentStart (s, segmentLength))
        {
            beginSegment (s, segmentLength);
            segmentBoundary = s + segmentLength;
        }

        // At depth 0 any finite dip gives a gain of exactly 1, so a curve known to stay
        // finite need not be evaluated.
        if (degradeDepth != 0.0 || ! curveStaysFinite)
        {
            const double t = static_cast<double> (s) * samplePeriod;
            v = ((curve[3] * t + curve[2]) * t + curve[1]) * t + curve[0];
        }
    }

    return std::clamp (1.0 - v * degradeDepth, 0.0, 1.0);
}

} // namespace oxa
