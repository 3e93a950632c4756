#pragma once

// tanh in 32-bit float for the record heads' noise gate, four arguments in one SSE
// register or one alone. It must give exactly what the C library's tanhf gives (glibc on
// Debian 12): the head's Newton solver stops on a fixed correction, so one ulp more or
// less in the gate can change a pass count and move the output. That tanhf is not
// correctly rounded, so no other formula will do: this one repeats its steps, rounding for
// rounding. tanh(x) comes from e = expm1(2|x|) as 1 - 2/(e + 2) from |x| = 1 on, and below
// from e = expm1(-2|x|) as -e/(e + 2); expm1(y) reduces y by k ln2 (ln2 split in a head
// of few bits and a tail), takes a rational approximation in (r/2)^2 and scales the result
// by 2^k through the exponent bits, with a different last step for k = 0, -1, <= -2,
// 2..22 and >= 23. Here every lane computes every case and keeps its own.
//
// Checked against the library for every float from 0 up to gateTanhSaturation, with and
// without flush-to-zero and denormals-are-zero (the operations are the library's, so the
// same control word gives the same bits): no difference. Above that the library gives
// exactly 1, and so does this. Negative arguments follow by symmetry; an infinity gives
// +-1 and a NaN stays NaN.
//
// Must not be compiled with -ffast-math or with fused multiply-adds.

#include <cmath>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace oxa
{

// From this argument on tanhf is exactly 1 in float.
constexpr float gateTanhSaturation = 0x1.205968p+3f; // 9.0109138

#if defined(__SSE2__)
namespace gate_tanh_detail
{
inline __m128 select(__m128 mask, __m128 whenTrue, __m128 whenFalse) noexcept
{
    return _mm_or_ps(_mm_and_ps(mask, whenTrue), _mm_andnot_ps(mask, whenFalse));
}

inline __m128 bitsAbove(__m128 magnitude, std::int32_t bits) noexcept
{
    return _mm_castsi128_ps(_mm_cmpgt_epi32(_mm_castps_si128(magnitude), _mm_set1_epi32(bits)));
}

inline __m128 floatOfBits(std::int32_t bits) noexcept { return _mm_castsi128_ps(_mm_set1_epi32(bits)); }

// e^y - 1 for y in [-2, 0) and [2, 18.03], the two ranges the gate's tanh needs (and
// right for any |y| below 18.7 that is not in (0.35, 2)).
inline __m128 expMinusOne(__m128 y) noexcept
{
    const __m128 signBit = _mm_set1_ps(-0.0f);
    const __m128 magnitude = _mm_andnot_ps(signBit, y);
    const __m128 negative = _mm_castsi128_ps(_mm_srai_epi32(_mm_castps_si128(y), 31));
    const __m128 half = _mm_set1_ps(0.5f);
    const __m128 one = _mm_set1_ps(1.0f);
    const __m128 ln2Head = floatOfBits(0x3f317180); // 0.693138123: k * head is exact
    const __m128 ln2Tail = floatOfBits(0x3717f7d1); // 9.05800061e-06

    // k: 0 up to 0.5 ln2, +-1 up to 1.5 ln2, else y/ln2 rounded half away from zero.
    const __m128 beyondHalf = bitsAbove(magnitude, 0x3eb17218);
    const __m128 beyondOneAndHalf = bitsAbove(magnitude, 0x3f851591);
    const __m128 halfWithSign = _mm_or_ps(half, _mm_and_ps(signBit, y));
    const __m128i kFar = _mm_cvttps_epi32(_mm_add_ps(halfWithSign, _mm_mul_ps(floatOfBits(0x3fb8aa3b), y)));
    const __m128i kNear = _mm_or_si128(_mm_castps_si128(negative), _mm_set1_epi32(1)); // -1 or 1
    const __m128i k = _mm_castps_si128(
        select(beyondOneAndHalf, _mm_castsi128_ps(kFar), _mm_and_ps(beyondHalf, _mm_castsi128_ps(kNear))));
    const __m128 kFloat = _mm_cvtepi32_ps(k);

    // y = x + c + k ln2, x rounded and c what its rounding lost.
    const __m128 head = _mm_sub_ps(y, _mm_mul_ps(ln2Head, kFloat));
    const __m128 tail = _mm_mul_ps(kFloat, ln2Tail);
    const __m128 x = _mm_sub_ps(head, tail);
    const __m128 c = _mm_sub_ps(_mm_sub_ps(head, x), tail);

    const __m128 halfX = _mm_mul_ps(x, half);
    const __m128 halfXSquared = _mm_mul_ps(x, halfX);
    __m128 r = _mm_mul_ps(floatOfBits(static_cast<std::int32_t>(0xb457edbbu)), halfXSquared); // -2.01099212e-07
    r = _mm_mul_ps(_mm_add_ps(r, floatOfBits(0x36867e54)), halfXSquared);                     // 4.00821773e-06
    r = _mm_mul_ps(_mm_sub_ps(r, floatOfBits(0x38a670cd)), halfXSquared);                     // 7.93650761e-05
    r = _mm_mul_ps(_mm_add_ps(r, floatOfBits(0x3ad00d01)), halfXSquared);                     // 0.00158730161
    r = _mm_mul_ps(_mm_sub_ps(r, floatOfBits(0x3d088889)), halfXSquared);                     // 0.0333333351
    r = _mm_add_ps(r, one);
    const __m128 t = _mm_sub_ps(_mm_set1_ps(3.0f), _mm_mul_ps(halfX, r));
    const __m128 e = _mm_mul_ps(
        _mm_div_ps(_mm_sub_ps(r, t), _mm_sub_ps(_mm_set1_ps(6.0f), _mm_mul_ps(t, x))), halfXSquared);

    // k = 0: no scaling, and c is not used.
    const __m128 whenZero = _mm_sub_ps(x, _mm_sub_ps(_mm_mul_ps(e, x), halfXSquared));

    const __m128 err = _mm_sub_ps(_mm_sub_ps(_mm_mul_ps(_mm_sub_ps(e, c), x), c), halfXSquared);
    const __m128 errMinusX = _mm_sub_ps(err, x);
    const __m128 whenMinusOne = _mm_sub_ps(_mm_mul_ps(_mm_sub_ps(x, err), half), half);

    // The other k: a value near 1 (or 2^-k below) whose exponent bits get k added.
    const __m128i exponentStep = _mm_slli_epi32(k, 23);
    const __m128 twoToMinusK = _mm_castsi128_ps(_mm_slli_epi32(_mm_sub_epi32(_mm_set1_epi32(127), k), 23));
    const __m128 belowMinusOne = _mm_sub_ps(one, errMinusX);
    const __m128 upTo22 = _mm_sub_ps(_mm_sub_ps(one, twoToMinusK), errMinusX);
    const __m128 from23 = _mm_add_ps(_mm_sub_ps(x, _mm_add_ps(err, twoToMinusK)), one);
    const __m128i kIsZero = _mm_cmpeq_epi32(k, _mm_setzero_si128());
    const __m128i kIsMinusOne = _mm_cmpeq_epi32(k, _mm_set1_epi32(-1));
    const __m128i kNegative = _mm_cmplt_epi32(k, _mm_setzero_si128());
    const __m128i kAbove22 = _mm_cmpgt_epi32(k, _mm_set1_epi32(22));
    const __m128 scaledSource = select(_mm_castsi128_ps(kNegative), belowMinusOne,
                                       select(_mm_castsi128_ps(kAbove22), from23, upTo22));
    __m128 scaled = _mm_castsi128_ps(_mm_add_epi32(_mm_castps_si128(scaledSource), exponentStep));
    scaled = select(_mm_castsi128_ps(kNegative), _mm_sub_ps(scaled, one), scaled);

    __m128 result = select(_mm_castsi128_ps(kIsMinusOne), whenMinusOne, scaled);
    result = select(_mm_castsi128_ps(kIsZero), whenZero, result);
    // Below 2^-25 expm1(y) is y.
    return select(bitsAbove(magnitude, 0x32ffffff), result, y);
}
} // namespace gate_tanh_detail

// Below this (zero and denormals included) tanhf is x (1 + x): the gate sits there in
// silence, where the whole formula would be wasted.
constexpr float gateTanhTiny = 0x1p-55f;

// gateTanh for lanes that are all below gateTanhTiny.
inline __m128 gateTanhOfTiny(__m128 value) noexcept
{
    return _mm_mul_ps(_mm_add_ps(_mm_set1_ps(1.0f), value), value);
}

// tanhf of each lane, bit for bit as the C library gives it.
inline __m128 gateTanh(__m128 value) noexcept
{
    using namespace gate_tanh_detail;
    const __m128 signBit = _mm_set1_ps(-0.0f);
    const __m128 one = _mm_set1_ps(1.0f);
    const __m128 two = _mm_set1_ps(2.0f);
    const __m128 magnitude = _mm_andnot_ps(signBit, value);
    const __m128 belowOne = _mm_cmplt_ps(magnitude, one);

    const __m128 e = expMinusOne(select(belowOne, _mm_mul_ps(magnitude, _mm_set1_ps(-2.0f)), _mm_add_ps(magnitude, magnitude)));
    // One division serves both formulas: -e/(e + 2) below 1, 2/(e + 2) above.
    const __m128 quotient = _mm_div_ps(select(belowOne, _mm_xor_ps(e, signBit), two), _mm_add_ps(e, two));
    __m128 result = select(belowOne, quotient, _mm_sub_ps(one, quotient));
    result = select(_mm_cmplt_ps(magnitude, _mm_set1_ps(gateTanhSaturation)), result, one);
    result = _mm_xor_ps(result, _mm_and_ps(signBit, value));
    const __m128 tiny = _mm_castsi128_ps(_mm_cmplt_epi32(_mm_castps_si128(magnitude), _mm_set1_epi32(0x24000000)));
    result = select(tiny, gateTanhOfTiny(value), result);
    // A NaN stays NaN.
    return select(_mm_cmpunord_ps(value, value), value, result);
}

namespace gate_tanh_detail
{
inline std::uint32_t bitsOf(float x) noexcept
{
    std::uint32_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

inline float floatOf(std::uint32_t bits) noexcept
{
    float x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

// expMinusOne(__m128) for one argument, the same operations in the same order, with only
// the case that applies computed.
inline float expMinusOne(float y) noexcept
{
    const std::uint32_t magnitude = bitsOf(y) & 0x7fffffffu;
    if (magnitude <= 0x32ffffffu)
        return y;
    const bool negative = (bitsOf(y) >> 31) != 0;
    int k = 0;
    if (magnitude > 0x3f851591u)
        k = static_cast<int>((negative ? -0.5f : 0.5f) + 0x1.715476p+0f * y);
    else if (magnitude > 0x3eb17218u)
        k = negative ? -1 : 1;
    float x = y, c = 0.0f;
    if (k != 0)
    {
        const float kFloat = static_cast<float>(k);
        const float head = y - 0x1.62e3p-1f * kFloat;
        const float tail = kFloat * 0x1.2fefa2p-17f;
        x = head - tail;
        c = (head - x) - tail;
    }
    const float halfX = x * 0.5f;
    const float halfXSquared = x * halfX;
    float r = -0x1.afdb76p-23f * halfXSquared;
    r = (r + 0x1.0cfca8p-18f) * halfXSquared;
    r = (r - 0x1.4ce19ap-14f) * halfXSquared;
    r = (r + 0x1.a01a02p-10f) * halfXSquared;
    r = (r - 0x1.111112p-5f) * halfXSquared;
    r = r + 1.0f;
    const float t = 3.0f - halfX * r;
    const float e = ((r - t) / (6.0f - t * x)) * halfXSquared;
    if (k == 0)
        return x - (e * x - halfXSquared);
    const float err = ((e - c) * x - c) - halfXSquared;
    if (k == -1)
        return (x - err) * 0.5f - 0.5f;
    const std::uint32_t exponentStep = static_cast<std::uint32_t>(k) << 23;
    if (k < 0)
        return floatOf(bitsOf(1.0f - (err - x)) + exponentStep) - 1.0f;
    const float twoToMinusK = floatOf(static_cast<std::uint32_t>(127 - k) << 23);
    if (k <= 22)
        return floatOf(bitsOf((1.0f - twoToMinusK) - (err - x)) + exponentStep);
    return floatOf(bitsOf((x - (err + twoToMinusK)) + 1.0f) + exponentStep);
}
} // namespace gate_tanh_detail

// The same for one argument, as quick as the library: what the lanes give, bit for bit.
inline float gateTanh(float value) noexcept
{
    using namespace gate_tanh_detail;
    const std::uint32_t magnitudeBits = bitsOf(value) & 0x7fffffffu;
    if (magnitudeBits < 0x24000000u)
        return (1.0f + value) * value;
    if (magnitudeBits > 0x7f800000u)
        return value; // NaN
    const float magnitude = floatOf(magnitudeBits);
    float result = 1.0f;
    if (magnitude < 1.0f)
    {
        const float e = expMinusOne(magnitude * -2.0f);
        result = -e / (e + 2.0f);
    }
    else if (magnitude < gateTanhSaturation)
    {
        const float e = expMinusOne(magnitude + magnitude);
        result = 1.0f - 2.0f / (e + 2.0f);
    }
    return (bitsOf(value) >> 31) != 0 ? -result : result;
}
#else
inline float gateTanh(float value) noexcept
{
    return std::tanh(value);
}
#endif

} // namespace oxa
