// The gate's tanh against the C library's tanhf, bit for bit: the record head's output
// depends on every bit of it.
#include "tape/GateTanh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace oxa
{
namespace
{
std::uint32_t bitsOf(float x)
{
    std::uint32_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

float floatOf(std::uint32_t bits)
{
    float x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

// The library's answer, kept out of the compiler's constant folding.
float libraryTanh(float x)
{
    volatile float argument = x;
    return std::tanh(argument);
}

// Counts the arguments in [first, end) (bit patterns, every stride-th) where the scalar
// form or a lane differs from the library in any bit. Each lane gets a different argument.
std::uint64_t countDifferences(std::uint32_t first, std::uint32_t end, std::uint32_t stride)
{
    std::uint64_t differ = 0;
    for (std::uint32_t bits = first; bits < end; bits += 4 * stride)
    {
        float in[4], out[4];
        for (std::uint32_t i = 0; i < 4; ++i)
            in[i] = floatOf(std::min(bits + i * stride, end - 1));
#if defined(__SSE2__)
        _mm_storeu_ps(out, gateTanh(_mm_loadu_ps(in)));
#else
        for (int i = 0; i < 4; ++i)
            out[i] = gateTanh(in[i]);
#endif
        for (int i = 0; i < 4; ++i)
        {
            const std::uint32_t expected = bitsOf(libraryTanh(in[i]));
            differ += (bitsOf(out[i]) != expected || bitsOf(gateTanh(in[i])) != expected) ? 1u : 0u;
        }
    }
    return differ;
}

const std::uint32_t saturationBits = bitsOf(gateTanhSaturation);

TEST(GateTanh, MatchesTheLibraryOnADenseStrideOfTheGatesRange)
{
    // About three million arguments, through every branch of the library's formula.
    EXPECT_EQ(countDifferences(0u, saturationBits, 331u), 0u);
}

TEST(GateTanh, MatchesTheLibraryAtTheEdgesWithAndWithoutDenormals)
{
    const float ln3Half = 0.549306144f; // where tanh is 1/2
    const float edges[] = {0.0f, -0.0f, floatOf(1u), floatOf(0x007fffffu), std::numeric_limits<float>::min(),
                           floatOf(0x23ffffffu), floatOf(0x24000000u), // x (1 + x) below, expm1 above
                           floatOf(0x32800000u), floatOf(0x327fffffu), // expm1 of 2^-25: taken as is
                           0.1732868f, 0.1732869f, 0.5198603f, 0.5198604f, // k steps from 0 to -1 to -2
                           ln3Half, std::nextafter(ln3Half, 0.0f), std::nextafter(ln3Half, 1.0f),
                           std::nextafter(1.0f, 0.0f), 1.0f, std::nextafter(1.0f, 2.0f),
                           7.7979f, 7.798f, 7.7981f, // exponent steps 22 and 23 of expm1
                           std::nextafter(gateTanhSaturation, 0.0f), gateTanhSaturation, 9.5f, 22.0f, 1e30f,
                           std::numeric_limits<float>::infinity(), -0.3f, -1.5f, -8.0f, -30.0f};
    for (const bool flushDenormals : {false, true})
    {
#if defined(__SSE2__)
        const unsigned int saved = _mm_getcsr();
        if (flushDenormals)
            _mm_setcsr(saved | 0x8040u); // flush to zero and denormals are zero, as the audio thread runs
#endif
        for (const float x : edges)
            EXPECT_EQ(bitsOf(gateTanh(x)), bitsOf(libraryTanh(x))) << x << (flushDenormals ? " flushing" : "");
        EXPECT_EQ(countDifferences(0u, 0x3f900000u, 65521u), 0u);
#if defined(__SSE2__)
        _mm_setcsr(saved);
#endif
    }
    EXPECT_TRUE(std::isnan(gateTanh(std::numeric_limits<float>::quiet_NaN())));

    // The gate leaves the call out from the saturation on: every float there gives exactly
    // 1 in the library, and the float just below does not, or the threshold hides a value.
    EXPECT_LT(libraryTanh(std::nextafter(gateTanhSaturation, 0.0f)), 1.0f);
    std::uint32_t notOne = 0;
    for (float x = gateTanhSaturation; x < 10.0f; x = std::nextafter(x, 11.0f))
        notOne += libraryTanh(x) != 1.0f ? 1u : 0u;
    EXPECT_EQ(notOne, 0u);
}

// Every float the gate can pass, 1.09e9 of them, about a minute: no difference, with
// and without flush-to-zero (checked with glibc 2.36, Debian 12). Run it by hand with
// --gtest_also_run_disabled_tests when the C library changes.
TEST(GateTanh, DISABLED_MatchesTheLibraryForEveryFloatOfTheGatesRange)
{
    EXPECT_EQ(countDifferences(0u, saturationBits, 1u), 0u);
}
} // namespace
} // namespace oxa
