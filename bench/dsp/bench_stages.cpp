// Per-sample cost of the deck stages at 48 kHz. "per_sample" is the time per sample;
// the deck budget for 15x real time at 48 kHz stereo (4 decks) is about 340 ns a sample
// for a whole deck.
#include "tape/Demagnetisation.h"
#include "tape/PlaybackFilterChain.h"
#include "tape/PreEmphasis.h"
#include "tape/SlidingBandCompander.h"
#include "tape/ThreeBandCompander.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

namespace
{

constexpr double sampleRate = 48000.0;
constexpr int blockSize = 4800;

// Programme-like input around -20 dBFS, where the companders do real work.
const std::vector<double>& input()
{
    static const std::vector<double> x = []
    {
        std::vector<double> v (blockSize);
        uint32_t seed = 1u;
        for (int n = 0; n < blockSize; ++n)
        {
            seed = seed * 1664525u + 1013904223u;
            const double t = n / sampleRate;
            v[n] = 0.1 * (0.6 * std::sin (2.0 * 3.141592653589793 * 220.0 * t) + 0.2 * std::sin (2.0 * 3.141592653589793 * 3100.0 * t)
                          + 0.2 * (seed / 4294967296.0 - 0.5));
        }
        return v;
    }();
    return x;
}

void reportPerSample (benchmark::State& state)
{
    state.SetItemsProcessed (state.iterations() * blockSize);
    state.counters["per_sample"] = benchmark::Counter (static_cast<double> (blockSize),
                                                       benchmark::Counter::kIsIterationInvariantRate
                                                           | benchmark::Counter::kInvert);
}

template <class Stage>
void runStage (benchmark::State& state, Stage&& stage)
{
    const std::vector<double>& x = input();
    for (auto _ : state)
    {
        double sum = 0.0;
        for (double v : x)
            sum += stage (v);
        benchmark::DoNotOptimize (sum);
    }
    reportPerSample (state);
}

void PlaybackChain (benchmark::State& state)
{
    oxa::PlaybackFilterChain chain;
    chain.prepare (sampleRate);
    chain.setAzimuth (0.001);
    runStage (state, [&] (double v) { return chain.process (v); });
}

void DemagnetisationGain (benchmark::State& state)
{
    oxa::Demagnetisation dropouts;
    dropouts.prepare (sampleRate);
    dropouts.setDepth (1.0);
    uint64_t s = 0;
    runStage (state, [&] (double v) { return v * dropouts.gainAt (s++); });
}

void PreEmphasisPair (benchmark::State& state)
{
    oxa::PreEmphasis shelf;
    shelf.prepare (sampleRate);
    runStage (state, [&] (double v) { return shelf.decode (shelf.encode (v)); });
}

void ThreeBandEncoder (benchmark::State& state)
{
    oxa::ThreeBandCompander compander;
    compander.prepare (sampleRate);
    runStage (state, [&] (double v) { return compander.encode (v); });
}

void ThreeBandPair (benchmark::State& state)
{
    oxa::ThreeBandCompander compander;
    compander.prepare (sampleRate);
    runStage (state, [&] (double v) { return compander.decode (compander.encode (v)); });
}

void SlidingBandEncoder (benchmark::State& state)
{
    oxa::SlidingBandCompander compander;
    compander.prepare (sampleRate);
    runStage (state, [&] (double v) { return compander.encode (v); });
}

void SlidingBandPair (benchmark::State& state)
{
    oxa::SlidingBandCompander compander;
    compander.prepare (sampleRate);
    runStage (state, [&] (double v) { return compander.decode (compander.encode (v)); });
}

// The heaviest setting of these stages in one deck: dropouts, a "Type A" pair and the head.
void HeaviestStagesOfOneDeck (benchmark::State& state)
{
    oxa::Demagnetisation dropouts;
    oxa::ThreeBandCompander compander;
    oxa::PlaybackFilterChain chain;
    dropouts.prepare (sampleRate);
    dropouts.setDepth (1.0);
    compander.prepare (sampleRate);
    chain.prepare (sampleRate);
    uint64_t s = 0;
    runStage (state, [&] (double v)
              { return chain.process (compander.decode (compander.encode (v * dropouts.gainAt (s++)))); });
}

} // namespace

BENCHMARK (PlaybackChain);
BENCHMARK (DemagnetisationGain);
BENCHMARK (PreEmphasisPair);
BENCHMARK (ThreeBandEncoder);
BENCHMARK (ThreeBandPair);
BENCHMARK (SlidingBandEncoder);
BENCHMARK (SlidingBandPair);
BENCHMARK (HeaviestStagesOfOneDeck);
