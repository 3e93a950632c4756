#pragma once

// Two doubles worked on side by side: the two decks of a channel, or the two candidates
// a solver tries per step. Every operation rounds exactly as the same scalar operation
// does (no fused multiply-add: the library is built with -ffp-contract=off), so a lane
// computes bit for bit what the scalar code computes. SSE2 is the x86-64 baseline;
// elsewhere the lanes are two plain doubles.

#include <cmath>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace oxa
{

#if defined(__SSE2__)
struct Lanes
{
    static constexpr bool native = true; // one instruction works both lanes
    __m128d v;

    Lanes() noexcept = default;
    explicit Lanes(__m128d x) noexcept : v(x) {}
    // first goes to lane 0, second to lane 1.
    Lanes(double first, double second) noexcept : v(_mm_set_pd(second, first)) {}
    // The same value in both lanes, so that formulas read as they do for one double.
    Lanes(double both) noexcept : v(_mm_set1_pd(both)) {}

    double first() const noexcept { return _mm_cvtsd_f64(v); }
    double second() const noexcept { return _mm_cvtsd_f64(_mm_unpackhi_pd(v, v)); }

    friend Lanes operator+(Lanes a, Lanes b) noexcept { return Lanes(_mm_add_pd(a.v, b.v)); }
    friend Lanes operator-(Lanes a, Lanes b) noexcept { return Lanes(_mm_sub_pd(a.v, b.v)); }
    friend Lanes operator*(Lanes a, Lanes b) noexcept { return Lanes(_mm_mul_pd(a.v, b.v)); }
    friend Lanes operator/(Lanes a, Lanes b) noexcept { return Lanes(_mm_div_pd(a.v, b.v)); }
    friend Lanes operator-(Lanes a) noexcept { return Lanes(_mm_xor_pd(a.v, _mm_set1_pd(-0.0))); }

    // |x|, as the scalar code's fabs: the sign bit cleared.
    friend Lanes abs(Lanes a) noexcept { return Lanes(_mm_andnot_pd(_mm_set1_pd(-0.0), a.v)); }
    // (limit < x) ? limit : x per lane, as std::min(x, limit): a NaN x stays NaN.
    friend Lanes minWithLimit(Lanes x, Lanes limit) noexcept { return Lanes(_mm_min_pd(limit.v, x.v)); }
};

// A per-lane truth, as the comparisons give it.
struct LaneMask
{
    __m128d v;

    friend LaneMask operator&&(LaneMask a, LaneMask b) noexcept { return {_mm_and_pd(a.v, b.v)}; }
    static LaneMask all() noexcept { return {_mm_castsi128_pd(_mm_set1_epi32(-1))}; }
    static LaneMask of(bool first, bool second) noexcept
    {
        return {_mm_castsi128_pd(_mm_set_epi64x(second ? -1 : 0, first ? -1 : 0))};
    }
    bool any() const noexcept { return _mm_movemask_pd(v) != 0; }
    bool every() const noexcept { return _mm_movemask_pd(v) == 3; }
    bool first() const noexcept { return (_mm_movemask_pd(v) & 1) != 0; }
    bool second() const noexcept { return (_mm_movemask_pd(v) & 2) != 0; }
    // Lane by lane: whenTrue where the mask holds, whenFalse elsewhere.
    Lanes select(Lanes whenTrue, Lanes whenFalse) const noexcept
    {
        return Lanes(_mm_or_pd(_mm_and_pd(v, whenTrue.v), _mm_andnot_pd(v, whenFalse.v)));
    }
};

inline LaneMask operator<(Lanes a, Lanes b) noexcept { return {_mm_cmplt_pd(a.v, b.v)}; }
inline LaneMask operator>(Lanes a, Lanes b) noexcept { return {_mm_cmpgt_pd(a.v, b.v)}; }
inline LaneMask operator<=(Lanes a, Lanes b) noexcept { return {_mm_cmple_pd(a.v, b.v)}; }
#else
struct Lanes
{
    static constexpr bool native = false;
    double a, b;

    Lanes() noexcept = default;
    Lanes(double first, double second) noexcept : a(first), b(second) {}
    Lanes(double both) noexcept : a(both), b(both) {}
    double first() const noexcept { return a; }
    double second() const noexcept { return b; }
    friend Lanes operator+(Lanes x, Lanes y) noexcept { return {x.a + y.a, x.b + y.b}; }
    friend Lanes operator-(Lanes x, Lanes y) noexcept { return {x.a - y.a, x.b - y.b}; }
    friend Lanes operator*(Lanes x, Lanes y) noexcept { return {x.a * y.a, x.b * y.b}; }
    friend Lanes operator/(Lanes x, Lanes y) noexcept { return {x.a / y.a, x.b / y.b}; }
    friend Lanes operator-(Lanes x) noexcept { return {-x.a, -x.b}; }
    friend Lanes abs(Lanes x) noexcept { return {std::fabs(x.a), std::fabs(x.b)}; }
    friend Lanes minWithLimit(Lanes x, Lanes limit) noexcept
    {
        return {limit.a < x.a ? limit.a : x.a, limit.b < x.b ? limit.b : x.b};
    }
};

struct LaneMask
{
    bool a, b;
    friend LaneMask operator&&(LaneMask x, LaneMask y) noexcept { return {x.a && y.a, x.b && y.b}; }
    static LaneMask all() noexcept { return {true, true}; }
    static LaneMask of(bool first, bool second) noexcept { return {first, second}; }
    bool any() const noexcept { return a || b; }
    bool every() const noexcept { return a && b; }
    bool first() const noexcept { return a; }
    bool second() const noexcept { return b; }
    Lanes select(Lanes whenTrue, Lanes whenFalse) const noexcept
    {
        return {a ? whenTrue.a : whenFalse.a, b ? whenTrue.b : whenFalse.b};
    }
};

inline LaneMask operator<(Lanes x, Lanes y) noexcept { return {x.a < y.a, x.b < y.b}; }
inline LaneMask operator>(Lanes x, Lanes y) noexcept { return {x.a > y.a, x.b > y.b}; }
inline LaneMask operator<=(Lanes x, Lanes y) noexcept { return {x.a <= y.a, x.b <= y.b}; }
#endif

// The same choices for one double, so that a formula written once serves both.
inline double select(bool condition, double whenTrue, double whenFalse) noexcept
{
    return condition ? whenTrue : whenFalse;
}
inline Lanes select(LaneMask condition, Lanes whenTrue, Lanes whenFalse) noexcept
{
    return condition.select(whenTrue, whenFalse);
}
inline double minWithLimit(double x, double limit) noexcept { return limit < x ? limit : x; }

// N registers of lanes worked as one value: independent chains of the same formula (a
// solver step's trial points) written operation by operation, so that the processor sees
// them side by side instead of one long chain of dependent divisions after another. Each
// register rounds exactly as Lanes does; a Lanes (or a double) stands for the same value in
// every register, so that terms shared by the chains read as they do for one register.
// LaneGroupMask: the comparisons' truths, register by register.
template <int N>
struct LaneGroupMask
{
    LaneMask m[N];

    bool every() const noexcept
    {
        bool all = true;
        for (int k = 0; k < N; ++k)
            all = all && m[k].every();
        return all;
    }
};

template <int N>
struct LaneGroup
{
    Lanes v[N];

    LaneGroup() noexcept = default;
    LaneGroup(Lanes each) noexcept
    {
        for (int k = 0; k < N; ++k)
            v[k] = each;
    }
    LaneGroup(double each) noexcept : LaneGroup(Lanes(each)) {}

    template <class Operation>
    static LaneGroup each(Operation operation) noexcept
    {
        LaneGroup result;
        for (int k = 0; k < N; ++k)
            result.v[k] = operation(k);
        return result;
    }

    friend LaneGroup operator+(LaneGroup a, LaneGroup b) noexcept { return each([&](int k) { return a.v[k] + b.v[k]; }); }
    friend LaneGroup operator-(LaneGroup a, LaneGroup b) noexcept { return each([&](int k) { return a.v[k] - b.v[k]; }); }
    friend LaneGroup operator*(LaneGroup a, LaneGroup b) noexcept { return each([&](int k) { return a.v[k] * b.v[k]; }); }
    friend LaneGroup operator/(LaneGroup a, LaneGroup b) noexcept { return each([&](int k) { return a.v[k] / b.v[k]; }); }
    friend LaneGroup operator-(LaneGroup a) noexcept { return each([&](int k) { return -a.v[k]; }); }
    friend LaneGroup abs(LaneGroup a) noexcept { return each([&](int k) { return abs(a.v[k]); }); }
    friend LaneGroup minWithLimit(LaneGroup x, LaneGroup limit) noexcept
    {
        return each([&](int k) { return minWithLimit(x.v[k], limit.v[k]); });
    }
    friend LaneGroupMask<N> operator<(LaneGroup a, LaneGroup b) noexcept
    {
        LaneGroupMask<N> mask;
        for (int k = 0; k < N; ++k)
            mask.m[k] = a.v[k] < b.v[k];
        return mask;
    }
    friend LaneGroupMask<N> operator>(LaneGroup a, LaneGroup b) noexcept { return b < a; }
    friend LaneGroup select(LaneGroupMask<N> condition, LaneGroup whenTrue, LaneGroup whenFalse) noexcept
    {
        return each([&](int k) { return condition.m[k].select(whenTrue.v[k], whenFalse.v[k]); });
    }
};

} // namespace oxa
