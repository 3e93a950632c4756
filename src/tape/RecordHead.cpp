#include "tape/RecordHead.h"

#include "tape/FourRecordHeads.h"
#include "tape/GateTanh.h"
#include "tape/Lanes.h"

#include <cmath>
#include <cstdlib>
#include <limits>

namespace oxa
{
namespace
{
constexpr int maxPasses = 10;
constexpr double tolerance = 1e-6;

// Written for one double or for two in lanes: the arithmetic is the same, operation
// for operation, so the lanes give the single head's result bit for bit.
template <class T>
inline T antiderivative(T m, T a) noexcept
{
    return (0.0224778046 * m * m + a * 0.5 - 0.427861251) * m * m;
}

// What the head gives for a step x that ends at magnetisation m.
template <class T>
inline T saturatedOutput(T x, T m, T fsOverK) noexcept
{
    const T m2 = m * m;
    const T d = (0.05 * m2 + 0.5) * m2 + 1.0;
    return x * fsOverK / (d * d);
}

template <class T>
inline T anhysteretic(T m, T a) noexcept
{
    return (a - 0.855722502 + 0.0899112184 * m * m) * m;
}

// One Newton pass from x on  H = mean of G over the step + (fs / k) * step;
// returns the new x and sets correction.
template <class T>
inline T newtonStep(T drivenH, T m0, T f0, T fsOverK, T a, T x, T& correction) noexcept
{
    const T s = m0 + x;
    const T inverseStep = 1.0 / (x + 1e-16);
    const T mean = (antiderivative(s, a) - f0) * inverseStep;
    correction = -(drivenH - mean - fsOverK * x) / ((anhysteretic(s, a) - mean) * inverseStep + fsOverK + 1e-16);
    return x - correction;
}

// Scales each noise sample by its gate's tanh, for up to four heads at once; a gate at
// or beyond saturation passes its noise whole, as withNoise() does.
template <int Heads>
inline void gateNoise(const float* opening, float* noise) noexcept
{
    static_assert(Heads >= 1 && Heads <= 4, "one register holds four gates");
#if defined(__SSE2__)
    // Gathered lane by lane: the openings were just stored one float at a time, and one
    // 16-byte load of them would wait for the stores to drain.
    const __m128 openings = _mm_unpacklo_ps(_mm_unpacklo_ps(_mm_set_ss(opening[0]), _mm_set_ss(opening[2])),
                                            _mm_unpacklo_ps(_mm_set_ss(opening[1]), _mm_set_ss(opening[3])));
    const __m128 closing = _mm_cmplt_ps(openings, _mm_set1_ps(gateTanhSaturation));
    const int closingLanes = _mm_movemask_ps(closing) & ((1 << Heads) - 1);
    if (closingLanes == 0)
        return;
    const int tinyLanes = _mm_movemask_ps(_mm_cmplt_ps(_mm_andnot_ps(_mm_set1_ps(-0.0f), openings), _mm_set1_ps(gateTanhTiny)));
    alignas(16) float factor[4];
    _mm_store_ps(factor, (tinyLanes & closingLanes) == closingLanes ? gateTanhOfTiny(openings) : gateTanh(openings));
    for (int i = 0; i < Heads; ++i)
        if ((closingLanes >> i) & 1)
            noise[i] *= factor[i];
#else
    for (int i = 0; i < Heads; ++i)
        if (opening[i] < gateTanhSaturation)
            noise[i] *= gateTanh(opening[i]);
#endif
}
} // namespace

void RecordHead::prepare(double newSampleRate)
{
    sampleRate = newSampleRate;
    restartNoise(random.a, random.b);
    gateEnvelope = 0.0;
    const double span = 2.0 * gateTime * sampleRate;
    gateCoefficient = (span - 1.0) / (span + 1.0);
    magnetisation = 0.0;
    step = 0.0;
}

void RecordHead::reset() noexcept
{
    magnetisation = 0.0;
    step = 0.0;
    gateEnvelope = 0.0;
}

void RecordHead::restartNoise(std::uint32_t first, std::uint32_t second) noexcept
{
    random.seed(first, second);
    for (float& row : noiseRows)
        row = 0.0f;
    noiseSum = 0.0f;
    noiseCounter = 1;
}

void RecordHead::setOn(bool enabled) noexcept
{
    on = enabled ? 1 : 0;
    reset();
}

void RecordHead::setGateOn(bool enabled) noexcept
{
    gateOn = enabled ? 1 : 0;
    reset();
}

double RecordHead::makeupGain(double drive, double hardness, double resistance) noexcept
{
    const double exponent = 1.0 - (1.0 - hardness * 0.2) * (resistance - 100.0) * 5.005005005005005e-6;
    return std::pow(std::tanh(drive * 0.01) * 100.0, exponent);
}

double RecordHead::smallSignalGain(double frequency, double hardness, double resistance) noexcept
{
    const double omega = 6.283185307179586 * std::fabs(frequency);
    const double corner = resistance * smallSignalSlope(hardness);
    const double denominator = std::sqrt(omega * omega + corner * corner);
    return denominator > 0.0 ? omega / denominator : 1.0;
}

float RecordHead::nextNoise() noexcept
{
    // Pink noise: row j changes every 2^j samples.
    const std::uint32_t lowest = noiseCounter == 0 ? 4u : static_cast<std::uint32_t>(__builtin_ctz(noiseCounter));
    const std::uint32_t j = lowest < 4u ? lowest : 4u;
    const float old = noiseRows[j];
    float total = noiseSum;
    bool accepted = false;
    // The sum stays bounded; the draw count is capped so a broken state can never hang.
    for (int attempt = 0; attempt < 64 && !accepted; ++attempt)
    {
        const float u = random.next();
        noiseRows[j] = u;
        total = noiseSum + (u - old);
        accepted = total >= -8.0f && total <= 8.0f;
    }
    if (accepted)
        noiseSum = total;
    else
    {
        noiseRows[j] = old;
        total = noiseSum;
    }
    const float w = random.next();
    ++noiseCounter;
    return (w + total) * 0.25f;
}

inline float RecordHead::gateOpening(double h) noexcept
{
    if (!gateOn)
        return gateTanhSaturation; // wide open: the gate's tanh is exactly 1 there
    gateEnvelope = static_cast<float>(std::fabs(h) * (1.0 - gateCoefficient) + gateCoefficient * gateEnvelope);
    return static_cast<float>(gateEnvelope) * 100.0f;
}

inline double RecordHead::withGatedNoise(double h, float gatedNoise) noexcept
{
    input = gatedNoise * noiseLevel + h;
    return input;
}

double RecordHead::withNoise(double h) noexcept
{
    float noise = nextNoise();
    const float opening = gateOpening(h);
    if (opening < gateTanhSaturation)
        noise *= gateTanh(opening);
    return withGatedNoise(h, noise);
}

inline double RecordHead::newtonPass(double drivenH, double m0, double f0, double fsOverK, double x,
                                     double& correction) const noexcept
{
    return newtonStep(drivenH, m0, f0, fsOverK, a, x, correction);
}

inline double RecordHead::commit(double x, double m0, double fsOverK) noexcept
{
    if (!std::isfinite(x))
        x = 0.0; // never let one bad sample poison the integrator
    step = x;
    const double m = m0 + x;
    magnetisation = m;
    return saturatedOutput(x, m, fsOverK);
}

double RecordHead::process(double h) noexcept
{
    if (!on)
        return h;
    const double drivenH = withNoise(h);
    const double m0 = magnetisation;
    const double f0 = antiderivative(m0, a);
    const double fsOverK = sampleRate / k;
    double x = step;
    double correction = 1.0;
    for (int pass = 0; pass < maxPasses && std::fabs(correction) > tolerance; ++pass)
        x = newtonPass(drivenH, m0, f0, fsOverK, x, correction);
    return commit(x, m0, fsOverK);
}

void RecordHead::processPair(RecordHead& first, RecordHead& second, double& hFirst, double& hSecond) noexcept
{
    if (!first.on || !second.on)
    {
        hFirst = first.process(hFirst);
        hSecond = second.process(hSecond);
        return;
    }
    const double drivenFirst = first.withNoise(hFirst);
    const double drivenSecond = second.withNoise(hSecond);
    const double m0First = first.magnetisation, m0Second = second.magnetisation;
    const double f0First = antiderivative(m0First, first.a), f0Second = antiderivative(m0Second, second.a);
    const double fsOverKFirst = first.sampleRate / first.k, fsOverKSecond = second.sampleRate / second.k;
    double xFirst = first.step, xSecond = second.step;
    bool runFirst = true, runSecond = true;
    for (int pass = 0; pass < maxPasses && (runFirst || runSecond); ++pass)
    {
        // A head that has converged computes on but keeps its result.
        double correctionFirst, correctionSecond;
        const double nextFirst = first.newtonPass(drivenFirst, m0First, f0First, fsOverKFirst, xFirst, correctionFirst);
        const double nextSecond =
            second.newtonPass(drivenSecond, m0Second, f0Second, fsOverKSecond, xSecond, correctionSecond);
        xFirst = runFirst ? nextFirst : xFirst;
        xSecond = runSecond ? nextSecond : xSecond;
        runFirst = runFirst && std::fabs(correctionFirst) > tolerance;
        runSecond = runSecond && std::fabs(correctionSecond) > tolerance;
    }
    hFirst = first.commit(xFirst, m0First, fsOverKFirst);
    hSecond = second.commit(xSecond, m0Second, fsOverKSecond);
}

void RecordHead::processPairInLanes(RecordHead& first, RecordHead& second, double& hFirst, double& hSecond) noexcept
{
    RecordHead* heads[] = {&first, &second};
    double h[] = {hFirst, hSecond};
    solvePairsInLanes<1>(heads, h);
    hFirst = h[0];
    hSecond = h[1];
}

void RecordHead::processFourInLanes(RecordHead* const* heads, double* h) noexcept
{
    solvePairsInLanes<2>(heads, h);
}

template <int Pairs>
void RecordHead::solvePairsInLanes(RecordHead* const* heads, double* h) noexcept
{
    // A pair with a head switched off runs as processPair runs it: each head alone.
    bool allOn = true;
    for (int i = 0; i < 2 * Pairs; ++i)
        allOn = allOn && heads[i]->on;
    if (!allOn)
    {
        for (int i = 0; i < 2 * Pairs; i += 2)
            processPair(*heads[i], *heads[i + 1], h[i], h[i + 1]);
        return;
    }
    // The gates of all heads in one register: the same factors as withNoise() gives.
    float noise[4], opening[4] = {gateTanhSaturation, gateTanhSaturation, gateTanhSaturation, gateTanhSaturation};
    for (int i = 0; i < 2 * Pairs; ++i)
    {
        noise[i] = heads[i]->nextNoise();
        opening[i] = heads[i]->gateOpening(h[i]);
    }
    gateNoise<2 * Pairs>(opening, noise);
    Lanes driven[Pairs], a[Pairs], fsOverK[Pairs];
    for (int p = 0; p < Pairs; ++p)
    {
        RecordHead& first = *heads[2 * p];
        RecordHead& second = *heads[2 * p + 1];
        driven[p] = Lanes(first.withGatedNoise(h[2 * p], noise[2 * p]),
                          second.withGatedNoise(h[2 * p + 1], noise[2 * p + 1]));
        a[p] = Lanes(first.a, second.a);
        fsOverK[p] = Lanes(first.sampleRate, second.sampleRate) / Lanes(first.k, second.k);
    }
    solveDrivenInLanes<Pairs>(heads, driven, a, fsOverK, h);
}

void RecordHead::processFourInLanes(FourRecordHeads& four, RecordHead* const* heads, double* h) noexcept
{
    Lanes driven[2];
    four.drive(h, driven);
    solveDrivenInLanes<2>(heads, driven, four.hardness, four.fsOverK, h);
}

template <int Pairs>
void RecordHead::solveDrivenInLanes(RecordHead* const* heads, const Lanes* driven, const Lanes* a,
                                    const Lanes* fsOverK, double* h) noexcept
{
    Lanes m0[Pairs], f0[Pairs], x[Pairs];
    LaneMask running[Pairs];
    for (int p = 0; p < Pairs; ++p)
    {
        m0[p] = Lanes(heads[2 * p]->magnetisation, heads[2 * p + 1]->magnetisation);
        f0[p] = antiderivative(m0[p], a[p]);
        x[p] = Lanes(heads[2 * p]->step, heads[2 * p + 1]->step);
        running[p] = LaneMask::all();
    }
    // All pairs in one loop, so that several independent solves are in flight at once.
    // A lane that has converged computes on but keeps its result, as in processPair.
    for (int pass = 0; pass < maxPasses; ++pass)
    {
        bool any = false;
        for (int p = 0; p < Pairs; ++p)
            any = any || running[p].any();
        if (!any)
            break;
        for (int p = 0; p < Pairs; ++p)
        {
            Lanes correction;
            const Lanes next = newtonStep(driven[p], m0[p], f0[p], fsOverK[p], a[p], x[p], correction);
            x[p] = select(running[p], next, x[p]);
            running[p] = running[p] && (abs(correction) > Lanes(tolerance));
        }
    }
    // commit() for both lanes at once.
    for (int p = 0; p < Pairs; ++p)
    {
        const LaneMask finite = abs(x[p]) <= Lanes(std::numeric_limits<double>::max());
        const Lanes kept = finite.select(x[p], Lanes(0.0));
        const Lanes m = m0[p] + kept;
        const Lanes out = saturatedOutput(kept, m, fsOverK[p]);
        RecordHead& first = *heads[2 * p];
        RecordHead& second = *heads[2 * p + 1];
        first.step = kept.first();
        second.step = kept.second();
        first.magnetisation = m.first();
        second.magnetisation = m.second();
        h[2 * p] = out.first();
        h[2 * p + 1] = out.second();
    }
}

} // namespace oxa
