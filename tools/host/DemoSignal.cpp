#include "host/DemoSignal.h"

#include <cmath>

namespace oxa::host
{
namespace
{
constexpr double kTwoPi = 6.283185307179586;
constexpr double kBeatsPerMinute = 110.0;
constexpr float kPeak = 0.70794578f; // -3 dBFS

/** Sawtooth with polynomial band-limited steps: bright, with little aliasing. */
struct SawOscillator
{
    double phase = 0.0;
    double increment = 0.0;

    static double blep(double t, double dt)
    {
        if (t < dt)
        {
            t /= dt;
            return t + t - t * t - 1.0;
        }
        if (t > 1.0 - dt)
        {
            t = (t - 1.0) / dt;
            return t * t + t + t + 1.0;
        }
        return 0.0;
    }

    double next()
    {
        const auto value = 2.0 * phase - 1.0 - blep(phase, increment);
        phase += increment;
        if (phase >= 1.0)
            phase -= 1.0;
        return value;
    }
};

double noteFrequency(int midiNote)
{
    return 440.0 * std::pow(2.0, (midiNote - 69) / 12.0);
}

void addPad(juce::AudioBuffer<float>& out, double sampleRate)
{
    // Two chords, two bars each; the right channel is detuned against the left.
    static const int chords[2][5] = { { 45, 52, 60, 67, 71 }, { 41, 48, 57, 64, 69 } };
    const auto samplesPerChord = (int) (8.0 * 60.0 / kBeatsPerMinute * sampleRate);
    const double detuneCents[2] = { -5.0, 5.0 };

    for (int channel = 0; channel < 2; ++channel)
    {
        SawOscillator voices[5];
        double lowpass = 0.0;
        auto* samples = out.getWritePointer(channel);

        for (int i = 0; i < out.getNumSamples(); ++i)
        {
            const auto chord = (i / samplesPerChord) % 2;

            if (i % samplesPerChord == 0)
                for (int v = 0; v < 5; ++v)
                    voices[v].increment = noteFrequency(chords[chord][v])
                                          * std::pow(2.0, detuneCents[channel] * (v % 2 ? 1.0 : -0.6) / 1200.0)
                                          / sampleRate;

            double sum = 0.0;
            for (auto& voice : voices)
                sum += voice.next();

            // A slow swell and a gentle one-pole roll-off keep it a pad, still bright.
            const auto t = (double) i / sampleRate;
            const auto swell = 0.6 + 0.4 * std::sin(kTwoPi * 0.25 * t);
            lowpass += 0.5 * (sum - lowpass);
            samples[i] += (float) (0.07 * swell * lowpass);
        }
    }
}

void addDrums(juce::AudioBuffer<float>& out, double sampleRate)
{
    juce::Random random(20240611);
    const auto samplesPerEighth = 30.0 / kBeatsPerMinute * sampleRate;
    auto* left = out.getWritePointer(0);
    auto* right = out.getWritePointer(1);
    double previousNoise = 0.0;

    for (int i = 0; i < out.getNumSamples(); ++i)
    {
        const auto eighth = (int) (i / samplesPerEighth);
        const auto sinceEighth = (i - eighth * samplesPerEighth) / sampleRate;
        const auto beatInBar = (eighth / 2) % 4;
        const auto onBeat = eighth % 2 == 0;
        const auto noise = random.nextDouble() * 2.0 - 1.0;
        const auto bright = noise - previousNoise;
        previousNoise = noise;

        double kick = 0.0, snare = 0.0;

        if (onBeat && (beatInBar == 0 || beatInBar == 2))
        {
            // Pitch falls from about 150 Hz to 50 Hz: the phase is the integral of that sweep.
            const auto phase = kTwoPi * (50.0 * sinceEighth + 100.0 * 0.03 * (1.0 - std::exp(-sinceEighth / 0.03)));
            kick = 0.9 * std::sin(phase) * std::exp(-sinceEighth / 0.22);
        }

        if (onBeat && (beatInBar == 1 || beatInBar == 3))
            snare = (0.45 * noise + 0.3 * std::sin(kTwoPi * 190.0 * sinceEighth)) * std::exp(-sinceEighth / 0.11);

        const auto hat = 0.18 * bright * std::exp(-sinceEighth / 0.025);

        left[i] += (float) (kick + snare + 0.7 * hat);
        right[i] += (float) (kick + 0.9 * snare + hat);
    }
}

void addNoiseBursts(juce::AudioBuffer<float>& out, double sampleRate)
{
    // Broadband noise makes the comb of a flanger plainly audible.
    juce::Random random(77);
    const auto period = 8.0 * 60.0 / kBeatsPerMinute;
    const auto length = 0.6;

    for (int i = 0; i < out.getNumSamples(); ++i)
    {
        const auto t = std::fmod((double) i / sampleRate + 0.5 * period, period);

        if (t >= length)
            continue;

        const auto envelope = 0.25 * std::sin(juce::MathConstants<double>::pi * t / length);
        out.getWritePointer(0)[i] += (float) (envelope * (random.nextDouble() * 2.0 - 1.0));
        out.getWritePointer(1)[i] += (float) (envelope * (random.nextDouble() * 2.0 - 1.0));
    }
}
} // namespace

juce::AudioBuffer<float> makeDemoSignal(double sampleRate, double seconds)
{
    const auto length = sampleRate > 0.0 && seconds > 0.0 ? (int) std::lround(sampleRate * seconds) : 0;
    juce::AudioBuffer<float> out(2, length);
    out.clear();

    if (length == 0)
        return out;

    addPad(out, sampleRate);
    addDrums(out, sampleRate);
    addNoiseBursts(out, sampleRate);

    const auto peak = juce::jmax(out.getMagnitude(0, 0, length), out.getMagnitude(1, 0, length));

    if (peak > 0.0f)
        out.applyGain(kPeak / peak);

    return out;
}
} // namespace oxa::host
