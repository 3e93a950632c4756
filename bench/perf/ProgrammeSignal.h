#pragma once
// A deterministic stand-in for a mix bus: pink noise at -18 dBFS RMS with drum-like
// hits (a pitched-down thump and a noisy snap). Loud low-frequency material is what
// makes the tape's implicit solvers work hardest, so timing on a sine or on silence
// would flatter the plug-in.

#include <cmath>
#include <cstdint>
#include <vector>

namespace oxa::bench
{
class ProgrammeSignal
{
public:
    // Channel c of `seconds` at `sampleRate`; each channel has noise of its own and the
    // same hits, as a stereo drum bus has.
    static std::vector<float> make(double sampleRate, double seconds, std::uint32_t channel)
    {
        const auto length = static_cast<std::size_t>(sampleRate * seconds);
        std::vector<float> x(length);
        std::uint32_t state = 0x9e3779b9u ^ (channel * 0x85ebca6bu);
        double b0 = 0.0, b1 = 0.0, b2 = 0.0, b3 = 0.0, b4 = 0.0, b5 = 0.0, b6 = 0.0;
        double energy = 0.0;
        for (std::size_t n = 0; n < length; ++n)
        {
            const double white = uniform(state);
            // A fixed set of first-order sections whose sum falls at 3 dB an octave.
            b0 = 0.99886 * b0 + white * 0.0555179;
            b1 = 0.99332 * b1 + white * 0.0750759;
            b2 = 0.96900 * b2 + white * 0.1538520;
            b3 = 0.86650 * b3 + white * 0.3104856;
            b4 = 0.55000 * b4 + white * 0.5329522;
            b5 = -0.7616 * b5 - white * 0.0168980;
            const double pink = b0 + b1 + b2 + b3 + b4 + b5 + b6 + white * 0.5362;
            b6 = white * 0.115926;
            x[n] = static_cast<float>(pink);
            energy += pink * pink;
        }
        const double rms = std::sqrt(energy / static_cast<double>(length > 0 ? length : 1));
        const double target = std::pow(10.0, -18.0 / 20.0);
        const double scale = rms > 0.0 ? target / rms : 0.0;
        for (float& v : x)
            v = static_cast<float>(v * scale);
        addHits(x, sampleRate);
        return x;
    }

private:
    static double uniform(std::uint32_t& state)
    {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return static_cast<double>(state) * (2.0 / 4294967296.0) - 1.0;
    }

    // A thump on every beat and a snap on the off-beats at 120 bpm, peaking near -3 dBFS.
    static void addHits(std::vector<float>& x, double sampleRate)
    {
        const auto beat = static_cast<std::size_t>(sampleRate * 0.5);
        std::uint32_t state = 12345u;
        for (std::size_t start = 0, count = 0; start < x.size(); start += beat / 2, ++count)
        {
            const bool thump = count % 2 == 0;
            const auto length = static_cast<std::size_t>(sampleRate * (thump ? 0.25 : 0.12));
            double phase = 0.0;
            for (std::size_t k = 0; k < length && start + k < x.size(); ++k)
            {
                const double t = static_cast<double>(k) / sampleRate;
                double v;
                if (thump)
                {
                    const double frequency = 50.0 + 110.0 * std::exp(-t * 30.0);
                    phase += 2.0 * 3.141592653589793 * frequency / sampleRate;
                    v = 0.6 * std::sin(phase) * std::exp(-t * 14.0);
                }
                else
                {
                    v = 0.35 * uniform(state) * std::exp(-t * 35.0);
                }
                x[start + k] += static_cast<float>(v);
            }
        }
    }
};
} // namespace oxa::bench
