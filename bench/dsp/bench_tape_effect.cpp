// Real-time factor of the whole tape effect (stereo, 48 kHz, 512-sample blocks).

#include "tape/Decibels.h"
#include "tape/TapeEffect.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

namespace
{
using namespace oxa;

constexpr double sampleRate = 48000.0;
constexpr std::uint32_t blockSize = 512;
constexpr std::uint32_t channelCount = 2;

// What the element's setters leave behind at their defaults.
void applyDefaults(TapeEffectState& state)
{
    state.forEachDeck([](TapeDeck& deck) {
        deck.setRecordHardness(1.0);
        deck.setRecordResistance(100.0);
        deck.setDrive(1.0);
        deck.noiseGain = dbToLinear(-80.0f);
    });
    state.outputPad = 1.0f;
}

void applyHeavy(TapeEffectState& state)
{
    state.forEachDeck([](TapeDeck& deck) {
        deck.transport.wowDepth = 0.3;
        deck.transport.wowRate = 1.5;
        deck.transport.flutterDepth = 0.05;
        deck.transport.flutterRate = 20.0;
        deck.transport.randomDepth = 0.1;
        deck.transport.randomRate = 30.0;
        deck.feedback = 0.9;
        deck.setDrive(dbToLinear(12.0f));
        deck.setRecordResistance(1000.0);
        deck.noiseGain = dbToLinear(-40.0f);
        deck.LFOShape = 0.5f;
        deck.LFOSymmetry = 0.3f;
        deck.LFOSwing = 0.4f;
    });
    state.setNoiseSync(true);
    state.setLfoFrequency(3.0f, false, 120.0f);
}

std::size_t bytesOf(const TapeEffectState& state)
{
    std::size_t bytes = sizeof(state);
    for (const TapeChannel& channel : state.channels)
    {
        bytes += sizeof(channel);
        for (const TapeDeck& deck : channel.decks)
            bytes += (deck.inputRing.capacity() + deck.outputRing.capacity() + deck.spareRing.capacity()
                      + deck.speedHistory.capacity())
                     * sizeof(double);
    }
    for (const DelayLine& line : state.dryDelays)
        bytes += sizeof(line) + line.buffer.capacity() * sizeof(float);
    return bytes;
}

// The heavy setting plus dropouts and one noise reduction type both ways
// (2: three-band "Type A", 3: sliding-band "Type B").
void applyFullNoiseReduction(TapeEffectState& state, int type)
{
    applyHeavy(state);
    state.forEachDeck([type](TapeDeck& deck) {
        deck.setDegradeDepth(0.5);
        deck.setDegradeRate(20.0);
        deck.setEncoderType(type);
        deck.setDecoderType(type);
    });
}

enum class Setting
{
    defaults,
    heavy,
    typeA,
    typeB
};

void renderTape(benchmark::State& bench, Setting setting)
{
    TapeEffectState state;
    state.prepare(sampleRate, blockSize, channelCount);
    applyDefaults(state);
    if (setting == Setting::heavy)
        applyHeavy(state);
    else if (setting == Setting::typeA)
        applyFullNoiseReduction(state, 2);
    else if (setting == Setting::typeB)
        applyFullNoiseReduction(state, 3);

    std::mt19937 rng(11);
    std::uniform_real_distribution<float> noise(-0.05f, 0.05f);
    const std::size_t sourceLength = 48000;
    std::vector<float> source(sourceLength);
    for (std::size_t n = 0; n < sourceLength; ++n)
        source[n] = 0.25f * static_cast<float>(std::sin(2.0 * 3.141592653589793 * 330.0 * n / sampleRate)) + noise(rng);

    std::vector<float> left(blockSize), right(blockSize), speed(blockSize), dry(blockSize);
    float* channels[channelCount] = {left.data(), right.data()};
    float hostTempo = 120.0f;
    std::size_t position = 0;
    std::int64_t blocks = 0;
    for (auto _ : bench)
    {
        for (std::uint32_t k = 0; k < blockSize; ++k)
            left[k] = right[k] = source[(position + k) % sourceLength];
        position += blockSize;
        const float flange = state.render(channels, channelCount, blockSize, TapeHostInfo{}, false, hostTempo,
                                          speed.data(), dry.data());
        benchmark::DoNotOptimize(flange);
        benchmark::DoNotOptimize(left.data());
        ++blocks;
    }
    const double audioSeconds = static_cast<double>(blocks) * blockSize / sampleRate;
    bench.counters["realtime_x"] = benchmark::Counter(audioSeconds, benchmark::Counter::kIsRate);
    bench.counters["instance_MB"] = static_cast<double>(bytesOf(state)) / (1024.0 * 1024.0);
}

void BM_TapeEffectDefault(benchmark::State& bench)
{
    renderTape(bench, Setting::defaults);
}

void BM_TapeEffectHeavy(benchmark::State& bench)
{
    renderTape(bench, Setting::heavy);
}

void BM_TapeEffectTypeA(benchmark::State& bench)
{
    renderTape(bench, Setting::typeA);
}

void BM_TapeEffectTypeB(benchmark::State& bench)
{
    renderTape(bench, Setting::typeB);
}

} // namespace

BENCHMARK(BM_TapeEffectDefault)->Unit(benchmark::kMicrosecond)->MinTime(2.0);
BENCHMARK(BM_TapeEffectHeavy)->Unit(benchmark::kMicrosecond)->MinTime(2.0);
BENCHMARK(BM_TapeEffectTypeA)->Unit(benchmark::kMicrosecond)->MinTime(2.0);
BENCHMARK(BM_TapeEffectTypeB)->Unit(benchmark::kMicrosecond)->MinTime(2.0);
