#include "tape/TapeEffect.h"

#include "tape/Decibels.h"
#include "tape/DeckLoop.h"
#include "tape/FourRecordHeads.h"
#include "tape/Lanes.h"
#include "tape/PlaybackChainsInLanes.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace oxa
{
namespace
{
// Non-finite and denormal samples become silence where they enter the effect,
// so one bad burst cannot poison the tape's recursions.
void sanitise(float* x, std::uint32_t n) noexcept
{
    for (std::uint32_t k = 0; k < n; ++k)
    {
        const float magnitude = std::fabs(x[k]);
        const bool bad = !(magnitude <= 3.40282347e+38f) || (magnitude < 1.17549435e-38f && magnitude != 0.0f);
        if (bad)
            x[k] = 0.0f;
    }
}

// Both decks of a channel in one loop: their recursions are independent, so
// the processor can overlap them. InLanes: the solvers work in SIMD lanes.
template <bool LfoMode, int Encoder, int Decoder, bool InLanes>
void runChannel(TapeChannel& channel, float* x, std::uint32_t n, float* deviation) noexcept
{
    TapeDeck& first = channel.decks[0];
    TapeDeck& second = channel.decks[1];
    double firstShare = 0.5;
    double secondShare = 0.5;
    if constexpr (!LfoMode)
    {
        firstShare = 1.0 - manualCrossfade(first.flangePhase, first.fade);
        secondShare = manualCrossfade(second.flangePhase, second.fade);
    }
    DeckLoop<LfoMode, Encoder, Decoder, false, InLanes> a(first, firstShare);
    DeckLoop<LfoMode, Encoder, Decoder, true, InLanes> b(second, secondShare);
    const float sign = channel.phaseInvert ? -1.0f : 1.0f;
    for (std::uint32_t k = 0; k < n; ++k)
    {
        const float input = x[k];
        double fromFirst = a.beforeHead(input, nullptr);
        double fromSecond = b.beforeHead(input, deviation + k);
        if constexpr (InLanes)
            RecordHead::processPairInLanes(a.recordHead(), b.recordHead(), fromFirst, fromSecond);
        else
            RecordHead::processPair(a.recordHead(), b.recordHead(), fromFirst, fromSecond);
        const float outFirst = a.afterHead(fromFirst);
        const float outSecond = b.afterHead(fromSecond);
        x[k] = outFirst + sign * outSecond; // sign flip is exact
    }
    a.finish(static_cast<int>(n));
    b.finish(static_cast<int>(n));
}

// The playback chains of a channel's two decks, side by side where both are on.
template <class First, class Second>
inline void playPair(PlaybackChainsInLanes& chains, bool inLanes, First& first, Second& second, double& hFirst,
                     double& hSecond) noexcept
{
    const Lanes levelled = Lanes(hFirst, hSecond) / Lanes(first.makeupGain(), second.makeupGain());
    if (inLanes)
    {
        const Lanes played = chains.process(levelled);
        const Lanes handedOver(first.afterChain(played.first()), second.afterChain(played.second()));
        const Lanes bounded = applyTapeCeiling(handedOver);
        hFirst = bounded.first();
        hSecond = bounded.second();
    }
    else
    {
        hFirst = TapeCeiling::apply(first.afterChain(first.tapeDeck().playbackFilters.process(levelled.first())));
        hSecond = TapeCeiling::apply(second.afterChain(second.tapeDeck().playbackFilters.process(levelled.second())));
    }
}

// The two channels of a stereo pair in one loop: four independent decks, whose
// saturators, record heads, compander solvers and playback chains work side by side in
// lanes. Each deck computes exactly what runChannel computes for it; the speed deviation
// comes from the right channel's second deck, as it does when the channels run one after
// the other.
template <bool LfoMode, int Encoder, int Decoder>
void runStereo(TapeChannel& left, TapeChannel& right, float* xLeft, float* xRight, std::uint32_t n,
               float* deviation) noexcept
{
    double shares[4] = {0.5, 0.5, 0.5, 0.5};
    if constexpr (!LfoMode)
    {
        TapeChannel* channels[] = {&left, &right};
        for (int c = 0; c < 2; ++c)
        {
            shares[2 * c] = 1.0 - manualCrossfade(channels[c]->decks[0].flangePhase, channels[c]->decks[0].fade);
            shares[2 * c + 1] = manualCrossfade(channels[c]->decks[1].flangePhase, channels[c]->decks[1].fade);
        }
    }
    DeckLoop<LfoMode, Encoder, Decoder, false, true> a(left.decks[0], shares[0]);
    DeckLoop<LfoMode, Encoder, Decoder, true, true> b(left.decks[1], shares[1]);
    DeckLoop<LfoMode, Encoder, Decoder, false, true> c(right.decks[0], shares[2]);
    DeckLoop<LfoMode, Encoder, Decoder, true, true> d(right.decks[1], shares[3]);
    RecordHead* const heads[] = {&a.recordHead(), &b.recordHead(), &c.recordHead(), &d.recordHead()};
    const float signLeft = left.phaseInvert ? -1.0f : 1.0f;
    const float signRight = right.phaseInvert ? -1.0f : 1.0f;
    TapeDeck* const decks[] = {&a.tapeDeck(), &b.tapeDeck(), &c.tapeDeck(), &d.tapeDeck()};
    SidechainLanes<Encoder, false> encoders(decks);
    SidechainLanes<Decoder, true> decoders(decks);
    FourRecordHeads recordHeads;
    const bool headsInLanes = recordHeads.gather(heads);
    PlaybackChainsInLanes leftChains, rightChains;
    const bool leftInLanes = leftChains.gather(left.decks[0].playbackFilters, left.decks[1].playbackFilters);
    const bool rightInLanes = rightChains.gather(right.decks[0].playbackFilters, right.decks[1].playbackFilters);
    // The tape's side of each deck runs a stretch ahead, one deck at a time, its state in
    // registers; the rest follows sample by sample with all four decks side by side.
    constexpr std::uint32_t stretch = 64;
    double forward[4][stretch], feedbackDelays[4][stretch];
    for (std::uint32_t k = 0; k < n; ++k)
    {
        const std::uint32_t within = k % stretch;
        if (within == 0)
        {
            const std::uint32_t count = std::min(stretch, n - k);
            a.runAhead(xLeft + k, count, forward[0], feedbackDelays[0], nullptr);
            b.runAhead(xLeft + k, count, forward[1], feedbackDelays[1], nullptr);
            c.runAhead(xRight + k, count, forward[2], feedbackDelays[2], nullptr);
            d.runAhead(xRight + k, count, forward[3], feedbackDelays[3], deviation + k);
        }
        const double driveA = a.fromHeads(forward[0][within], feedbackDelays[0][within]);
        const double driveB = b.fromHeads(forward[1][within], feedbackDelays[1][within]);
        const double driveC = c.fromHeads(forward[2][within], feedbackDelays[2][within]);
        const double driveD = d.fromHeads(forward[3][within], feedbackDelays[3][within]);
        const Lanes saturatedLeft = tapeTanh(Lanes(driveA, driveB)) * Lanes(100.0);
        const Lanes saturatedRight = tapeTanh(Lanes(driveC, driveD)) * Lanes(100.0);
        double h[4] = {saturatedLeft.first(), saturatedLeft.second(), saturatedRight.first(), saturatedRight.second()};
        encodeFour<Encoder>(decks, h, encoders);
        if (headsInLanes)
            RecordHead::processFourInLanes(recordHeads, heads, h);
        else
            RecordHead::processFourInLanes(heads, h);
        decodeFour<Decoder>(decks, h, decoders);
        playPair(leftChains, leftInLanes, a, b, h[0], h[1]);
        playPair(rightChains, rightInLanes, c, d, h[2], h[3]);
        const float outA = a.afterPlayback(h[0]);
        const float outB = b.afterPlayback(h[1]);
        const float outC = c.afterPlayback(h[2]);
        const float outD = d.afterPlayback(h[3]);
        xLeft[k] = outA + signLeft * outB;
        xRight[k] = outC + signRight * outD;
    }
    recordHeads.scatter();
    leftChains.scatter();
    rightChains.scatter();
    for (auto* loop : {&a, &c})
        loop->finish(static_cast<int>(n));
    for (auto* loop : {&b, &d})
        loop->finish(static_cast<int>(n));
}

using ChannelRunner = void (*)(TapeChannel&, float*, std::uint32_t, float*) noexcept;
using StereoRunner = void (*)(TapeChannel&, TapeChannel&, float*, float*, std::uint32_t, float*) noexcept;

// The loop for one channel, and for a stereo pair where the kernel has one.
struct BlockLoops
{
    ChannelRunner channel;
    StereoRunner stereo;
};

template <bool LfoMode, int Encoder, int Decoder, bool InLanes>
BlockLoops loopsFor() noexcept
{
    if constexpr (InLanes)
        return {&runChannel<LfoMode, Encoder, Decoder, true>, &runStereo<LfoMode, Encoder, Decoder>};
    else
        return {&runChannel<LfoMode, Encoder, Decoder, false>, nullptr};
}

template <bool LfoMode, int Encoder, bool InLanes>
BlockLoops pickDecoder(int decoder) noexcept
{
    switch (decoder)
    {
        case 1: return loopsFor<LfoMode, Encoder, 1, InLanes>();
        case 2: return loopsFor<LfoMode, Encoder, 2, InLanes>();
        case 3: return loopsFor<LfoMode, Encoder, 3, InLanes>();
        default: return loopsFor<LfoMode, Encoder, 0, InLanes>();
    }
}

template <bool LfoMode, bool InLanes>
BlockLoops pickEncoder(int encoder, int decoder) noexcept
{
    switch (encoder)
    {
        case 1: return pickDecoder<LfoMode, 1, InLanes>(decoder);
        case 2: return pickDecoder<LfoMode, 2, InLanes>(decoder);
        case 3: return pickDecoder<LfoMode, 3, InLanes>(decoder);
        default: return pickDecoder<LfoMode, 0, InLanes>(decoder);
    }
}

template <bool InLanes>
BlockLoops pickMode(std::int32_t flangeMode, std::int32_t encoder, std::int32_t decoder) noexcept
{
    return flangeMode == TapeChannel::manualMode ? pickEncoder<false, InLanes>(encoder, decoder)
                                                  : pickEncoder<true, InLanes>(encoder, decoder);
}

// One of 32 loops, chosen once per block from the first channel's settings
// (the setters keep all channels alike), in the kernel chosen at prepare.
BlockLoops pickLoop(SolverKernel kernel, std::int32_t flangeMode, std::int32_t encoder,
                       std::int32_t decoder) noexcept
{
    return kernel == SolverKernel::lanes ? pickMode<true>(flangeMode, encoder, decoder)
                                         : pickMode<false>(flangeMode, encoder, decoder);
}
} // namespace

TapeEffectState::TapeEffectState() : outputPad(dbToLinear(-1.0f)) {}

SolverKernel TapeEffectState::bestSolverKernel() noexcept
{
    return Lanes::native ? SolverKernel::lanes : SolverKernel::reference;
}

void TapeEffectState::prepare(double newSampleRate, std::uint32_t maxBlockSize, std::uint32_t channelCount)
{
    sampleRate = newSampleRate;
    maxBlock = std::max<std::uint32_t>(maxBlockSize, 1);
    kernel = bestSolverKernel();
    channels.resize(std::min<std::size_t>(channels.size(), channelCount));
    dryDelays.clear();
    for (TapeChannel& channel : channels)
        channel.prepare(newSampleRate, tapeStorage);
    setChannelCount(channelCount);
}

void TapeEffectState::setChannelCount(std::uint32_t channelCount)
{
    const std::size_t before = channels.size();
    if (channelCount < before)
        channels.resize(channelCount);
    // New channels take the settings the setters left on the first one.
    for (std::size_t c = before; c < channelCount; ++c)
    {
        channels.push_back(c == 0 ? TapeChannel() : channels.front().copyWithoutTape());
        channels.back().prepare(sampleRate, tapeStorage);
    }
    const std::size_t lines = dryDelays.size();
    dryDelays.resize(channelCount);
    for (std::size_t c = lines; c < channelCount; ++c)
    {
        dryDelays[c].configure(maxBlock, static_cast<std::uint32_t>(sampleRate * 0.06));
        dryDelays[c].interpolation = DelayLine::linear;
    }
    reset();
}

void TapeEffectState::reset() noexcept
{
    for (TapeChannel& channel : channels)
        channel.reset();
    for (DelayLine& line : dryDelays)
        line.clear();
    reseed();
    jumpRequest.raise();
}

void TapeEffectState::startGlides() noexcept
{
    const float wetTarget = mix * outputGain * outputPad;
    const float dryTarget = 1.0f - mix;
    if (jumpRequest.take())
    {
        wetGain.set(wetTarget);
        dryGain.set(dryTarget);
        forEachDeck([](TapeDeck& deck) { deck.jumpToTargets(); });
        return;
    }
    const auto glide = static_cast<std::int32_t>(sampleRate * TapeDeck::gainGlideSeconds);
    if (wetTarget != wetGain.to)
        wetGain.rampTo(wetTarget, glide);
    if (dryTarget != dryGain.to)
        dryGain.rampTo(dryTarget, glide);
    forEachDeck([](TapeDeck& deck) { deck.followTargets(); });
}

void TapeEffectState::applyGains(float* x, const float* dry, std::uint32_t n) const noexcept
{
    if (!wetGain.isMoving() && !dryGain.isMoving())
    {
        const float wet = wetGain.to;
        const float dryShare = dryGain.to;
        if (wet == 0.0f && dryShare == 1.0f)
        {
            std::copy_n(dry, n, x);
            return;
        }
        for (std::uint32_t k = 0; k < n; ++k)
            x[k] *= wet;
        if (dryShare != 0.0f)
            for (std::uint32_t k = 0; k < n; ++k)
                x[k] += dry[k] * dryShare;
        return;
    }
    // Every channel takes the same stretch of the glides.
    LinearRamp wet = wetGain;
    LinearRamp dryShare = dryGain;
    for (std::uint32_t k = 0; k < n; ++k)
    {
        x[k] = x[k] * wet.value() + dry[k] * dryShare.value();
        wet.advance(1);
        dryShare.advance(1);
    }
}

void TapeEffectState::reseed() noexcept
{
    seeds.restart();
    forEachDeck([this](TapeDeck& deck) {
        const std::uint32_t first = seeds.next();
        deck.recordHead.restartNoise(first, seeds.next());
    });
    if (noiseSync)
        forEachDeck([this](TapeDeck& deck) {
            const std::uint32_t first = seeds.next();
            deck.reseedTransport(first, seeds.next());
        });
}

float TapeEffectState::render(float* const* channelData, std::uint32_t channelCount, std::uint32_t n,
                              const TapeHostInfo& host, bool syncToHost, float& hostTempo, float* speedScratch,
                              float* dryScratch) noexcept
{
    const auto tempo = static_cast<float>(host.tempo);
    if (syncToHost && tempo != hostTempo && tempo > 0.0f && std::isfinite(tempo))
    {
        hostTempo = tempo;
        const float rate = tempo * 0.016666668f / lfoFreq;
        forEachDeck([rate](TapeDeck& deck) { deck.lfoRate = rate; });
    }
    if (host.playing && std::isfinite(host.positionBeats))
    {
        // Keep the LFO on the host's beat grid.
        const float cycle = syncToHost ? lfoFreq : (hostTempo / lfoFreq) * 0.016666668f;
        const auto phase = static_cast<float>(std::fmod(host.positionBeats / cycle, 1.0));
        if (std::isfinite(phase))
            forEachDeck([phase](TapeDeck& deck) { deck.lfoPhaseAccumulator = phase; });
    }

    const std::uint32_t active = std::min<std::uint32_t>(channelCount, static_cast<std::uint32_t>(channels.size()));
    if (active == 0 || n == 0 || maxBlock == 0 || tapeStorage == TapeStorage::none)
        return channels.empty() ? 0.0f : static_cast<float>(channels[0].decks[1].flangePhase * 2.0 - 1.0);

    startGlides();
    const auto dryDelay = static_cast<double>(latency * static_cast<float>(sampleRate));
    const BlockLoops loops = pickLoop(kernel, channels[0].flangeMode, channels[0].decks[0].encoderType,
                                       channels[0].decks[0].decoderType);

    for (std::uint32_t done = 0; done < n;)
    {
        const std::uint32_t count = std::min(n - done, maxBlock);
        float* const dry = dryScratch + done;
        for (std::uint32_t c = 0; c < active;)
        {
            // A stereo pair runs its four decks together where the kernel can; the dry
            // line takes each channel's input before the decks overwrite it.
            const std::uint32_t together = loops.stereo != nullptr && c + 1 < active ? 2 : 1;
            for (std::uint32_t i = c; i < c + together; ++i)
            {
                sanitise(channelData[i] + done, count);
                dryDelays[i].write(channelData[i] + done, count);
            }
            if (together == 2)
                loops.stereo(channels[c], channels[c + 1], channelData[c] + done, channelData[c + 1] + done, count,
                             speedScratch + done);
            else
                loops.channel(channels[c], channelData[c] + done, count, speedScratch + done);
            for (std::uint32_t i = c; i < c + together; ++i)
            {
                DelayLine& line = dryDelays[i];
                line.read(dry, dryDelay, dryDelay, count);
                line.advance(count);
                applyGains(channelData[i] + done, dry, count);
            }
            c += together;
        }
        wetGain.advance(static_cast<std::int32_t>(count));
        dryGain.advance(static_cast<std::int32_t>(count));
        done += count;
    }
    return static_cast<float>(channels[0].decks[1].flangePhase * 2.0 - 1.0);
}

void TapeEffectState::setFlangeDepth(double seconds) noexcept
{
    const double depth = lowLatency ? std::min(seconds, lowLatencyMaxFlangeDepth) : seconds;
    for (TapeChannel& channel : channels)
        channel.decks[1].flangeDepth = depth;
}

void TapeEffectState::setLowLatency(bool on, double requestedFlangeDepth) noexcept
{
    lowLatency = on;
    latency = on ? lowLatencyValue : normalLatency;
    if (on)
        setFlangeDepth(requestedFlangeDepth);
    const double forwardDelay = latency;
    forEachDeck([forwardDelay](TapeDeck& deck) { deck.setForwardDelay(forwardDelay); });
}

void TapeEffectState::setNoiseSync(bool unsync) noexcept
{
    noiseSync = unsync;
    forEachDeck([this, unsync](TapeDeck& deck) {
        if (unsync)
        {
            const std::uint32_t r1 = seeds.next();
            deck.reseedTransport(r1, seeds.next());
        }
        else
        {
            deck.restoreTransportSeeds();
            deck.restartDegradeSection();
        }
    });
}

void TapeEffectState::setLfoFrequency(float value, bool syncToHost, float hostTempo) noexcept
{
    lfoFreq = value;
    const float rate = syncToHost ? hostTempo * 0.016666668f / value : value;
    forEachDeck([rate](TapeDeck& deck) { deck.lfoRate = rate; });
}

void TapeEffectState::setFlangeMode(std::int32_t mode) noexcept
{
    for (TapeChannel& channel : channels)
        channel.flangeMode = mode;
    if (mode == TapeChannel::manualMode)
        forEachDeck([](TapeDeck& deck) { deck.flangePhase = 0.0; });
}

void TapeEffectState::setRelativeDelay(double value) noexcept
{
    const double phase = (value + 1.0) * 0.5;
    forEachDeck([phase](TapeDeck& deck) { deck.flangePhase = phase; });
}

void TapeEffectState::setTapeSpeed(double speed) noexcept
{
    forEachDeck([speed](TapeDeck& deck) { deck.setTapeSpeed(speed); });
}

void TapeEffectState::setFeedbackDelay(double seconds) noexcept
{
    forEachDeck([seconds](TapeDeck& deck) { deck.setFeedbackDelay(seconds); });
}

} // namespace oxa
