#pragma once

#include "tape/DelayLine.h"
#include "tape/LinearRamp.h"
#include "tape/SeedSequence.h"
#include "tape/TapeChannel.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace oxa
{

// Raised on any thread, taken once by the render: the next block puts every gain
// glide at its target instead of gliding there.
class JumpRequest
{
public:
    JumpRequest() = default;
    JumpRequest(const JumpRequest& other) noexcept : raised(other.raised.load()) {}
    JumpRequest& operator=(const JumpRequest& other) noexcept
    {
        raised.store(other.raised.load());
        return *this;
    }

    void raise() noexcept { raised.store(true, std::memory_order_release); }
    bool take() noexcept
    {
        return raised.load(std::memory_order_relaxed) && raised.exchange(false, std::memory_order_acq_rel);
    }

private:
    std::atomic<bool> raised{true};
};

// How the decks' implicit solvers run: plainly, one trial point after the other (the
// reference), or with both decks' record heads and each compander's two trial points in
// SIMD lanes. Both give the same samples bit for bit.
enum class SolverKernel
{
    reference,
    lanes
};

// What the render needs to know of the host for one block.
struct TapeHostInfo
{
    double tempo = 120.0;       // beats per minute
    bool playing = false;
    double positionBeats = 0.0; // only read while playing
};

// The whole effect's run-time state: one tape channel and one dry delay per
// audio channel, and the block-level gains. The processor element derives its
// state from this and its setters write the fields; the methods below cover
// the writes with side effects.
struct TapeEffectState
{
    std::vector<TapeChannel> channels;
    std::vector<DelayLine> dryDelays;
    float mix = 1.0f;
    float outputGain = 1.0f; // linear
    float lfoFreq = 0.1f;    // Hz, or beats per cycle when synchronised
    bool noiseSync = false;  // true: channels and decks drift apart
    bool nrLink = true;
    bool compander = false;
    std::int32_t encoderType = 0;
    std::int32_t decoderType = 0;
    float latency = 0.06f;   // seconds: the forward heads' delay and the dry delay
    bool lowLatency = false;
    float outputPad;         // linear; -1 dB until first written

    // Working values of the render, set by prepare.
    double sampleRate = 0.0;
    SolverKernel kernel = SolverKernel::reference; // prepare picks the best this machine has
    std::uint32_t maxBlock = 0;
    // A state that only mirrors settings holds no tape and renders nothing.
    TapeStorage tapeStorage = TapeStorage::allocated;
    SeedSequence seeds;
    // The gains the block applies, gliding towards mix * outputGain * outputPad and
    // 1 - mix; only the render moves them.
    LinearRamp wetGain;
    LinearRamp dryGain;
    JumpRequest jumpRequest;

    static constexpr float normalLatency = 0.06f;
    static constexpr float lowLatencyValue = 0.01f;
    static constexpr double lowLatencyMaxFlangeDepth = 0.009;

    TapeEffectState();

    // Sizes all channels and lines; not for the audio thread.
    void prepare(double newSampleRate, std::uint32_t maxBlockSize, std::uint32_t channelCount);
    // After prepare: adds channels (prepared, with the first one's settings) or drops
    // them, and starts every channel from blank tape. Not for the audio thread.
    void setChannelCount(std::uint32_t channelCount);
    // Blank tapes and dry lines; the noise and drift seeds start over. The next block
    // takes every gain at its target.
    void reset() noexcept;
    // A state or preset loaded while the host stands still: the next block jumps to the
    // new gains rather than gliding. Any thread.
    void jumpToTargetsAtNextBlock() noexcept { jumpRequest.raise(); }
    std::unique_ptr<TapeEffectState> clone() const { return std::make_unique<TapeEffectState>(*this); }
    // The kernel prepare picks: lanes where the processor works two doubles at once.
    static SolverKernel bestSolverKernel() noexcept;

    // Renders one block in place. channelData holds channelCount pointers to n
    // floats; channels beyond those prepared are left untouched. hostTempo is
    // the element's last seen tempo and is updated when synchronised.
    // speedScratch receives the tape speed deviation (the last channel's
    // second deck); dryScratch is working memory. Both hold n floats.
    // Blocks longer than the prepared maximum are rendered in pieces. The two
    // decks of a channel run in one loop, so no copy of the input is needed.
    // Allocates nothing. Returns the flange position in -1..1 for the display.
    float render(float* const* channelData, std::uint32_t channelCount, std::uint32_t n, const TapeHostInfo& host,
                 bool syncToHost, float& hostTempo, float* speedScratch, float* dryScratch) noexcept;

    // ---- setter support: writes with side effects ----
    template <typename Function>
    void forEachDeck(Function&& function)
    {
        for (TapeChannel& channel : channels)
            for (TapeDeck& deck : channel.decks)
                function(deck);
    }

    // Flange depth in seconds for the second decks, held to what low latency allows.
    void setFlangeDepth(double seconds) noexcept;
    // Latency and the forward heads follow; depth is limited when switching on.
    void setLowLatency(bool on, double requestedFlangeDepth) noexcept;
    // Own random seeds per deck from the seed sequence, or the shared seeds back.
    void setNoiseSync(bool unsync) noexcept;
    // Restarts the seed sequence: fresh noise seeds for every record head, and
    // own drift seeds per deck while unsynchronised.
    void reseed() noexcept;
    // Stores the LFO frequency (Hz, or beats per cycle when synchronised) and
    // sets every deck's LFO rate.
    void setLfoFrequency(float value, bool syncToHost, float hostTempo) noexcept;
    // Manual mode moves the flange to its start.
    void setFlangeMode(std::int32_t mode) noexcept;
    // The manual flange position (-1..1) as a phase 0..1 on every deck.
    void setRelativeDelay(double value) noexcept;
    void setTapeSpeed(double speed) noexcept;
    void setFeedbackDelay(double seconds) noexcept;

private:
    // Block start: the glides head for what the setters last wrote, or jump there.
    void startGlides() noexcept;
    // x = wet * x + dryShare * dry, with the glides' values of this stretch.
    void applyGains(float* x, const float* dry, std::uint32_t n) const noexcept;
};

} // namespace oxa
