#pragma once

// The per-sample work of one deck, as a template so that flange mode and
// noise reduction types cost nothing inside the sample loop. Only the block
// renderer includes this.

#include "tape/LfoWaveform.h"
#include "tape/TapeCeiling.h"
#include "tape/TapeDeck.h"
#include "tape/TapeTanh.h"

#include <cmath>
#include <cstdint>

namespace oxa
{

// Noise reduction around the record head, by type: 0 none, 1 pre-emphasis,
// 2 three-band, 3 sliding band. InLanes: the solvers try their two points per step
// side by side (same result bit for bit; the plain form is the reference).
template <int Type, bool InLanes>
inline double encodeStage(TapeDeck& deck, double h) noexcept
{
    static_assert(Type >= 0 && Type <= 3, "four encoder types");
    if constexpr (Type == 1)
        return deck.preEmphasis.encode(h);
    else if constexpr (Type == 2)
        return deck.threeBand.encode(h);
    else if constexpr (Type == 3)
        return InLanes ? deck.slidingBand.encodeInLanes(h) : deck.slidingBand.encode(h);
    else
        return h;
}

template <int Type, bool InLanes>
inline double decodeStage(TapeDeck& deck, double h) noexcept
{
    static_assert(Type >= 0 && Type <= 3, "four decoder types");
    if constexpr (Type == 1)
        return deck.preEmphasis.decode(h);
    else if constexpr (Type == 2)
        return InLanes ? deck.threeBand.decodeInLanes(h) : deck.threeBand.decode(h);
    else if constexpr (Type == 3)
        return InLanes ? deck.slidingBand.decodeInLanes(h) : deck.slidingBand.decode(h);
    else
        return h;
}

// The same stages for the four decks of a stereo pair at once: the solvers of the
// heavy types take their steps side by side.
template <int Type>
inline void encodeFour(TapeDeck* const* decks, double* h) noexcept
{
    if constexpr (Type == 3)
    {
        SlidingBandCompander* const companders[] = {&decks[0]->slidingBand, &decks[1]->slidingBand,
                                                    &decks[2]->slidingBand, &decks[3]->slidingBand};
        SlidingBandCompander::encodeFourInLanes(companders, h);
    }
    else
    {
        for (int d = 0; d < 4; ++d)
            h[d] = encodeStage<Type, true>(*decks[d], h[d]);
    }
}

template <int Type>
inline void decodeFour(TapeDeck* const* decks, double* h) noexcept
{
    if constexpr (Type == 2)
    {
        ThreeBandCompander* const companders[] = {&decks[0]->threeBand, &decks[1]->threeBand, &decks[2]->threeBand,
                                                  &decks[3]->threeBand};
        ThreeBandCompander::decodeFourInLanes(companders, h);
    }
    else if constexpr (Type == 3)
    {
        SlidingBandCompander* const companders[] = {&decks[0]->slidingBand, &decks[1]->slidingBand,
                                                    &decks[2]->slidingBand, &decks[3]->slidingBand};
        SlidingBandCompander::decodeFourInLanes(companders, h);
    }
    else
    {
        for (int d = 0; d < 4; ++d)
            h[d] = decodeStage<Type, true>(*decks[d], h[d]);
    }
}

template <bool LfoMode, int Encoder, int Decoder, bool SecondDeck, bool InLanes>
class DeckLoop
{
public:
    // outputShare: the deck's weight in manual mode (ignored in LFO mode).
    DeckLoop(TapeDeck& d, double outputShare) noexcept
        : deck(d),
          inRing(d.inputRing.data()),
          outRing(d.outputRing.data()),
          history(d.speedHistory.data()),
          ringLength(d.ringLength),
          historyLength(d.speedHistory.size()),
          s(d.sampleCounter),
          writeIndex(d.sampleCounter % d.ringLength),
          inputGain(d.inputGain),
          inputGliding(d.inputGainRamp.isMoving()),
          recordOn(d.recordHead.on != 0),
          feedbackGain(d.feedback * d.feedbackCompensation),
          driveGain(d.logDriveRamp.isMoving() ? glidingDrive(d.logDriveRamp, d.logDriveRamp.position - 1) : d.drive),
          noiseGain(d.noiseGain),
          share(LfoMode ? 0.5 : outputShare),
          driveGliding(d.logDriveRamp.isMoving()),
          ramping(driveGliding || d.makeupRamp.isMoving()),
          makeup(d.makeupRamp.value()),
          lfoIncrement(static_cast<float>(d.lfoRate / d.sampleRate)),
          lfoTime(d.lfoPhaseAccumulator),
          lastLfoTime(d.lfoPhaseAccumulator),
          waveform(d.LFOPhase, d.LFOShape, d.LFOSymmetry, d.LFOSwing),
          normaliser(LfoMode ? LfoWaveform::normaliser(d.LFOShape) : 1.0f)
    {
        cacheHeadDelays();
    }

    // First half of a sample: tape write, ticks, head reads, saturation and
    // encoder. Returns what goes into the record head. deviation receives the
    // speed deviation for the monitor (second deck only).
    inline double beforeHead(float input, float* deviation) noexcept
    {
        return encodeStage<Encoder, InLanes>(deck, beforeEncoder(input, deviation));
    }

    // beforeHead() up to the encoder: returns what goes into it.
    inline double beforeEncoder(float input, float* deviation) noexcept
    {
        const auto offset = static_cast<std::uint32_t>(s & 31u);
        if (inputGliding)
        {
            inputGain = deck.inputGainRamp.value();
            deck.inputGainRamp.advance(1);
        }
        inRing[writeIndex] = input * inputGain;
        // Dropouts stand on the tape; their generator runs in any case.
        const double dropout = deck.demagnetisation.gainAt(s);
        if (recordOn)
            inRing[writeIndex] *= dropout;

        if constexpr (LfoMode)
        {
            // Only the second deck's speed hangs on the phase, and only at ticks.
            if (SecondDeck && offset == 0)
                deck.flangePhase = flangePhaseAt(lfoTime);
            lastLfoTime = lfoTime;
            lfoTime += lfoIncrement;
        }

        if (offset == 0)
            tick();

        if constexpr (SecondDeck)
            *deviation = deck.transport.deviationAt(offset);

        // The feedback head's read of the input tape has weight 0 and is left out.
        const double forwardDelay = forwardSlope * offset + forwardBase;
        double r = TapeHead::readAt(inRing, ringLength, writeIndex, forwardDelay);
        if (feedbackGain != 0.0)
        {
            const double feedbackDelay = feedbackSlope * offset + feedbackBase;
            r += feedbackGain * TapeHead::readAt(outRing, ringLength, writeIndex, feedbackDelay);
        }

        if (driveGliding)
        {
            // The makeup is that of the drive of this very sample: a linear glide of its
            // own would let the level through the saturator swell mid-way.
            const double previous = driveGain;
            driveGain = glidingDrive(deck.logDriveRamp, deck.logDriveRamp.position);
            makeup = RecordHead::makeupGain(driveGain, deck.recordHead.a, deck.recordHead.k);
            // The head's memory holds the field at the drive it was recorded with; carried
            // over to the new drive, a glide down does not release it as a thump.
            deck.recordHead.rescaleField(driveGain / previous);
        }
        else if (ramping)
        {
            makeup = deck.makeupRamp.value();
        }
        const double saturated = tapeTanh(r * driveGain * 0.01) * 100.0;
        deck.recordHead.noiseLevel = makeup * noiseGain;
        return saturated;
    }

    // Second half: decoder, playback response, makeup, tape out. Returns the
    // deck's share of the output.
    inline float afterHead(double fromHead) noexcept
    {
        return afterDecoder(decodeStage<Decoder, InLanes>(deck, fromHead));
    }

    // afterHead() from what the decoder gave.
    inline float afterDecoder(double decoded) noexcept
    {
        // The makeup comes off before the playback filters: they are linear, so a settled
        // level is the same either way, but their memory then holds the signal at the level
        // it leaves with, and a drive glide cannot leave a scaled-up tail behind.
        double v = decoded / makeup;
        v = TapeCeiling::apply(deck.playbackFilters.process(v));
        outRing[writeIndex] = v;

        if (ramping)
        {
            deck.makeupRamp.advance(1);
            deck.logDriveRamp.advance(1);
        }
        ++s;
        if (++writeIndex == ringLength)
            writeIndex = 0;
        return static_cast<float>(v * share);
    }

    RecordHead& recordHead() noexcept { return deck.recordHead; }
    TapeDeck& tapeDeck() noexcept { return deck; }

    // Writes back what the loop kept in locals; samples is the count processed.
    void finish(int samples) noexcept
    {
        deck.sampleCounter = s;
        if constexpr (LfoMode)
        {
            if (samples > 0)
                deck.flangePhase = flangePhaseAt(lastLfoTime);
        }
        deck.lfoPhaseAccumulator += static_cast<float>(samples) * lfoIncrement;
        for (TapeHead& head : deck.heads)
            head.startup = 0;
    }

private:
    // The drive at a position of its glide: an S-curve in decibels, so that the glide
    // starts and ends without a corner the head's memory would answer with a thump. A
    // block starts from the drive of the sample before, so the head's rescaling never
    // skips a step.
    static double glidingDrive(const LinearRamp& logDrive, std::int32_t position) noexcept
    {
        const double t = static_cast<double>(position < 0 ? 0 : position) / static_cast<double>(logDrive.length);
        const double shaped = t * t * (3.0 - 2.0 * t);
        return std::exp(logDrive.from + (logDrive.to - logDrive.from) * shaped);
    }

    double flangePhaseAt(float t) const noexcept
    {
        return (waveform(t) * normaliser + 1.0f) * 0.5f;
    }

    void tick() noexcept
    {
        const std::uint64_t tickIndex = s >> 5;
        const double speed = SecondDeck ? deck.flangeSpeed() : deck.speed;
        deck.transport.tick(tickIndex, 0.0, speed, history, historyLength);
        deck.heads[TapeDeck::feedbackHeadIndex].tick(tickIndex, history, historyLength);
        deck.heads[TapeDeck::forwardHead].tick(tickIndex, history, historyLength);
        cacheHeadDelays();
    }

    void cacheHeadDelays() noexcept
    {
        const TapeHead& forward = deck.heads[TapeDeck::forwardHead];
        const TapeHead& back = deck.heads[TapeDeck::feedbackHeadIndex];
        forwardSlope = forward.currentDelay - forward.previousDelay;
        forwardBase = (forward.previousDelay + 1.0) * 32.0;
        feedbackSlope = back.currentDelay - back.previousDelay;
        feedbackBase = (back.previousDelay + 1.0) * 32.0;
    }

    TapeDeck& deck;
    double* inRing;
    double* outRing;
    double* history;
    std::uint64_t ringLength;
    std::uint64_t historyLength;
    std::uint64_t s;
    std::uint64_t writeIndex;
    double inputGain;
    bool inputGliding;
    bool recordOn;
    double feedbackGain;
    double driveGain;
    double noiseGain;
    double share;
    bool driveGliding;
    bool ramping;
    double makeup;
    float lfoIncrement;
    float lfoTime;
    float lastLfoTime;
    LfoWaveform waveform;
    float normaliser;
    double forwardSlope = 0.0, forwardBase = 0.0, feedbackSlope = 0.0, feedbackBase = 0.0;
};

} // namespace oxa
