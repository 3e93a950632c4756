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
#include <type_traits>
#include <utility>

namespace oxa
{

// Noise reduction around the record head, by type: 0 none, 1 pre-emphasis,
// 2 three-band, 3 sliding band. Path is a deck or the record path it fades out.
// InLanes: the solvers try their two points per step side by side (the same result
// bit for bit; the plain form is the reference).
template <int Type, bool InLanes, class Path>
inline double encodeStage(Path& path, double h) noexcept
{
    static_assert(Type >= 0 && Type <= 3, "four encoder types");
    if constexpr (Type == 1)
        return path.preEmphasis.encode(h);
    else if constexpr (Type == 2)
        return path.threeBand.encode(h);
    else if constexpr (Type == 3)
        return InLanes ? path.slidingBand.encodeInLanes(h) : path.slidingBand.encode(h);
    else
        return h;
}

template <int Type, bool InLanes, class Path>
inline double decodeStage(Path& path, double h) noexcept
{
    static_assert(Type >= 0 && Type <= 3, "four decoder types");
    if constexpr (Type == 1)
        return path.preEmphasis.decode(h);
    else if constexpr (Type == 2)
        return InLanes ? path.threeBand.decodeInLanes(h) : path.threeBand.decode(h);
    else if constexpr (Type == 3)
        return InLanes ? path.slidingBand.decodeInLanes(h) : path.slidingBand.decode(h);
    else
        return h;
}

// The compander of a deck that solves its steps in lanes, by type: 2 three-band, 3 sliding band.
template <int Type>
struct LanedCompander;
template <>
struct LanedCompander<2>
{
    static ThreeBandCompander& in(TapeDeck& deck) noexcept { return deck.threeBand; }
};
template <>
struct LanedCompander<3>
{
    static SlidingBandCompander& in(TapeDeck& deck) noexcept { return deck.slidingBand; }
};

// The compander sidechains of a stereo pair's four decks in lanes, two decks a register,
// made once a block: a sample then gathers only what moves (histories and charges).
// Types that solve nothing in lanes hold nothing.
template <int Type, bool Decoding, bool Laned = (Type == 2 || Type == 3)>
struct SidechainLanes
{
    explicit SidechainLanes(TapeDeck* const*) noexcept {}
};

template <int Type, bool Decoding>
struct SidechainLanes<Type, Decoding, true>
{
    using Compander = std::remove_reference_t<decltype(LanedCompander<Type>::in(std::declval<TapeDeck&>()))>;
    using Pair = decltype(Compander::encoderLanes(std::declval<const Compander&>(), std::declval<const Compander&>()));

    explicit SidechainLanes(TapeDeck* const* decks) noexcept
        : companders{&LanedCompander<Type>::in(*decks[0]), &LanedCompander<Type>::in(*decks[1]),
                     &LanedCompander<Type>::in(*decks[2]), &LanedCompander<Type>::in(*decks[3])},
          pairs{of(*companders[0], *companders[1]), of(*companders[2], *companders[3])}
    {
    }
    static Pair of(const Compander& first, const Compander& second) noexcept
    {
        return Decoding ? Compander::decoderLanes(first, second) : Compander::encoderLanes(first, second);
    }
    Compander* const companders[4];
    Pair pairs[2];
};

// The same stages for the four decks of a stereo pair at once: the heavy types take
// their steps side by side.
template <int Type>
inline void encodeFour(TapeDeck* const* decks, double* h, SidechainLanes<Type, false>& sides) noexcept
{
    if constexpr (Type == 2 || Type == 3)
        SidechainLanes<Type, false>::Compander::encodeFourInLanes(sides.companders, h, sides.pairs);
    else
        for (int d = 0; d < 4; ++d)
            h[d] = encodeStage<Type, true>(*decks[d], h[d]);
}

template <int Type>
inline void decodeFour(TapeDeck* const* decks, double* h, SidechainLanes<Type, true>& sides) noexcept
{
    if constexpr (Type == 2 || Type == 3)
        SidechainLanes<Type, true>::Compander::decodeFourInLanes(sides.companders, h, sides.pairs);
    else
        for (int d = 0; d < 4; ++d)
            h[d] = decodeStage<Type, true>(*decks[d], h[d]);
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
          deepest(TapeHead::deepestDelay(d.ringLength)),
          historyLength(d.speedHistory.size()),
          s(d.sampleCounter),
          writeIndex(d.sampleCounter % d.ringLength),
          aheadSample(s),
          aheadSlot(writeIndex),
          inputGain(d.inputGain),
          inputGliding(d.inputGainRamp.isMoving()),
          recordOn(d.recordHead.on != 0),
          feedbackGain(d.feedback * d.feedbackCompensation),
          driveGain(d.appliedDrive),
          noiseGain(d.noiseGain),
          share(LfoMode ? 0.5 : outputShare),
          fading(d.driveHandover.isRunning()),
          ramping(d.makeupRamp.isMoving()),
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
        return tapeTanh(beforeSaturator(input, deviation)) * 100.0;
    }

    // beforeEncoder() up to the saturator: tape write, ticks, head reads. Returns the
    // saturator's argument; what goes into the encoder is tapeTanh of it times 100.
    inline double beforeSaturator(float input, float* deviation) noexcept
    {
        writeTape(input, deviation, s, writeIndex);
        const double forward = TapeHead::readWithin(inRing, ringLength, deepest, writeIndex, forwardDelay(s));
        return fromHeads(forward, feedbackDelay(s));
    }

    // beforeSaturator() for a stretch of count samples ahead of the rest of the loop, one
    // deck at a time: the tape write, ticks and the forward head depend only on the input
    // and the transport, never on what the deck puts out. Gives the forward head's reads
    // and the feedback head's delays (and the speed deviation where deviation is not null)
    // for fromHeads() to finish sample by sample.
    inline void runAhead(const float* input, std::uint32_t count, double* forward, double* feedbackDelays,
                         float* deviation) noexcept
    {
        for (std::uint32_t k = 0; k < count; ++k)
        {
            writeTape(input[k], deviation == nullptr ? nullptr : deviation + k, aheadSample, aheadSlot);
            forward[k] = TapeHead::readWithin(inRing, ringLength, deepest, aheadSlot, forwardDelay(aheadSample));
            feedbackDelays[k] = feedbackDelay(aheadSample);
            ++aheadSample;
            if (++aheadSlot == ringLength)
                aheadSlot = 0;
        }
    }

    // The rest of beforeSaturator() from the forward head's read: the feedback head, the
    // old record path during a hand-over, the makeup and hiss level of this sample.
    inline double fromHeads(double forward, double feedbackDelay) noexcept
    {
        double r = forward;
        if (feedbackGain != 0.0)
            r += feedbackGain * TapeHead::readWithin(outRing, ringLength, deepest, writeIndex, feedbackDelay);
        if (fading)
            outgoingValue = recordOutgoing(r);
        if (ramping)
            makeup = deck.makeupRamp.value();
        deck.recordHead.noiseLevel = makeup * noiseGain;
        return r * driveGain * 0.01;
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
        return afterPlayback(TapeCeiling::apply(afterChain(deck.playbackFilters.process(beforePlayback(decoded)))));
    }

    // afterDecoder() up to the playback filters: returns what goes into them.
    inline double beforePlayback(double decoded) noexcept
    {
        // The makeup comes off before the playback filters: they are linear, so a settled
        // level is the same either way, but their memory then holds the signal at the level
        // it leaves with, and a drive glide cannot leave a scaled-up tail behind.
        return decoded / makeup;
    }

    // The gain beforePlayback() divides out.
    double makeupGain() const noexcept { return makeup; }
    // What the playback filters gave, with the old record path faded out during a Drive
    // hand-over. Each record path has playback filters of its own: their slowest pole
    // remembers a quarter of a second, and fed with a mix of the two they would carry the
    // hand-over's blend on long after it ended.
    inline double afterChain(double v) noexcept { return fading ? fadeFromOutgoing(v) : v; }

    // afterDecoder() from what the playback filters, the hand-over and the ceiling gave:
    // tape out.
    inline float afterPlayback(double v) noexcept
    {
        outRing[writeIndex] = v;

        if (ramping)
            deck.makeupRamp.advance(1);
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
    // The old record path, at the old drive and makeup, on the same tape read, through
    // its own playback filters.
    double recordOutgoing(double r) noexcept
    {
        OutgoingRecordPath& path = deck.outgoing;
        const double saturated = tapeTanh(r * path.drive * 0.01) * 100.0;
        path.recordHead.noiseLevel = path.makeup * noiseGain;
        const double recorded = path.recordHead.process(encodeStage<Encoder, InLanes>(path, saturated));
        return path.playbackFilters.process(decodeStage<Decoder, InLanes>(path, recorded) / path.makeup);
    }

    // The old path alone while the new one warms up unheard, then the fade between them.
    double fadeFromOutgoing(double incoming) noexcept
    {
        const double share = deck.driveHandover.nextShare();
        fading = deck.driveHandover.isRunning();
        return deck.outgoing.crossfade.mix(outgoingValue, incoming, share);
    }

    // The dropouts' gain at the current sample; their generator is asked only where it
    // draws or dips.
    [[gnu::always_inline]] inline double dropoutAt(std::uint64_t sample) noexcept
    {
        if (sample < unitGainEnd)
            return 1.0;
        const double gain = deck.demagnetisation.gainAt(sample);
        unitGainEnd = sample + 1 + deck.demagnetisation.unitGainSamplesFrom(sample + 1);
        return gain;
    }

    // The input onto the tape at sample (slot: its place in the ring), dropouts,
    // LFO and ticks; deviation (when not null) receives the speed deviation.
    [[gnu::always_inline]] inline void writeTape(float input, float* deviation, std::uint64_t sample,
                                                 std::uint64_t slot) noexcept
    {
        const auto offset = static_cast<std::uint32_t>(sample & 31u);
        if (inputGliding)
        {
            inputGain = deck.inputGainRamp.value();
            deck.inputGainRamp.advance(1);
        }
        const double recorded = input * inputGain;
        // Dropouts stand on the tape; their generator runs in any case.
        const double dropout = dropoutAt(sample);
        inRing[slot] = recordOn ? recorded * dropout : recorded;

        if constexpr (LfoMode)
        {
            // Only the second deck's speed hangs on the phase, and only at ticks.
            if (SecondDeck && offset == 0)
                deck.flangePhase = flangePhaseAt(lfoTime);
            lastLfoTime = lfoTime;
            lfoTime += lfoIncrement;
        }

        if (offset == 0)
            tick(sample);

        if constexpr (SecondDeck)
            if (deviation != nullptr)
                *deviation = deck.transport.deviationAt(offset);
    }

    double forwardDelay(std::uint64_t sample) const noexcept
    {
        return forwardSlope * static_cast<std::uint32_t>(sample & 31u) + forwardBase;
    }
    double feedbackDelay(std::uint64_t sample) const noexcept
    {
        return feedbackSlope * static_cast<std::uint32_t>(sample & 31u) + feedbackBase;
    }

    double flangePhaseAt(float t) const noexcept
    {
        return (waveform(t) * normaliser + 1.0f) * 0.5f;
    }

    [[gnu::noinline]] void tick(std::uint64_t sample) noexcept
    {
        const std::uint64_t tickIndex = sample >> 5;
        const double speed = SecondDeck ? deck.flangeSpeed() : deck.tickSpeed();
        deck.transport.tick(tickIndex, 0.0, speed, history, historyLength);
        deck.advanceSpeedGlide();
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
    double deepest;
    std::uint64_t historyLength;
    std::uint64_t s;
    std::uint64_t unitGainEnd = 0; // the dropouts give exactly 1 before this sample
    std::uint64_t writeIndex;
    std::uint64_t aheadSample; // where runAhead() goes on
    std::uint64_t aheadSlot;
    double inputGain;
    bool inputGliding;
    bool recordOn;
    double feedbackGain;
    double driveGain;
    double noiseGain;
    double share;
    bool fading;
    bool ramping;
    double makeup;
    double outgoingValue = 0.0;
    float lfoIncrement;
    float lfoTime;
    float lastLfoTime;
    LfoWaveform waveform;
    float normaliser;
    double forwardSlope = 0.0, forwardBase = 0.0, feedbackSlope = 0.0, feedbackBase = 0.0;
};

} // namespace oxa
