// The sound under automation, measured on audio rendered through the built bundle.

#include "HostedPluginSupport.h"

namespace oxa::host::testing
{
namespace
{
constexpr double pi = 3.141592653589793;

// Host values are normalised; every parameter used here maps its range linearly (Delay's
// logarithmic mapping is only used at its end).
struct Rig : HostedInstance
{
    double rate;

    explicit Rig(double sampleRate = 48000.0) : HostedInstance(sampleRate, 512), rate(sampleRate) {}

    void set(const char* name, float normalised)
    {
        auto* parameter = findParameter(*plugin, name);
        ASSERT_NE(parameter, nullptr) << name;
        parameter->setValueNotifyingHost(normalised);
        settle();
    }

    std::vector<float> render(const std::vector<float>& x)
    {
        juce::AudioBuffer<float> input(2, (int) x.size());
        for (int c = 0; c < 2; ++c)
            input.copyFrom(c, 0, x.data(), (int) x.size());
        const auto output = renderer->render(input, 0);
        return { output.getReadPointer(0), output.getReadPointer(0) + output.getNumSamples() };
    }
};

std::vector<float> sine(double frequency, double amplitude, double rate, int length, double phase = 0.0)
{
    std::vector<float> x((size_t) length);
    for (int n = 0; n < length; ++n)
        x[(size_t) n] = (float) (amplitude * std::sin(2.0 * pi * frequency * n / rate + phase));
    return x;
}

double rms(const std::vector<float>& y, size_t from, size_t to)
{
    double sum = 1e-30;
    for (size_t n = from; n < to; ++n)
        sum += (double) y[n] * y[n];
    return std::sqrt(sum / (double) (to - from));
}

void tapeStagesOffAndDecksTogether(Rig& rig)
{
    rig.set("Apply Tape Simulation", 0.0f);
    rig.set("Apply Playback Filter", 0.0f);
    rig.set("Apply Transport Modulations", 0.0f);
    rig.set("Flange Mode", 0.0f);   // Manual
    rig.set("Manual Flange", 0.5f); // the centre: both decks at the nominal delay
}
} // namespace

// Wet and dry in time: at Mix 50 % with both decks at the same delay nothing combs.
TEST(HostedAutomationSound, HalfMixIsFlatToTwentyKilohertz)
{
    for (double rate : { 44100.0, 48000.0, 96000.0 })
    {
        Rig rig(rate);
        ASSERT_NE(rig.plugin, nullptr);
        tapeStagesOffAndDecksTogether(rig);
        rig.set("Mix", 0.5f);
        for (double frequency : { 1000.0, 10000.0, 20000.0 })
        {
            const auto y = rig.render(sine(frequency, 0.5, rate, (int) (0.3 * rate)));
            const double gain = 20.0 * std::log10(rms(y, (size_t) (0.15 * rate), y.size()) / (0.5 / std::sqrt(2.0)));
            EXPECT_NEAR(gain, 0.0, 0.1) << frequency << " Hz at " << rate << " Hz";
        }
    }
}

// Drive steps on pink noise, quiet and loud: every 1 ms of the stepped render stays within
// 1 dB of the levels that the two settled renders give at the same place (windows 10 dB
// below the programme are its quiet moments and are judged at that floor), and once the
// new record path has taken over (0.6 s) the stepped render is the settled one at the new
// drive. Before: a 0.15 s crossfade whose new path started from the old path's memory
// missed on loud material by up to 3.9 dB, gliding through the drives between by 8.5 dB.
TEST(HostedAutomationSound, DriveStepsKeepTheLevel)
{
    struct Step
    {
        double scale; // 0.004: about -35 dBFS peak; 0.064: about -11 dBFS; 0.25: about 0 dBFS
        float from, to; // normalised: 40 dB full scale
    };
    const size_t stepAt = 24000, length = 72000, window = 48;
    for (auto step : { Step { 0.004, 0.0f, 0.5f }, Step { 0.004, 0.5f, 0.0f }, Step { 0.004, 0.0f, 1.0f },
                       Step { 0.064, 0.0f, 1.0f }, Step { 0.064, 1.0f, 0.0f }, Step { 0.25, 0.0f, 1.0f },
                       Step { 0.25, 1.0f, 0.0f } })
    {
        juce::Random random(3);
        std::vector<float> noise(length);
        double rows[3] = {};
        for (auto& v : noise)
        {
            const double white = random.nextDouble() * 2.0 - 1.0;
            rows[0] = 0.99765 * rows[0] + 0.099046 * white;
            rows[1] = 0.963 * rows[1] + 0.2965164 * white;
            rows[2] = 0.57 * rows[2] + 1.0526913 * white;
            v = (float) (step.scale * (rows[0] + rows[1] + rows[2] + 0.1848 * white));
        }
        auto render = [&](float first, float second) {
            Rig rig;
            rig.set("Drive", first);
            auto head = rig.render({ noise.begin(), noise.begin() + (long) stepAt });
            findParameter(*rig.plugin, "Drive")->setValueNotifyingHost(second);
            const auto tail = rig.render({ noise.begin() + (long) stepAt, noise.end() });
            head.insert(head.end(), tail.begin(), tail.end());
            return head;
        };
        const auto before = render(step.from, step.from), after = render(step.to, step.to),
                   stepped = render(step.from, step.to);
        auto level = [](const std::vector<float>& y, size_t start, size_t end) { return 20.0 * std::log10(rms(y, start, end)); };
        const double floor = std::min(level(before, stepAt, length), level(after, stepAt, length)) - 10.0;
        double worst = 0.0;
        for (size_t start = stepAt; start + window <= length; start += window)
        {
            const double a = std::max(floor, level(before, start, start + window));
            const double b = std::max(floor, level(after, start, start + window));
            const double s = std::max(floor, level(stepped, start, start + window));
            worst = std::max({ worst, s - std::max(a, b), std::min(a, b) - s });
        }
        const std::string name = "scale " + std::to_string(step.scale) + ": Drive " + std::to_string(step.from * 40)
                                 + " dB -> " + std::to_string(step.to * 40) + " dB";
        EXPECT_LT(worst, 1.0) << name;

        std::vector<float> difference(length);
        for (size_t n = 0; n < length; ++n)
            difference[n] = stepped[n] - after[n];
        const size_t lastTenth = length - 4800;
        EXPECT_LT(level(difference, lastTenth, length), level(after, lastTenth, length) - 30.0) << name;
    }
}

// Gain steps on a 1 kHz sine, placed where the output is at a peak: no sample moves further
// than the sine's own largest step.
TEST(HostedAutomationSound, GainStepsGlideWithoutAJump)
{
    struct Step
    {
        const char* name;
        float from, to;
    };
    for (auto step : { Step { "Mix", 0.0f, 1.0f }, Step { "Output Gain", 0.5f, 0.125f },
                       Step { "Output Pad", 0.5f, 0.0f }, Step { "Input Gain", 0.5f, 0.125f } })
    {
        Rig rig;
        ASSERT_NE(rig.plugin, nullptr);
        rig.set("Flange Mode", 0.0f);
        rig.set("Manual Flange", 0.5f);
        rig.set("Phase Invert", step.name[0] == 'M' ? 1.0f : 0.0f); // the wet cancels: Mix 0 -> 100 % fades out
        rig.set(step.name, step.from);
        const auto latency = rig.plugin->getLatencySamples();
        // The step lands on a crest of the sine at the output.
        const int first = 48000 + 12 - latency % 48;
        auto y = rig.render(sine(1000.0, 0.5, 48000.0, first));
        findParameter(*rig.plugin, step.name)->setValueNotifyingHost(step.to);
        const auto tail = rig.render(sine(1000.0, 0.5, 48000.0, 24000, 2.0 * pi * first / 48.0));
        y.insert(y.end(), tail.begin(), tail.end());

        float crest = 0.0f, largestStep = 0.0f;
        for (size_t n = (size_t) first - 480; n < (size_t) first; ++n)
            crest = std::max(crest, std::abs(y[n]));
        for (size_t n = (size_t) latency + 1000; n < y.size(); ++n)
            largestStep = std::max(largestStep, std::abs(y[n] - y[n - 1]));
        EXPECT_LT(largestStep, 1.05f * crest * 2.0f * std::sin((float) pi / 48.0f)) << step.name;
    }
}

// A runaway loop (Feedback 100 %, compensation off, 2 ms) settles below +12 dBFS.
TEST(HostedAutomationSound, RunawayLoopStaysBelowTwelveDecibels)
{
    struct Loop
    {
        float drive, speed, noiseReduction;
    };
    for (auto loop : { Loop { 0.0f, 1.0f / 1.3f, 0.0f }, Loop { 0.0f, 1.0f, 0.0f }, Loop { 0.5f, 1.0f, 1.0f },
                       Loop { 1.0f, 0.0f, 0.0f } })
    {
        Rig rig;
        ASSERT_NE(rig.plugin, nullptr);
        rig.set("Compensate Feedback", 0.0f);
        rig.set("Feedback", 1.0f);
        rig.set("Delay", 0.0f); // 2 ms
        rig.set("Drive", loop.drive);
        rig.set("Tape Speed", loop.speed);
        rig.set("Noise Reduction Encoder", loop.noiseReduction);
        const auto y = rig.render(sine(1000.0, 1.0, 48000.0, 48000));
        float peak = 0.0f;
        for (float v : y)
            peak = std::max(peak, std::abs(v));
        EXPECT_LT(20.0 * std::log10(peak), 12.0) << "drive " << loop.drive << ", speed " << loop.speed;
    }
}
} // namespace oxa::host::testing
