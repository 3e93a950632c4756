// Cost of the host state: writing the chunk, and a full apply that parses it,
// builds a new engine, rebinds 45 host parameters and rebuilds the buses.
// Target: well under 5 ms each. Runs on the message thread, as hosts call it.
#include "plugin/FluxDeckPlugin.h"

#include <benchmark/benchmark.h>

namespace
{
void saveState(benchmark::State& state)
{
    oxa::FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 512);
    for (auto _ : state)
    {
        juce::MemoryBlock chunk;
        plugin.getStateInformation(chunk);
        benchmark::DoNotOptimize(chunk.getData());
    }
}
BENCHMARK(saveState)->Unit(benchmark::kMicrosecond);

void applyState(benchmark::State& state)
{
    oxa::FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 512);
    juce::MemoryBlock chunk;
    plugin.getStateInformation(chunk);
    for (auto _ : state)
        plugin.setStateInformation(chunk.getData(), (int) chunk.getSize());
    state.counters["chunk_bytes"] = (double) chunk.getSize();
}
BENCHMARK(applyState)->Unit(benchmark::kMicrosecond);
} // namespace
