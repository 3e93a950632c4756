// Cost of the processor frame per block: the host's buffer through processBlock,
// the engine and the effect element, at 48 kHz stereo.
#include "plugin/FluxDeckPlugin.h"

#include <benchmark/benchmark.h>

namespace
{
void renderThroughPlugin(benchmark::State& state)
{
    const int blockSize = (int) state.range(0);
    constexpr double sampleRate = 48000.0;
    oxa::FluxDeckPlugin plugin;
    plugin.prepareToPlay(sampleRate, blockSize);
    juce::AudioBuffer<float> buffer(2, blockSize);
    juce::Random random(7);
    for (int c = 0; c < 2; ++c)
        for (int i = 0; i < blockSize; ++i)
            buffer.setSample(c, i, random.nextFloat() - 0.5f);
    juce::MidiBuffer midi;

    for (auto _ : state)
    {
        plugin.processBlock(buffer, midi);
        benchmark::DoNotOptimize(buffer.getReadPointer(0));
    }
    const double audioSeconds = (double) state.iterations() * blockSize / sampleRate;
    state.counters["realtime_x"] = benchmark::Counter(audioSeconds, benchmark::Counter::kIsRate);
}
BENCHMARK(renderThroughPlugin)->Arg(64)->Arg(512)->Unit(benchmark::kMicrosecond);
} // namespace

int main(int argc, char** argv)
{
    juce::ScopedJuceInitialiser_GUI juce;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
