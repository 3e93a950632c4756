#pragma once

#include "tape/RandomPair.h"

#include <cstdint>

namespace oxa
{

class FourRecordHeads;
struct Lanes;

// The magnetic record head: a first-order nonlinear magnetisation law solved
// implicitly per sample (with an antiderivative step that keeps the cubic's
// aliasing low), fed with gated pink noise.
struct RecordHead
{
    double sampleRate = 0.0;
    double input = 0.0;         // H of the last sample, noise included
    double magnetisation = 0.0; // M
    double step = 0.0;          // last increment of M; Newton's starting point
    double a = 1.0;             // hardness: 5 - 4 * hardness control
    double k = 100.0;           // resistance: 100 * 10^(3 * resistance control)
    RandomPair random;
    float noiseRows[5] = {};
    float noiseSum = 0.0f;
    std::uint32_t noiseCounter = 1;
    double noiseLevel = 0.0001;
    std::uint8_t on = 1;
    std::uint8_t gateOn = 1;
    double gateTime = 0.001;
    double gateCoefficient = 0.0;
    double gateEnvelope = 0.0;

    // Sets the rate and starts the noise from the current seeds.
    void prepare(double newSampleRate);
    // Integrator and gate follower back to rest.
    void reset() noexcept;
    // New noise seeds, and the pink noise filter from rest.
    void restartNoise(std::uint32_t first, std::uint32_t second) noexcept;

    // Switching either flag starts the model from rest.
    void setOn(bool enabled) noexcept;
    void setGateOn(bool enabled) noexcept;

    double process(double h) noexcept;

    // Carries the head's memory over to an input factor times as large. Below saturation
    // the head is linear, and the scaled memory is exactly what it would hold had it been
    // driven so all along; a saturated head settles within milliseconds from any start.
    // (Balancing the scaled field instead leaves a head that falls out of saturation with
    // far too much magnetisation, which then drains over a tenth of a second.)
    void scaleMemory(double factor) noexcept
    {
        magnetisation *= factor;
        step *= factor;
    }

    // Two heads (the decks of a channel) side by side: the same arithmetic as
    // process() on each, with the two Newton solves run in one loop so that
    // the processor overlaps them. hFirst and hSecond are replaced by the outputs.
    static void processPair(RecordHead& first, RecordHead& second, double& hFirst, double& hSecond) noexcept;
    // processPair with the two solves in the two lanes of one register: the same result
    // bit for bit, in about half the instructions.
    static void processPairInLanes(RecordHead& first, RecordHead& second, double& hFirst, double& hSecond) noexcept;
    // Four heads (the decks of a stereo pair) as the pairs (0, 1) and (2, 3) of
    // processPair, all solved in one loop; h holds the four inputs and receives the outputs.
    static void processFourInLanes(RecordHead* const* heads, double* h) noexcept;
    // The same with the heads' hiss, gates and per-block constants held in lanes for the
    // block (heads gathered into four).
    static void processFourInLanes(FourRecordHeads& four, RecordHead* const* heads, double* h) noexcept;

    // The small-signal slope of the anhysteretic law at the origin.
    static double smallSignalSlope(double hardness) noexcept { return hardness - 0.855722502; }

    // Magnitude of the head's answer to a small sine: a first-order high-pass
    // s / (s + k g) with g the slope above, so its corner lies at k g / 2 pi.
    static double smallSignalGain(double frequency, double hardness, double resistance) noexcept;

    // Gain the deck divides out after the head, for a drive (linear) and the
    // head's coefficients.
    static double makeupGain(double drive, double hardness, double resistance) noexcept;

    float nextNoise() noexcept;

private:
    friend class FourRecordHeads;
    // H plus gated noise; stored in input.
    double withNoise(double h) noexcept;
    // Moves the gate's follower on by one sample and gives the argument of its tanh.
    float gateOpening(double h) noexcept;
    // H plus noise already gated; stored in input.
    double withGatedNoise(double h, float gatedNoise) noexcept;
    // One Newton pass from x towards H; returns the new x, sets correction.
    double newtonPass(double drivenH, double m0, double f0, double fsOverK, double x,
                      double& correction) const noexcept;
    // Commits the step and applies the saturation law.
    double commit(double x, double m0, double fsOverK) noexcept;
    template <int Pairs>
    static void solvePairsInLanes(RecordHead* const* heads, double* h) noexcept;
    // Newton's solve and commit for pairs of heads driven by driven, each pair in lanes.
    template <int Pairs>
    static void solveDrivenInLanes(RecordHead* const* heads, const Lanes* driven, const Lanes* a,
                                   const Lanes* fsOverK, double* h) noexcept;
};

} // namespace oxa
