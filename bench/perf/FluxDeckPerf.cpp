// What a mix engineer pays for one stereo instance at 48 kHz: the whole plug-in's
// processBlock and the deck DSP alone, on programme material, in the settings that
// matter (default, every stage on, the two heavy noise reductions), at 512- and
// 64-sample blocks; then the cost of each deck stage on its own and the memory an
// instance holds. A report, not a test: nothing here fails on a slow machine.
//
//   fluxdeck_perf [--seconds S] [--repeats N] [--only NAME] [--table-only]
//
// Each figure is the best of N runs over S seconds of audio (after a warm-up that fills
// the tape and lets feedback build up), in processor time of the rendering thread, so a
// busy machine disturbs it least.

#include "ProgrammeSignal.h"

#include "engine/Engine.h"
#include "plugin/FluxDeckPlugin.h"
#include "tape/DeckLoop.h"
#include "tape/FluxDeckProcessor.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <malloc.h>

#include <algorithm>
#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace
{
using namespace oxa;

// Processor time of this thread: on a shared machine the time others take is left out.
double threadSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

constexpr double sampleRate = 48000.0;
constexpr double warmUpSeconds = 2.0;

struct Options
{
    double seconds = 8.0;
    int repeats = 3;
    std::string only; // run only the settings whose name holds this
    bool tableOnly = false; // the main table alone: what a profiler should see
};

// ---- the settings measured ----

struct Setting
{
    const char* name;
    std::function<void(FluxDeckProcessor&)> apply;
};

void everyStageOn(FluxDeckProcessor& p)
{
    const auto& id = FluxDeckProcessor::ids();
    p.setBoolParameter(id.applyTransport, true);
    p.setFloatParameter(id.wowMod, 1.0f);
    p.setFloatParameter(id.wowRate, 1.5f);
    p.setFloatParameter(id.flutterMod, 1.0f);
    p.setFloatParameter(id.flutterRate, 20.0f);
    p.setFloatParameter(id.noiseMod, 1.0f);
    p.setFloatParameter(id.noiseRate, 30.0f);
    p.setFloatParameter(id.feedback, 0.9f);
    p.setFloatParameter(id.drive, 12.0f);
    p.setFloatParameter(id.hysteresis, 0.3f);
    p.setFloatParameter(id.noiseGain, -40.0f);
    p.setBoolParameter(id.applyNoiseGate, true);
    p.setBoolParameter(id.applyPlayheadFilter, true);
    p.setFloatParameter(id.spacing, 0.3f);
    p.setFloatParameter(id.thickness, 0.3f);
    p.setFloatParameter(id.azimuth, 0.3f);
    p.setFloatParameter(id.lfoFreq, 3.0f);
    p.setFloatParameter(id.lfoShape, 0.5f);
    p.setFloatParameter(id.lfoSymmetry, 0.3f);
    p.setFloatParameter(id.lfoSwing, 0.4f);
    p.setBoolParameter(id.noiseSync, true);
    // The light noise reduction: the heavy ones are the next two settings.
    p.setBoolParameter(id.applyCompander, true);
    p.setBoolParameter(id.nrLink, true);
    p.setIntParameter(id.noiseReductionEncoder, 1);
}

void heaviest(FluxDeckProcessor& p, int noiseReduction)
{
    everyStageOn(p);
    const auto& id = FluxDeckProcessor::ids();
    p.setFloatParameter(id.degradeDepth, 1.0f);
    p.setFloatParameter(id.degradeRate, 50.0f);
    p.setIntParameter(id.noiseReductionEncoder, noiseReduction);
}

std::vector<Setting> settings()
{
    return {
        {"default", [](FluxDeckProcessor&) {}},
        {"every stage on", everyStageOn},
        {"heaviest, three-band", [](FluxDeckProcessor& p) { heaviest(p, 2); }},
        {"heaviest, sliding-band", [](FluxDeckProcessor& p) { heaviest(p, 3); }},
    };
}

FluxDeckProcessor& processorOf(FluxDeckPlugin& plugin)
{
    Element* element = plugin.getEngine()->findElement("/FluxDeck");
    return *dynamic_cast<FluxDeckProcessor*>(element);
}

// ---- the signal, shared by every run ----

struct Programme
{
    std::vector<float> left, right;

    explicit Programme(double seconds)
        : left(bench::ProgrammeSignal::make(sampleRate, seconds, 0)),
          right(bench::ProgrammeSignal::make(sampleRate, seconds, 1))
    {
    }
    std::size_t length() const { return left.size(); }
};

// Copies block b of the programme (wrapping) into two channels.
void fillBlock(const Programme& programme, std::size_t start, int blockSize, float* left, float* right)
{
    for (int k = 0; k < blockSize; ++k)
    {
        const std::size_t n = (start + static_cast<std::size_t>(k)) % programme.length();
        left[k] = programme.left[n];
        right[k] = programme.right[n];
    }
}

// ---- whole plug-in ----

struct PluginRun
{
    double realTime = 0.0;  // audio seconds per second of one core
    double nsPerSample = 0.0; // per sample frame of the stereo pair
};

// Warms up, then keeps the fastest of the repeats; renderSeconds renders about that many
// seconds and returns the samples it rendered.
template <class Render>
PluginRun bestOf(Render& renderSeconds, const Options& options)
{
    renderSeconds(warmUpSeconds);
    double best = 1e300, samples = 0.0;
    for (int r = 0; r < options.repeats; ++r)
    {
        const double start = threadSeconds();
        samples = renderSeconds(options.seconds);
        best = std::min(best, threadSeconds() - start);
    }
    return {samples / sampleRate / best, best * 1e9 / samples};
}

PluginRun timePlugin(const Setting& setting, int blockSize, const Programme& programme, const Options& options)
{
    FluxDeckPlugin plugin;
    plugin.prepareToPlay(sampleRate, blockSize);
    setting.apply(processorOf(plugin));
    juce::AudioBuffer<float> buffer(2, blockSize);
    juce::MidiBuffer midi;
    std::size_t position = 0;
    auto renderSeconds = [&](double seconds) {
        const auto blocks = static_cast<std::size_t>(seconds * sampleRate / blockSize);
        for (std::size_t b = 0; b < blocks; ++b)
        {
            fillBlock(programme, position, blockSize, buffer.getWritePointer(0), buffer.getWritePointer(1));
            position += static_cast<std::size_t>(blockSize);
            plugin.processBlock(buffer, midi);
        }
        return static_cast<double>(blocks * static_cast<std::size_t>(blockSize));
    };
    return bestOf(renderSeconds, options);
}

// ---- deck DSP alone: the effect's state as the setters left it, rendered directly ----

PluginRun timeDecks(const Setting& setting, int blockSize, const Programme& programme, const Options& options,
                    SolverKernel kernel = TapeEffectState::bestSolverKernel())
{
    FluxDeckPlugin plugin;
    plugin.prepareToPlay(sampleRate, blockSize);
    FluxDeckProcessor& processor = processorOf(plugin);
    setting.apply(processor);
    TapeEffectState decks(*static_cast<const FluxDeckProcessor::State*>(processor.mainState()));
    decks.kernel = kernel;
    std::vector<float> left(static_cast<std::size_t>(blockSize)), right(left.size()), speed(left.size()),
        dry(left.size());
    float* channels[] = {left.data(), right.data()};
    float tempo = 120.0f;
    std::size_t position = 0;
    auto renderSeconds = [&](double seconds) {
        const auto blocks = static_cast<std::size_t>(seconds * sampleRate / blockSize);
        for (std::size_t b = 0; b < blocks; ++b)
        {
            fillBlock(programme, position, blockSize, left.data(), right.data());
            position += static_cast<std::size_t>(blockSize);
            decks.render(channels, 2, static_cast<std::uint32_t>(blockSize), TapeHostInfo{}, false, tempo,
                         speed.data(), dry.data());
        }
        return static_cast<double>(blocks * static_cast<std::size_t>(blockSize));
    };
    return bestOf(renderSeconds, options);
}

// ---- one stage at a time, one deck, on the same programme ----

// Runs stage over the programme's left channel, repeats times, best of; ns per sample.
double timeStage(const Programme& programme, const Options& options, const std::function<double(double)>& stage)
{
    const std::size_t n = std::min<std::size_t>(programme.length(), static_cast<std::size_t>(sampleRate * 4.0));
    double best = 1e300, sink = 0.0;
    for (int r = 0; r < options.repeats + 1; ++r)
    {
        const double start = threadSeconds();
        for (std::size_t k = 0; k < n; ++k)
            sink += stage(programme.left[k]);
        const double seconds = threadSeconds() - start;
        if (r > 0)
            best = std::min(best, seconds);
    }
    if (sink == 12345.678)
        std::printf(" ");
    return best * 1e9 / static_cast<double>(n);
}

void printStages(const Programme& programme, const Options& options)
{
    std::printf("\nDeck stages alone, one deck (the record head: both decks of a channel), ns per sample"
                " (best of %d):\n",
                options.repeats);
    auto row = [&](const char* name, const std::function<double(double)>& stage) {
        std::printf("  %-44s %8.1f\n", name, timeStage(programme, options, stage));
    };

    {
        Demagnetisation dropouts;
        dropouts.prepare(sampleRate);
        dropouts.setDepth(1.0);
        dropouts.setRate(50.0, 0);
        std::uint64_t s = 0;
        row("dropouts (demagnetisation gain)", [&](double v) { return v * dropouts.gainAt(s++); });
    }
    {
        TransportGenerator transport;
        transport.prepare(sampleRate);
        transport.wowDepth = 0.3;
        transport.flutterDepth = 0.05;
        transport.randomDepth = 0.1;
        std::vector<double> history(3000);
        TapeHead head;
        head.prepare(sampleRate / 32.0);
        std::uint64_t s = 0;
        row("transport and one head, per sample", [&](double v) {
            if ((s & 31u) == 0)
            {
                transport.tick(s >> 5, 0.0, 1.0, history.data(), history.size());
                head.tick(s >> 5, history.data(), history.size());
            }
            ++s;
            return v + head.currentDelay;
        });
    }
    {
        std::vector<double> ring(96000, 0.0);
        std::uint64_t w = 0;
        row("head read (interpolated)", [&](double v) {
            ring[w] = v;
            const double r = TapeHead::readAt(ring.data(), ring.size(), w, 2880.37 + static_cast<double>(w & 7));
            w = w + 1 == ring.size() ? 0 : w + 1;
            return r;
        });
    }
    row("saturator (drive 12 dB)", [](double v) { return tapeTanh(v * 3.98 * 0.01) * 100.0; });
    for (double drive : {1.0, 3.98})
    {
        RecordHead first, second;
        for (RecordHead* head : {&first, &second})
        {
            head->prepare(sampleRate);
            head->k = drive > 1.0 ? 100.0 * std::pow(10.0, 0.9) : 100.0;
        }
        second.restartNoise(7, 9);
        const std::string name = std::string("record head pair (drive ") + (drive > 1.0 ? "12" : "0") + " dB)";
        row(name.c_str(), [&](double v) {
            double a = tapeTanh(v * drive * 0.01) * 100.0, b = a;
            RecordHead::processPair(first, second, a, b);
            return 0.5 * (a + b);
        });
        row("  the same in lanes", [&](double v) {
            double a = tapeTanh(v * drive * 0.01) * 100.0, b = a;
            RecordHead::processPairInLanes(first, second, a, b);
            return 0.5 * (a + b);
        });
    }
    {
        PlaybackFilterChain chain;
        chain.prepare(sampleRate);
        chain.setSpacing(0.3 * 0.0001);
        chain.setAzimuth(0.001);
        row("playback chain", [&](double v) { return chain.process(v); });
    }
    {
        PreEmphasis shelf;
        shelf.prepare(sampleRate);
        row("pre-emphasis encoder + decoder", [&](double v) { return shelf.decode(shelf.encode(v)); });
    }
    // Each row starts from a freshly prepared compander, so no row inherits another's state.
    auto companderRow = [&](const char* name, auto compander, auto step) {
        compander.prepare(sampleRate);
        row(name, [&](double v) { return step(compander, v); });
    };
    companderRow("three-band encoder", ThreeBandCompander{}, [](auto& c, double v) { return c.encode(v); });
    companderRow("three-band encoder + decoder", ThreeBandCompander{},
                 [](auto& c, double v) { return c.decode(c.encode(v)); });
    companderRow("  the same in lanes", ThreeBandCompander{},
                 [](auto& c, double v) { return c.decodeInLanes(c.encode(v)); });
    companderRow("sliding-band encoder", SlidingBandCompander{}, [](auto& c, double v) { return c.encode(v); });
    companderRow("sliding-band encoder + decoder", SlidingBandCompander{},
                 [](auto& c, double v) { return c.decode(c.encode(v)); });
    companderRow("  the same in lanes", SlidingBandCompander{},
                 [](auto& c, double v) { return c.decodeInLanes(c.encodeInLanes(v)); });
}

// ---- memory ----

// The rings and lines of one effect state: what the tape itself takes.
std::size_t tapeBytes(const TapeEffectState& state)
{
    std::size_t bytes = sizeof(state);
    for (const TapeChannel& channel : state.channels)
        for (const TapeDeck& deck : channel.decks)
            bytes += sizeof(deck)
                     + (deck.inputRing.capacity() + deck.outputRing.capacity() + deck.spareRing.capacity()
                        + deck.speedHistory.capacity())
                           * sizeof(double);
    for (const DelayLine& line : state.dryDelays)
        bytes += sizeof(line) + line.buffer.capacity() * sizeof(float);
    return bytes;
}

std::size_t heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void printMemory(const Programme& programme)
{
    const std::size_t before = heapInUse();
    auto plugin = std::make_unique<FluxDeckPlugin>();
    const std::size_t built = heapInUse();
    plugin->prepareToPlay(sampleRate, 512);
    const std::size_t prepared = heapInUse();
    heaviest(processorOf(*plugin), 3);
    juce::AudioBuffer<float> buffer(2, 512);
    juce::MidiBuffer midi;
    std::size_t position = 0;
    auto render = [&](double seconds) {
        for (std::size_t b = 0; b < static_cast<std::size_t>(seconds * sampleRate / 512); ++b)
        {
            fillBlock(programme, position, 512, buffer.getWritePointer(0), buffer.getWritePointer(1));
            position += 512;
            plugin->processBlock(buffer, midi);
        }
    };
    render(1.0);
    const std::size_t settled = heapInUse();
    render(20.0);
    const std::size_t after = heapInUse();
    std::printf("\nMemory, one stereo instance at 48 kHz: %.2f MB of heap (plug-in, engine and tape)\n",
                static_cast<double>(settled - before) / (1024.0 * 1024.0));
    std::printf("  built %.2f MB, prepared %.2f MB more, first second of rendering %.2f MB more\n",
                static_cast<double>(built - before) / (1024.0 * 1024.0),
                static_cast<double>(prepared - built) / (1024.0 * 1024.0),
                (static_cast<double>(settled) - static_cast<double>(prepared)) / (1024.0 * 1024.0));
    std::printf("  one copy of the effect's tape state: %.2f MB\n",
                static_cast<double>(tapeBytes(*static_cast<const FluxDeckProcessor::State*>(
                    processorOf(*plugin).mainState()))) / (1024.0 * 1024.0));
    std::printf("Heap growth over 20 s of rendering: %lld bytes\n",
                static_cast<long long>(after) - static_cast<long long>(settled));
}

constexpr const char* usage = "usage: fluxdeck_perf [--seconds S] [--repeats N] [--only NAME] [--table-only]";

// Every option but --table-only takes a value; anything else is a mistake worth stopping for, since a
// silently ignored option would leave a table taken with settings nobody asked for.
bool parse(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; i += 2)
    {
        const char* name = argv[i];
        if (std::strcmp(name, "--table-only") == 0)
        {
            options.tableOnly = true;
            --i;
            continue;
        }
        if (i + 1 >= argc)
        {
            std::fprintf(stderr, "fluxdeck_perf: %s needs a value; %s\n", name, usage);
            return false;
        }
        const char* value = argv[i + 1];
        char* end = nullptr;
        if (std::strcmp(name, "--seconds") == 0)
        {
            const double seconds = std::strtod(value, &end);
            if (end == value || *end != '\0' || !(seconds > 0.0))
            {
                std::fprintf(stderr, "fluxdeck_perf: bad --seconds '%s'; %s\n", value, usage);
                return false;
            }
            options.seconds = std::max(0.5, seconds);
        }
        else if (std::strcmp(name, "--repeats") == 0)
        {
            const long repeats = std::strtol(value, &end, 10);
            if (end == value || *end != '\0' || repeats < 1 || repeats > 1000)
            {
                std::fprintf(stderr, "fluxdeck_perf: bad --repeats '%s'; %s\n", value, usage);
                return false;
            }
            options.repeats = static_cast<int>(repeats);
        }
        else if (std::strcmp(name, "--only") == 0)
            options.only = value;
        else
        {
            std::fprintf(stderr, "fluxdeck_perf: unknown option '%s'; %s\n", name, usage);
            return false;
        }
    }
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!parse(argc, argv, options))
        return 2;
    juce::ScopedJuceInitialiser_GUI juce;
    const Programme programme(std::max(options.seconds, 10.0));
    std::printf("Stereo 48 kHz, pink noise at -18 dBFS with drum hits; best of %d runs of %.1f s\n",
                options.repeats, options.seconds);
    std::printf("Real-time factor (ns per stereo sample frame in brackets)\n\n");
    std::printf("%-24s %22s %22s %22s %22s\n", "setting", "plug-in, 512", "plug-in, 64", "decks alone, 512",
                "decks alone, 64");
    for (const Setting& setting : settings())
    {
        if (std::string(setting.name).find(options.only) == std::string::npos)
            continue;
        std::printf("%-24s", setting.name);
        std::fflush(stdout);
        for (int blockSize : {512, 64})
        {
            const PluginRun run = timePlugin(setting, blockSize, programme, options);
            std::printf(" %10.1fx (%7.1f ns)", run.realTime, run.nsPerSample);
            std::fflush(stdout);
        }
        for (int blockSize : {512, 64})
        {
            const PluginRun run = timeDecks(setting, blockSize, programme, options);
            std::printf(" %10.1fx (%7.1f ns)", run.realTime, run.nsPerSample);
            std::fflush(stdout);
        }
        std::printf("\n");
    }
    if (options.tableOnly)
        return 0;
    std::printf("\nDecks alone at 512, reference solvers against solvers in lanes:\n");
    for (const Setting& setting : settings())
    {
        if (std::string(setting.name).find(options.only) == std::string::npos)
            continue;
        const PluginRun plain = timeDecks(setting, 512, programme, options, SolverKernel::reference);
        const PluginRun lanes = timeDecks(setting, 512, programme, options, SolverKernel::lanes);
        std::printf("  %-24s %8.1fx -> %8.1fx  (%.2f times faster)\n", setting.name, plain.realTime, lanes.realTime,
                    lanes.realTime / plain.realTime);
    }
    printStages(programme, options);
    printMemory(programme);
    return 0;
}
