#include "tape/ThreeBandCompander.h"

#include <algorithm>
#include <cmath>

namespace oxa
{

namespace
{
    enum class BandShape
    {
        lowPass,
        mid,
        highPass
    };

    struct BandDesign
    {
        BandShape shape;
        double w;       // corner in rad/s
        double z;       // damping
        double gain;    // into the filter
        double levelDb; // curve scale
        double ratio;   // curve spread
    };

    constexpr BandDesign bandDesigns[3] {
        {BandShape::lowPass, 502.6548245743669, 11.79988354, 2.52985696, -54.91727803, 0.7},
        {BandShape::mid, 5331.459525790039, 99.99999991, 2.23676129, -48.69382961, 0.31877737},
        {BandShape::highPass, 56548.66776461628, 0.53139937, 1.78603319, -46.88093855, 0.3},
    };

    constexpr double resistance = 5000000.0;
    constexpr double capacitance = 1e-9;
    constexpr double step = 1e-6;
    constexpr int decoderIterations = 3;
} // namespace

void ThreeBandSidechain::prepare (double fs) noexcept
{
    for (int i = 0; i < 3; ++i)
    {
        const BandDesign& design = bandDesigns[i];
        Band& band = bands[i];
        const double w = design.w, z = design.z;
        const double d = 4.0 * fs * fs + 4.0 * z * fs * w + w * w;
        band.a1 = (2.0 * w * w - 8.0 * fs * fs) / d;
        band.a2 = (4.0 * fs * fs - 4.0 * z * fs * w + w * w) / d;
        switch (design.shape)
        {
            case BandShape::lowPass:
                band.b0 = w * w / d;
                band.b1 = 2.0 * band.b0;
                band.b2 = band.b0;
                break;
            case BandShape::mid:
                // (1, -1, 0) rather than a band-pass's (1, 0, -1): that is the sound.
                band.b0 = 8.0 * z * fs * w / d;
                band.b1 = -band.b0;
                band.b2 = 0.0;
                break;
            case BandShape::highPass:
                band.b0 = 4.0 * fs * fs / d;
                band.b1 = -2.0 * band.b0;
                band.b2 = band.b0;
                break;
        }
        band.gain = design.gain;
        band.curve.setCurve (design.levelDb, design.ratio);
        band.curve.setEnvelope (resistance, capacitance, fs);
    }
    clear();
}

void ThreeBandSidechain::clear() noexcept
{
    for (Band& band : bands)
    {
        band.x1 = band.x2 = band.y1 = band.y2 = band.history = 0.0;
        band.input = band.output = 0.0;
        band.curve.clear();
    }
}

void ThreeBandCompander::prepare (double sampleRate) noexcept
{
    if (! (std::isfinite (sampleRate) && sampleRate > 0.0))
        return;
    encoder.prepare (sampleRate);
    decoder.prepare (sampleRate);
    decoderSolution = 0.0;
}

void ThreeBandCompander::reset() noexcept
{
    encoder.clear();
    decoder.clear();
    decoderSolution = 0.0;
}

double ThreeBandCompander::encode (double x) noexcept
{
    if (! std::isfinite (x))
        return x; // keep the state; the value itself is the caller's problem
    const double y = encoder.forward (x);
    encoder.commit();
    return y;
}

double ThreeBandCompander::decode (double v) noexcept
{
    return decodeWith<false> (v);
}

double ThreeBandCompander::decodeInLanes (double v) noexcept
{
    return decodeWith<true> (v);
}

template <bool InLanes>
bool ThreeBandCompander::decoderStep (double v, double& y) const noexcept
{
    double at, beside;
    if constexpr (InLanes)
    {
        const Lanes both = decoder.forwardInLanes (Lanes (y, y + step));
        at = both.first();
        beside = both.second();
    }
    else
    {
        decoder.forwardPair (y, y + step, at, beside);
    }
    const double error = v - at;
    const double correction = error / ((v - beside - error) * 1e6 + 1e-16);
    y -= correction;
    return std::abs (correction) <= step;
}

double ThreeBandCompander::finishDecode (double y) noexcept
{
    decoderSolution = y;
    decoder.forward (y);
    decoder.commit();
    return y;
}

template <bool InLanes>
double ThreeBandCompander::decodeWith (double v) noexcept
{
    if (! std::isfinite (v))
        return v;

    double y = decoderSolution;
    for (int i = 0; i < decoderIterations; ++i)
        if (decoderStep<InLanes> (v, y))
            break;
    return finishDecode (y);
}

void ThreeBandCompander::decodeFourInLanes (ThreeBandCompander* const* companders, double* v) noexcept
{
    // Each decoder steps exactly as decode() steps it; the four take their steps in turn
    // within one loop, so that the processor works on several at once.
    double y[4];
    bool solving[4];
    for (int d = 0; d < 4; ++d)
    {
        solving[d] = std::isfinite (v[d]);
        y[d] = companders[d]->decoderSolution;
    }
    bool finite[4];
    std::copy (solving, solving + 4, finite);
    for (int i = 0; i < decoderIterations; ++i)
    {
        bool any = false;
        for (int d = 0; d < 4; ++d)
        {
            if (solving[d])
                solving[d] = ! companders[d]->decoderStep<true> (v[d], y[d]);
            any = any || solving[d];
        }
        if (! any)
            break;
    }
    for (int d = 0; d < 4; ++d)
        if (finite[d])
            v[d] = companders[d]->finishDecode (y[d]);
}

} // namespace oxa
