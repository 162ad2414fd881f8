#pragma once

#include <RU/kernel/ru_Math.h>

#include <cstdint>

/// Powers of many values with one exponent, in floats:
///
///     |x|  = 2^e m, m in [1, 2), in one of eight cells with the middle c;  q = (m - c) / c log2(e)
///     t    = p log2|x| = t0 + s,   t0 = pHi e + hi,   s = pLo e + lo + p log2(1 + q ln 2),
///            hi + lo = p log2(c), hi the part that is added to pHi e without rounding
///     k    = t to the nearest 1/8,   g = (t0 - k) + s,   |x|^p = 2^k 2^g
///
/// t0, k and t0 - k are exact; what all else rounds off is small beside the last place of the result. The
/// operations and their order are the same for one value and for a vector, on every instruction set.

/// The largest error of such a power, in ulp, for exponents from 2^-20 to 3 in magnitude and values in reach.
/// Powers that are floats themselves are exact.
inline constexpr double ru_exponentUlp = 0.95;

/// An exponent and what powers need of it, made once for any number of values.
struct ru_Exponent
{
    explicit ru_Exponent(float p);

    /// The power of this |x| is computed in floats: it is a normal number, and no product on the way to its
    /// power is subnormal.
    [[gnu::always_inline]] bool reaches(float magnitude) const
    {
        return __builtin_bit_cast(uint32_t, magnitude) - lowest < span;
    }

    // By the cell, or by the eighths in k.
    alignas(32) float factor[8]; ///< log2(e) / c
    float hi[8], lo[8];          ///< these take in the bias of e and what the roots lack
    float root[8]; ///< 2^(i / 8), less the i << 20 that comes with k, all by one factor too small

    float pHi, pLo;        ///< pHi has 16 bits: its product with e is exact
    float terms[5];        ///< p times the polynomial of log2(1 + q ln 2)
    uint32_t lowest, span; ///< of the bits of |x| in reach
    float exponent;
};

namespace ru_math {

/// The middle of the first cell, such that all eight log2(e) / c are nearly floats.
inline constexpr float firstMiddle = 0x1.0f9902p+0f;

/// A single value, as powInReach() takes it.
struct PowerOfOne
{
    using Floats = float;
    using Ints = int32_t;
    using Bits = uint32_t;

    struct Eight
    {
        const float* entries;
        float operator[](int32_t index) const { return entries[index & 7]; }
    };

    explicit PowerOfOne(const ru_Exponent& exponent)
        : factor{exponent.factor}, hi{exponent.hi}, lo{exponent.lo}, root{exponent.root}, p(exponent)
    {
    }

    static float converted(int32_t whole) { return static_cast<float>(whole); }

    const Eight factor, hi, lo, root; ///< by the low three bits of an index
    const ru_Exponent& p;
};

/// |x|^p for x in reach, some number for any other.
template <class Power>
RU_INLINE typename Power::Floats powInReach(typename Power::Floats x, const Power& by)
{
    using Floats = typename Power::Floats;
    using Ints = typename Power::Ints;
    const ru_Exponent& p = by.p;
    const Ints bits = __builtin_bit_cast(Ints, x) & 0x7FFFFFFF;
    const Ints cell = bits >> 20;
    const Floats e = Power::converted(bits >> 23);
    const Floats placed = __builtin_bit_cast(Floats, (bits & 0x000FFFFF) | 0x3F800000); // in the first cell
    const Floats q = (placed - firstMiddle) * by.factor[cell];
    const Floats q2 = q * q;
    const Floats z = q2 * (q2 * (q * p.terms[4] + p.terms[3]) + (q * p.terms[2] + p.terms[1])) +
                     (q * p.terms[0] + by.lo[cell]);
    const Floats t0 = e * p.pHi + by.hi[cell];
    const Floats s = e * p.pLo + z;
    constexpr float aligned = 0x1.8p20f; // adding it rounds to eighths, held in the low bits
    const Floats eighths = (t0 + s) + aligned;
    const Floats g = (t0 - (eighths - aligned)) + s;
    const Floats w = (g * g) * (g * 0x1.3b3390bc35ddfp-7f + 0x1.c6be3bbea91d5p-5f) +
                     (g * 0x1.ebfbdfb64c155p-3f + 0x1.62e42fb8cecf3p-1f); // (2^g - 1) / g
    using Bits = typename Power::Bits; // sums may wrap where x is out of reach
    const Bits k = __builtin_bit_cast(Bits, eighths);
    const Bits root = __builtin_bit_cast(Bits, by.root[__builtin_bit_cast(Ints, k)]);
    const Floats scale = __builtin_bit_cast(Floats, root + (k << 20));
    return (scale * g) * w + scale;
}

} // namespace ru_math

/// x^p for x >= 0 and NaN.
RU_INLINE float ru_powOfMagnitude(float x, const ru_Exponent& p)
{
    using namespace ru_math;
    const float near = powInReach(x, PowerOfOne(p));
    const float far = powOfMagnitude(x, p.exponent);
    return p.reaches(x) ? near : far;
}
