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

ThreeBandSidechain::TwoInLanes::TwoInLanes (const ThreeBandSidechain& first,
                                            const ThreeBandSidechain& second) noexcept
{
    for (int i = 0; i < 3; ++i)
    {
        const ThreeBandSidechain::Band& a = first.bands[i];
        const ThreeBandSidechain::Band& b = second.bands[i];
        bands[i] = {Lanes (a.b0, b.b0), Lanes (a.gain, b.gain), Lanes (a.history, b.history),
                    EnvelopeCurve::gather (a.curve, b.curve)};
    }
}

void ThreeBandSidechain::TwoInLanes::refresh (const ThreeBandSidechain& first,
                                              const ThreeBandSidechain& second) noexcept
{
    for (int i = 0; i < 3; ++i)
    {
        bands[i].history = Lanes (first.bands[i].history, second.bands[i].history);
        EnvelopeCurve::gatherCharges (bands[i].curve, first.bands[i].curve, second.bands[i].curve);
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

void ThreeBandCompander::encodeFourInLanes (ThreeBandCompander* const* companders, double* x) noexcept
{
    ThreeBandSidechain::TwoInLanes sides[] = {encoderLanes (*companders[0], *companders[1]),
                                              encoderLanes (*companders[2], *companders[3])};
    encodeFourInLanes (companders, x, sides);
}

void ThreeBandCompander::encodeFourInLanes (ThreeBandCompander* const* companders, double* x,
                                            ThreeBandSidechain::TwoInLanes* sides) noexcept
{
    for (int p = 0; p < 2; ++p)
    {
        ThreeBandCompander& first = *companders[2 * p];
        ThreeBandCompander& second = *companders[2 * p + 1];
        double& xFirst = x[2 * p];
        double& xSecond = x[2 * p + 1];
        if (! (std::isfinite (xFirst) && std::isfinite (xSecond)))
        {
            // A non-finite sample passes and leaves its deck alone.
            xFirst = first.encode (xFirst);
            xSecond = second.encode (xSecond);
            continue;
        }
        sides[p].refresh (first.encoder, second.encoder);
        const Lanes y = sides[p].forwardInto (first.encoder, second.encoder, Lanes (xFirst, xSecond));
        first.encoder.commit();
        second.encoder.commit();
        xFirst = y.first();
        xSecond = y.second();
    }
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
    ThreeBandSidechain::TwoInLanes sides[] = {decoderLanes (*companders[0], *companders[1]),
                                              decoderLanes (*companders[2], *companders[3])};
    decodeFourInLanes (companders, v, sides);
}

void ThreeBandCompander::decodeFourInLanes (ThreeBandCompander* const* companders, double* v,
                                            ThreeBandSidechain::TwoInLanes* sides) noexcept
{
    // Two decoders a register: every lane steps exactly as decode() steps its decoder
    // alone, and keeps its solution once converged.
    for (int p = 0; p < 2; ++p)
        sides[p].refresh (companders[2 * p]->decoder, companders[2 * p + 1]->decoder);
    bool finite[4];
    for (int d = 0; d < 4; ++d)
        finite[d] = std::isfinite (v[d]);
    Lanes target[2], y[2];
    LaneMask running[2];
    for (int p = 0; p < 2; ++p)
    {
        target[p] = Lanes (v[2 * p], v[2 * p + 1]);
        y[p] = Lanes (companders[2 * p]->decoderSolution, companders[2 * p + 1]->decoderSolution);
        running[p] = LaneMask::of (finite[2 * p], finite[2 * p + 1]);
    }
    for (int i = 0; i < decoderIterations; ++i)
    {
        if (! (running[0].any() || running[1].any()))
            break;
        for (int p = 0; p < 2; ++p)
        {
            if (! running[p].any())
                continue;
            // Both trial points in one pass, their chains side by side.
            LaneGroup<2> trials;
            trials.v[0] = y[p];
            trials.v[1] = y[p] + step;
            const LaneGroup<2> tried = sides[p].forward (trials);
            const Lanes at = tried.v[0];
            const Lanes beside = tried.v[1];
            const Lanes error = target[p] - at;
            const Lanes correction = error / ((target[p] - beside - error) * 1e6 + 1e-16);
            y[p] = running[p].select (y[p] - correction, y[p]);
            running[p] = running[p] && abs (correction) > Lanes (step);
        }
    }
    for (int p = 0; p < 2; ++p)
    {
        ThreeBandCompander& first = *companders[2 * p];
        ThreeBandCompander& second = *companders[2 * p + 1];
        if (finite[2 * p] && finite[2 * p + 1])
        {
            // finishDecode() for both lanes at once.
            first.decoderSolution = y[p].first();
            second.decoderSolution = y[p].second();
            sides[p].forwardInto (first.decoder, second.decoder, y[p]);
            first.decoder.commit();
            second.decoder.commit();
            v[2 * p] = y[p].first();
            v[2 * p + 1] = y[p].second();
            continue;
        }
        if (finite[2 * p])
            v[2 * p] = first.finishDecode (y[p].first());
        if (finite[2 * p + 1])
            v[2 * p + 1] = second.finishDecode (y[p].second());
    }
}

} // namespace oxa
