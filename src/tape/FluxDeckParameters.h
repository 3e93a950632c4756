#pragma once
// The effect's parameter table: registered once per process, in table order, so
// that the ids come out stable within one build.

#include <array>
#include <cstdint>

namespace oxa
{
struct FluxDeckParameterIds
{
    uint32_t fade, maxRelativeDelay, relativeDelay, delay, phaseInvert, magneticHardness, hysteresis, noiseGain,
        spacing, thickness, azimuth, trackWidthRatio, speed, wowMod, wowRate, flutterMod, flutterRate, noiseMod,
        noiseRate, feedback, inputGain, outputGain, applyPlayheadFilter, noiseReductionEncoder,
        noiseReductionDecoder, flangeMode, lfoFreq, lfoPhase, lfoShape, lfoSymmetry, lfoSwing, applyRecordHead,
        applyTransport, drive, noiseSync, mix, nrLink, degradeDepth, degradeRate, applyNoiseGate, applyCompander,
        applyFeedbackCompensation, applyLowLatency, outputPad;

    static constexpr std::size_t rowCount = 44;

    /** The host-facing order of the rows. */
    std::array<uint32_t, rowCount> exposedOrder;
};

namespace FluxDeckParameters
{
/** Builds the table on first use. */
const FluxDeckParameterIds& ids();

/** Labels of the list parameters; null outside the list. */
const char* noiseReductionLabel(int type);
const char* flangeModeLabel(int mode);
} // namespace FluxDeckParameters
} // namespace oxa
