#include "tape/FourRecordHeads.h"

#include "tape/GateTanh.h"

namespace oxa
{

void FourRecordHeads::gatherConstants() noexcept
{
    for (int p = 0; p < 2; ++p)
    {
        const RecordHead& first = *heads[2 * p];
        const RecordHead& second = *heads[2 * p + 1];
        hardness[p] = Lanes(first.a, second.a);
        fsOverK[p] = Lanes(first.sampleRate, second.sampleRate) / Lanes(first.k, second.k);
    }
}

#if defined(__SSE2__)
namespace
{
// RandomPair::next() in four lanes: the same integer steps, and the same float. The
// generator's int32 times 2^-32 is exact in double and then rounded to float; rounding the
// int32 to float first and scaling by the power of two after rounds to the same value.
inline __m128 nextRandom(__m128i& a, __m128i& b) noexcept
{
    const __m128i r = b;
    a = _mm_xor_si128(a, r);
    b = _mm_add_epi32(a, r);
    return _mm_mul_ps(_mm_cvtepi32_ps(r), _mm_set1_ps(0x1p-32f));
}

inline __m128 selectFloats(__m128 mask, __m128 whenTrue, __m128 whenFalse) noexcept
{
    return _mm_or_ps(_mm_and_ps(mask, whenTrue), _mm_andnot_ps(mask, whenFalse));
}
} // namespace

bool FourRecordHeads::gather(RecordHead* const* from) noexcept
{
    for (int i = 0; i < 4; ++i)
        if (!from[i]->on || from[i]->noiseCounter != from[0]->noiseCounter)
            return false;
    for (int i = 0; i < 4; ++i)
        heads[i] = from[i];
    gatherConstants();
    gatherNoise();
    for (int p = 0; p < 2; ++p)
    {
        const RecordHead& first = *heads[2 * p];
        const RecordHead& second = *heads[2 * p + 1];
        envelope[p] = Lanes(first.gateEnvelope, second.gateEnvelope);
        coefficient[p] = Lanes(first.gateCoefficient, second.gateCoefficient);
        keep[p] = Lanes(1.0 - first.gateCoefficient, 1.0 - second.gateCoefficient);
        gateOn[p] = _mm_castsi128_pd(_mm_set_epi64x(second.gateOn ? -1 : 0, first.gateOn ? -1 : 0));
    }
    gateOff = _mm_castsi128_ps(_mm_set_epi32(heads[3]->gateOn ? 0 : -1, heads[2]->gateOn ? 0 : -1,
                                             heads[1]->gateOn ? 0 : -1, heads[0]->gateOn ? 0 : -1));
    return true;
}

void FourRecordHeads::gatherNoise() noexcept
{
    alignas(16) std::uint32_t a[4], b[4];
    alignas(16) float row[4], total[4];
    for (int i = 0; i < 4; ++i)
    {
        a[i] = heads[i]->random.a;
        b[i] = heads[i]->random.b;
        total[i] = heads[i]->noiseSum;
    }
    randomA = _mm_load_si128(reinterpret_cast<const __m128i*>(a));
    randomB = _mm_load_si128(reinterpret_cast<const __m128i*>(b));
    sum = _mm_load_ps(total);
    for (int j = 0; j < 5; ++j)
    {
        for (int i = 0; i < 4; ++i)
            row[i] = heads[i]->noiseRows[j];
        rows[j] = _mm_load_ps(row);
    }
    counter = heads[0]->noiseCounter;
}

void FourRecordHeads::scatterNoise() noexcept
{
    alignas(16) std::uint32_t a[4], b[4];
    alignas(16) float row[5][4], total[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(a), randomA);
    _mm_store_si128(reinterpret_cast<__m128i*>(b), randomB);
    _mm_store_ps(total, sum);
    for (int j = 0; j < 5; ++j)
        _mm_store_ps(row[j], rows[j]);
    for (int i = 0; i < 4; ++i)
    {
        RecordHead& head = *heads[i];
        head.random.seed(a[i], b[i]);
        head.noiseSum = total[i];
        for (int j = 0; j < 5; ++j)
            head.noiseRows[j] = row[j][i];
        head.noiseCounter = counter;
    }
}

void FourRecordHeads::scatter() noexcept
{
    if (heads[0] == nullptr)
        return;
    scatterNoise();
    for (int p = 0; p < 2; ++p)
    {
        heads[2 * p]->gateEnvelope = envelope[p].first();
        heads[2 * p + 1]->gateEnvelope = envelope[p].second();
    }
}

__m128 FourRecordHeads::nextNoise() noexcept
{
    // Row j changes every 2^j samples; the count is the same for all four.
    const std::uint32_t lowest = counter == 0 ? 4u : static_cast<std::uint32_t>(__builtin_ctz(counter));
    const std::uint32_t j = lowest < 4u ? lowest : 4u;
    __m128i a = randomA, b = randomB;
    const __m128 u = nextRandom(a, b);
    const __m128 total = _mm_add_ps(sum, _mm_sub_ps(u, rows[j]));
    const __m128 inBounds = _mm_and_ps(_mm_cmpge_ps(total, _mm_set1_ps(-8.0f)), _mm_cmple_ps(total, _mm_set1_ps(8.0f)));
    if (_mm_movemask_ps(inBounds) != 15)
        return nextNoiseOneByOne();
    rows[j] = u;
    sum = total;
    const __m128 w = nextRandom(a, b);
    randomA = a;
    randomB = b;
    ++counter;
    return _mm_mul_ps(_mm_add_ps(w, total), _mm_set1_ps(0.25f));
}

__m128 FourRecordHeads::nextNoiseOneByOne() noexcept
{
    scatterNoise();
    alignas(16) float noise[4];
    for (int i = 0; i < 4; ++i)
        noise[i] = heads[i]->nextNoise();
    gatherNoise();
    return _mm_load_ps(noise);
}

void FourRecordHeads::drive(const double* h, Lanes* driven) noexcept
{
    const __m128 noise = nextNoise();
    // The gates' followers, rounded to float as each head keeps them; a head with its gate
    // off stands wide open, where its tanh is exactly 1.
    __m128 openings = _mm_setzero_ps();
    for (int p = 0; p < 2; ++p)
    {
        const Lanes followed = abs(Lanes(h[2 * p], h[2 * p + 1])) * keep[p] + coefficient[p] * envelope[p];
        const __m128 rounded = _mm_cvtpd_ps(followed.v);
        envelope[p] = Lanes(_mm_or_pd(_mm_and_pd(gateOn[p], _mm_cvtps_pd(rounded)),
                                      _mm_andnot_pd(gateOn[p], envelope[p].v)));
        openings = p == 0 ? rounded : _mm_movelh_ps(openings, rounded);
    }
    openings = selectFloats(gateOff, _mm_set1_ps(gateTanhSaturation), _mm_mul_ps(openings, _mm_set1_ps(100.0f)));

    // A gate at or beyond saturation passes its noise whole.
    __m128 gated = noise;
    const __m128 closing = _mm_cmplt_ps(openings, _mm_set1_ps(gateTanhSaturation));
    const int closingLanes = _mm_movemask_ps(closing);
    if (closingLanes != 0)
    {
        const int tinyLanes =
            _mm_movemask_ps(_mm_cmplt_ps(_mm_andnot_ps(_mm_set1_ps(-0.0f), openings), _mm_set1_ps(gateTanhTiny)));
        const __m128 factor = (tinyLanes & closingLanes) == closingLanes ? gateTanhOfTiny(openings) : gateTanh(openings);
        gated = selectFloats(closing, _mm_mul_ps(noise, factor), noise);
    }

    const __m128d gatedLow = _mm_cvtps_pd(gated);
    const __m128d gatedHigh = _mm_cvtps_pd(_mm_movehl_ps(gated, gated));
    for (int p = 0; p < 2; ++p)
    {
        RecordHead& first = *heads[2 * p];
        RecordHead& second = *heads[2 * p + 1];
        const Lanes input = Lanes(p == 0 ? gatedLow : gatedHigh) * Lanes(first.noiseLevel, second.noiseLevel)
                            + Lanes(h[2 * p], h[2 * p + 1]);
        first.input = input.first();
        second.input = input.second();
        driven[p] = input;
    }
}
#else
bool FourRecordHeads::gather(RecordHead* const* from) noexcept
{
    for (int i = 0; i < 4; ++i)
        if (!from[i]->on)
            return false;
    for (int i = 0; i < 4; ++i)
        heads[i] = from[i];
    gatherConstants();
    return true;
}

void FourRecordHeads::scatter() noexcept {}

// Without lanes each head drives itself: the heads' own state is the state.
void FourRecordHeads::drive(const double* h, Lanes* driven) noexcept
{
    for (int p = 0; p < 2; ++p)
        driven[p] = Lanes(heads[2 * p]->withNoise(h[2 * p]), heads[2 * p + 1]->withNoise(h[2 * p + 1]));
}
#endif

} // namespace oxa
