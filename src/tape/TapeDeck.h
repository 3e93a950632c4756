#pragma once

#include "tape/Demagnetisation.h"
#include "tape/LinearRamp.h"
#include "tape/PlaybackFilterChain.h"
#include "tape/PowerKeepingCrossfade.h"
#include "tape/PreEmphasis.h"
#include "tape/RecordHead.h"
#include "tape/SlidingBandCompander.h"
#include "tape/TapeHead.h"
#include "tape/ThreeBandCompander.h"
#include "tape/TransportGenerator.h"

#include <cstdint>
#include <vector>

namespace oxa
{

// One whole tape machine: record through the magnetic head onto a moving tape
// and read it back through two heads (forward and feedback).
//
// Fields are written directly by the parameter setters where a write has no
// side effect; the methods below cover the writes that do.
// The record path as it stood before a Drive change: noise reduction, magnetic head and
// playback filters, with the drive and makeup it recorded with. It plays on while the
// deck hands over to the path at the new drive. Its playback filters follow every design
// change at once, as the deck's own do: the old path is what is heard until the new one
// takes over. A change of the magnetic response is heard when the hand-over ends, with
// its makeup.
struct OutgoingRecordPath
{
    RecordHead recordHead;
    PreEmphasis preEmphasis;
    SlidingBandCompander slidingBand;
    ThreeBandCompander threeBand;
    PlaybackFilterChain playbackFilters;
    PowerKeepingCrossfade crossfade;
    double drive = 1.0;
    double makeup = 1.0;
};

// Where a Drive change's hand-over stands: the new record path's share of the output,
// nothing while it warms up unheard, then rising along an S-curve.
struct DriveHandover
{
    std::int32_t unheard = 0; // samples before the new path is heard
    std::int32_t length = 0;  // the whole hand-over, in samples
    std::int32_t position = 0;

    bool isRunning() const noexcept { return position < length; }
    void start(std::int32_t unheardSamples, std::int32_t fadeSamples) noexcept
    {
        unheard = unheardSamples;
        length = unheardSamples + fadeSamples;
        position = 0;
    }
    void finish() noexcept { position = length; }

    // The new path's share at the current sample (0..1); then moves on by a sample.
    double nextShare() noexcept
    {
        const std::int32_t into = position - unheard;
        if (position < length)
            ++position;
        if (into < 0)
            return 0.0;
        const double t = static_cast<double>(into) / static_cast<double>(length - unheard);
        return t * t * (3.0 - 2.0 * t);
    }
};

// Whether a deck holds tape: a deck that only mirrors settings and never renders needs none.
enum class TapeStorage
{
    allocated,
    none
};

struct TapeDeck
{
    static constexpr int forwardHead = 0;
    static constexpr int feedbackHeadIndex = 1;
    // Gains glide this long to a new value, so that automation and knob moves do not zipper.
    static constexpr double gainGlideSeconds = 0.02;
    // A Drive change hands over from the old record path to the new one in two parts. The
    // new path first records unheard, long enough to forget the memory it started from:
    // the playback filters' slowest pole remembers about a quarter of a second, and a new
    // path heard earlier carries the old path's low end that long, which on saturated
    // programme reads as level swings of several dB. Then a short fade: two differently
    // saturated versions of one programme are barely alike, and the longer they sound
    // mixed, the more often their mix dips or swells where they differ.
    static constexpr double driveWarmUpSeconds = 0.6;
    static constexpr double driveFadeSeconds = 0.005;
    // Only a large step leaves the new path far from where it settles: a smaller one warms
    // up for its share of the full time, so a knob moved by hand answers at once.
    static constexpr double fullWarmUpStepDb = 24.0;
    static constexpr double shortestWarmUpSeconds = 0.03;
    // The warm-up for a step from one linear drive to another.
    static double driveWarmUpFor(double from, double to) noexcept;

    RecordHead recordHead;
    PlaybackFilterChain playbackFilters;
    TapeHead heads[2];
    double headWeights[2] = {1.0, 0.0};
    std::vector<double> inputRing;  // the tape before the heads
    std::vector<double> outputRing; // what the deck put out, read by the feedback head
    std::vector<double> spareRing;  // allocated like the others, never read
    std::uint64_t sampleCounter = 0;
    double feedback = 0.0;
    std::int32_t feedbackHead = feedbackHeadIndex;
    double inputGain = 1.0;
    // Noise reduction around the record head, by type: 1, 3 and 2 (which
    // keeps the implicit decoder's last solution).
    PreEmphasis preEmphasis;
    SlidingBandCompander slidingBand;
    ThreeBandCompander threeBand;
    std::int32_t encoderType = 0;
    std::int32_t decoderType = 0;
    std::uint64_t ringLength = 0;
    std::vector<double> speedHistory; // one tape speed per 32-sample tick
    double speed = 1.0;               // nominal tape speed
    // A speed change glides the tape's speed in step with the heads' lengths, tick by tick
    // over the same stretch, so the tape they count and the lengths they count it against
    // change together and every delay holds through the change. Steady: exactly speed.
    double speedGlideFrom = 1.0;
    std::int32_t speedGlideTicks = 0;
    std::int32_t speedGlidePosition = 0;
    double flangeDepth = 0.005;       // seconds; read on the second deck only
    double flangePhase = 0.0;         // 0..1
    double fade = 0.01;
    TransportGenerator transport;     // wow, flutter, drift and their random state
    double sampleRate = 0.0;
    double drive = 1.0;               // linear
    Demagnetisation demagnetisation; // dropouts, with their depth and rate
    float lfoRate = 0.1f;
    float lfoPhaseAccumulator = 0.0f;
    float LFOPhase = 0.0f;
    float LFOShape = 0.0f;
    float LFOSymmetry = 0.0f;
    float LFOSwing = 0.0f;
    LinearRamp makeupRamp;
    double makeupTarget = 1.0;
    // The drive the saturator applies; drive is its target. A change does not glide
    // through the drives between: a saturated head sounds different at each, so its level
    // would wander. The deck fades from the old record path to the new one instead.
    double appliedDrive = 1.0;
    OutgoingRecordPath outgoing;
    DriveHandover driveHandover;
    // The input gain the tape is recorded with; inputGain is its target.
    LinearRamp inputGainRamp;
    std::uint8_t compensationOn = 1;
    float feedbackCompensation = 1.0f;
    double noiseGain = 0.0001; // linear hiss level

    TapeDeck() noexcept { heads[feedbackHeadIndex].setDelay(0.016); }

    // Allocates the two-second tape (unless storage says none); not for the audio thread.
    // A deck without tape takes its settings like any other but must never render.
    void prepare(double newSampleRate, TapeStorage storage = TapeStorage::allocated);
    // The deck's settings and state without its tape (the rings come back empty): a new
    // channel takes the settings over and allocates tape of its own.
    TapeDeck copyWithoutTape();
    // Blank tape, heads, transport and LFO at their start, shared random seeds.
    void reset() noexcept;

    // ---- render support: the glides are the audio thread's own ----
    // Sets every glide moving towards what the setters last wrote: a drive change hands
    // over to the new record path (a change during a hand-over waits for its end), a makeup
    // change alone glides over a tenth of a second, the input gain over 20 ms.
    void followTargets() noexcept;
    // Puts every glide at its target at once.
    void jumpToTargets() noexcept;

    // ---- setter support: writes with side effects ----
    // Hardness a, resistance k and drive all move the makeup target.
    void setRecordHardness(double a) noexcept;
    void setRecordResistance(double k) noexcept;
    void setDrive(double linearDrive) noexcept;
    void recalculateMakeup() noexcept;
    // Either flag restarts the magnetic model from rest.
    void setRecordHeadOn(bool on) noexcept { recordHead.setOn(on); }
    void setNoiseGateOn(bool on) noexcept { recordHead.setGateOn(on); }
    // Nominal tape speed for the deck, both heads (delays stay, lengths ramp)
    // and the playback response.
    void setTapeSpeed(double newSpeed) noexcept;
    // Playback head design values. Each redesigns its filter and, when
    // compensation is on, the feedback compensation (even with the chain off).
    void setSpacing(double spacing) noexcept;
    void setThickness(double thickness) noexcept;
    void setAzimuth(double azimuth) noexcept;
    void setTrackWidthRatio(double ratio) noexcept;
    // Switching the chain clears its histories; compensation follows.
    void setPlaybackFilterOn(bool on) noexcept;
    void setCompensationOn(bool on) noexcept;
    // Noise reduction type 0..3 of one side; clears that type's state of that side.
    void setEncoderType(std::int32_t type) noexcept;
    void setDecoderType(std::int32_t type) noexcept;
    // Dropouts: a rate change restarts the section pattern at the current sample.
    void setDegradeDepth(double depth) noexcept { demagnetisation.setDepth(depth); }
    void setDegradeRate(double rate) noexcept { demagnetisation.setRate(rate, sampleCounter); }
    void restartDegradeSection() noexcept { setDegradeRate(demagnetisation.getRate()); }
    // Forward head: the effect's latency. Feedback head: the feedback delay.
    void setForwardDelay(double seconds) noexcept { heads[forwardHead].setDelay(seconds); }
    void setFeedbackDelay(double seconds) noexcept { heads[feedbackHeadIndex].setDelay(seconds); }
    // Channel unsync: seeds of the deck's own, or back to the shared ones.
    void reseedTransport(std::uint32_t r1, std::uint32_t r2) noexcept { transport.reseed(r1, r2); }
    void restoreTransportSeeds() noexcept { transport.restoreSeeds(); }

    // Tape speed of the first deck at the current tick: speed, or on its way there.
    double tickSpeed() const noexcept;
    // Moves the speed glide on by one tick; the render calls it after each tick.
    void advanceSpeedGlide() noexcept
    {
        if (speedGlidePosition < speedGlideTicks)
            ++speedGlidePosition;
    }
    // Tape speed of the second deck for the current flange position: the
    // forward head then sees its tape length after exactly the target delay.
    double flangeSpeed() const noexcept;
    // Delay of the second deck's forward head for the current flange position.
    double flangeTargetDelay() const noexcept;

private:
    // Copies the record path for the hand-over, carries the head's memory to the new
    // drive and starts the hand-over.
    void startDriveHandover() noexcept;
    // Compensation for the current design when it and the chain are on, else 1.
    void updateCompensation() noexcept;
    // After a redesign: the compensation follows when it is on, whether or not the chain is.
    void refreshCompensationIfOn() noexcept;
};

} // namespace oxa
