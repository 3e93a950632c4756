#include "tape/TapeDeck.h"

#include <algorithm>
#include <cmath>

namespace oxa
{
namespace
{
void blank(std::vector<double>& ring, std::uint64_t length)
{
    ring.assign(static_cast<std::size_t>(length), 0.0);
    ring.shrink_to_fit();
}
} // namespace

void TapeDeck::prepare(double newSampleRate, TapeStorage storage)
{
    recordHead.prepare(newSampleRate);
    for (TapeHead& head : heads)
        head.prepare(newSampleRate * 0.03125);
    playbackFilters.prepare(newSampleRate);
    preEmphasis.prepare(newSampleRate);
    slidingBand.prepare(newSampleRate);
    threeBand.prepare(newSampleRate);
    transport.prepare(newSampleRate);
    demagnetisation.prepare(newSampleRate);
    sampleRate = newSampleRate;
    updateCompensation();

    // Two seconds of tape.
    ringLength = storage == TapeStorage::allocated ? static_cast<std::uint64_t>(2.0 * newSampleRate) : 0;
    blank(inputRing, ringLength);
    blank(outputRing, ringLength);
    blank(spareRing, ringLength);
    blank(speedHistory, ringLength / 32);
    sampleCounter = 0; // the tape is blank already: reset need not clear it again
    reset();
}

TapeDeck TapeDeck::copyWithoutTape()
{
    std::vector<double> input = std::move(inputRing), output = std::move(outputRing), spare = std::move(spareRing),
                        history = std::move(speedHistory);
    inputRing.clear();
    outputRing.clear();
    spareRing.clear();
    speedHistory.clear();
    TapeDeck copy(*this);
    inputRing = std::move(input);
    outputRing = std::move(output);
    spareRing = std::move(spare);
    speedHistory = std::move(history);
    return copy;
}

void TapeDeck::reset() noexcept
{
    recordHead.reset();
    playbackFilters.reset();
    preEmphasis.reset();
    slidingBand.reset();
    threeBand.reset();
    for (TapeHead& head : heads)
        head.reset();
    // Only a render writes the tape, and every render moves the sample counter: a deck
    // still at sample 0 has blank tape, and clearing megabytes again would only cost time.
    if (sampleCounter != 0)
    {
        std::fill(inputRing.begin(), inputRing.end(), 0.0);
        std::fill(outputRing.begin(), outputRing.end(), 0.0);
        std::fill(spareRing.begin(), spareRing.end(), 0.0);
        std::fill(speedHistory.begin(), speedHistory.end(), 0.0);
    }
    sampleCounter = 0;
    speedGlideTicks = speedGlidePosition = 0; // the heads start at their lengths
    transport.restart();
    // A replay starts the sweep where the last one started and at full level.
    lfoPhaseAccumulator = 0.0f;
    jumpToTargets();
    demagnetisation.reset();
}

void TapeDeck::followTargets() noexcept
{
    const auto makeup = static_cast<float>(makeupTarget);
    const auto length = static_cast<std::int32_t>(sampleRate * 0.1);
    if (drive != appliedDrive && !driveHandover.isRunning() && length > 0)
        startDriveHandover();
    else if (makeup != makeupRamp.to && !driveHandover.isRunning())
        makeupRamp.rampTo(makeup, length);
    const auto gain = static_cast<float>(inputGain);
    if (gain != inputGainRamp.to)
        inputGainRamp.rampTo(gain, static_cast<std::int32_t>(sampleRate * gainGlideSeconds));
}

void TapeDeck::startDriveHandover() noexcept
{
    outgoing.recordHead = recordHead;
    outgoing.preEmphasis = preEmphasis;
    outgoing.slidingBand = slidingBand;
    outgoing.threeBand = threeBand;
    outgoing.playbackFilters = playbackFilters;
    outgoing.drive = appliedDrive;
    outgoing.makeup = makeupRamp.value();
    // The new path starts from the old one's memory carried over to the new drive, so it
    // has less to forget while it warms up.
    if (appliedDrive > 0.0 && drive > 0.0)
        recordHead.scaleMemory(drive / appliedDrive);
    appliedDrive = drive;
    makeupRamp.set(static_cast<float>(makeupTarget));
    // The crossfade judges how alike the two paths are while the new one warms up.
    outgoing.crossfade.start(sampleRate);
    driveHandover.start(static_cast<std::int32_t>(sampleRate * driveWarmUpFor(outgoing.drive, drive)),
                        static_cast<std::int32_t>(sampleRate * driveFadeSeconds));
}

double TapeDeck::driveWarmUpFor(double from, double to) noexcept
{
    if (!(from > 0.0) || !(to > 0.0))
        return driveWarmUpSeconds;
    const double stepDb = std::fabs(20.0 * std::log10(to / from));
    if (!(stepDb < fullWarmUpStepDb))
        return driveWarmUpSeconds; // a NaN step too
    return std::max(shortestWarmUpSeconds, driveWarmUpSeconds * stepDb / fullWarmUpStepDb);
}

void TapeDeck::jumpToTargets() noexcept
{
    makeupRamp.set(static_cast<float>(makeupTarget));
    appliedDrive = drive;
    driveHandover.finish();
    inputGainRamp.set(static_cast<float>(inputGain));
}

void TapeDeck::setRecordHardness(double a) noexcept
{
    recordHead.a = a;
    recalculateMakeup();
}

void TapeDeck::setRecordResistance(double k) noexcept
{
    recordHead.k = k;
    recalculateMakeup();
}

void TapeDeck::setDrive(double linearDrive) noexcept
{
    drive = linearDrive;
    recalculateMakeup();
}

void TapeDeck::recalculateMakeup() noexcept
{
    // The render starts the glide; a deck that has never been prepared has nothing to glide from.
    makeupTarget = RecordHead::makeupGain(drive, recordHead.a, recordHead.k);
    if (sampleRate <= 0.0)
        jumpToTargets();
}

void TapeDeck::setTapeSpeed(double newSpeed) noexcept
{
    const double from = tickSpeed();
    speed = newSpeed;
    for (TapeHead& head : heads)
        head.setSpeed(newSpeed);
    // The heads' lengths glide when the deck runs, and jump on a fresh deck; the tape's
    // speed does the same, or a head would count new tape against an old length: a faster
    // tape would bring its read position up to the present within a single tick.
    const LinearRamp& length = heads[forwardHead].lengthRamp;
    speedGlideFrom = from;
    speedGlideTicks = length.isMoving() ? length.length : 0;
    speedGlidePosition = 0;
    playbackFilters.setSpeed(newSpeed);
    outgoing.playbackFilters.setSpeed(newSpeed);
    refreshCompensationIfOn();
}

void TapeDeck::refreshCompensationIfOn() noexcept
{
    // A redesign recomputes even with the chain off; only switching the chain gives 1.
    if (compensationOn)
        feedbackCompensation = playbackFilters.feedbackCompensation();
}

void TapeDeck::updateCompensation() noexcept
{
    feedbackCompensation = compensationOn && playbackFilters.isOn() ? playbackFilters.feedbackCompensation() : 1.0f;
}

void TapeDeck::setSpacing(double spacing) noexcept
{
    playbackFilters.setSpacing(spacing);
    outgoing.playbackFilters.setSpacing(spacing);
    refreshCompensationIfOn();
}

void TapeDeck::setThickness(double thickness) noexcept
{
    playbackFilters.setThickness(thickness);
    outgoing.playbackFilters.setThickness(thickness);
    refreshCompensationIfOn();
}

void TapeDeck::setAzimuth(double azimuth) noexcept
{
    playbackFilters.setAzimuth(azimuth);
    outgoing.playbackFilters.setAzimuth(azimuth);
    refreshCompensationIfOn();
}

void TapeDeck::setTrackWidthRatio(double ratio) noexcept
{
    playbackFilters.setTrackWidthRatio(ratio);
    outgoing.playbackFilters.setTrackWidthRatio(ratio);
    refreshCompensationIfOn();
}

void TapeDeck::setPlaybackFilterOn(bool on) noexcept
{
    playbackFilters.setOn(on);
    outgoing.playbackFilters.setOn(on);
    updateCompensation();
}

void TapeDeck::setCompensationOn(bool on) noexcept
{
    compensationOn = on ? 1 : 0;
    updateCompensation();
}

void TapeDeck::setEncoderType(std::int32_t type) noexcept
{
    encoderType = std::clamp(type, 0, 3);
    if (encoderType == 1)
        preEmphasis.clearEncoder();
    else if (encoderType == 2)
        threeBand.clearEncoder();
    else if (encoderType == 3)
        slidingBand.clearEncoder();
}

void TapeDeck::setDecoderType(std::int32_t type) noexcept
{
    decoderType = std::clamp(type, 0, 3);
    if (decoderType == 1)
        preEmphasis.clearDecoder();
    else if (decoderType == 2)
        threeBand.clearDecoder();
    else if (decoderType == 3)
        slidingBand.clearDecoder();
}

double TapeDeck::flangeTargetDelay() const noexcept
{
    const double nominal = heads[forwardHead].delay;
    const double low = nominal - flangeDepth;
    const double high = nominal + flangeDepth;
    double target = (high - low) * flangePhase + low;
    if (target < low)
        target = low;
    if (target > high)
        target = high;
    return target;
}

double TapeDeck::tickSpeed() const noexcept
{
    if (speedGlidePosition >= speedGlideTicks)
        return speed;
    const double share = static_cast<double>(speedGlidePosition) / static_cast<double>(speedGlideTicks);
    return speedGlideFrom + (speed - speedGlideFrom) * share;
}

double TapeDeck::flangeSpeed() const noexcept
{
    const TapeHead& forward = heads[forwardHead];
    const double length = speedGlidePosition >= speedGlideTicks ? forward.tapeLength : tickSpeed() * forward.delay;
    return length / flangeTargetDelay();
}

} // namespace oxa
