#pragma once

#include <RU/framework/ru_Kernels.h>

#include <cstdint>

/// log, exp and pow of floats that compilers can vectorise, with the same bits on every instruction set.
///
/// They compute in double, where every float, subnormals included, is a normal number and one rounding at the
/// end suffices. Errors against the exact result, in units of the last place of the float result:
///
///     ru_log  0.501      ru_exp  0.55      ru_pow  0.55
///
/// Special cases are those of C. Nothing here branches.

/// The largest error of any of them, in ulp.
inline constexpr double ru_mathUlp = 0.55;

namespace ru_math {

inline constexpr double infinity = __builtin_inf();
inline constexpr double log2e = 0x1.71547652b82fep+0;
inline constexpr double ln2 = 0x1.62e42fefa39efp-1;

RU_INLINE int64_t bitsOf(double v)
{
    return __builtin_bit_cast(int64_t, v);
}

RU_INLINE double ofBits(int64_t bits)
{
    return __builtin_bit_cast(double, bits);
}

/// ln(v) for 0 < v < infinity, relative error 2^-37: v = 2^e m with m in [sqrt(1/2), sqrt(2)), s = (m - 1) /
/// (m + 1), ln(m) = 2 atanh(s) by its minimax polynomial in s^2.
RU_INLINE double lnOfFinite(double v)
{
    constexpr uint64_t rootOfHalf = 0x3FE6A09E667F3BCD;
    constexpr uint64_t bias = uint64_t(1023) << 52;
    constexpr double whole = 0x1p52; // its mantissa holds a whole number
    const uint64_t shifted = static_cast<uint64_t>(bitsOf(v)) - rootOfHalf + bias;
    const double e = ofBits(static_cast<int64_t>((shifted >> 52) | 0x4330000000000000)) - (whole + 1023.0);
    const double m = ofBits(static_cast<int64_t>((shifted & 0x000FFFFFFFFFFFFF) + rootOfHalf));
    const double s = (m - 1.0) / (m + 1.0);
    const double z = s * s;
    const double tail = (0x1.555554fd9ca8dp-2 + z * 0x1.999a7a8afd915p-3) +
                        (z * z) * (0x1.2438d79222fa4p-3 + z * 0x1.e2f663f6c0b86p-4);
    const double twice = s + s;
    return e * ln2 + (twice + twice * (z * tail));
}

/// ln(v) for v >= 0 and NaN.
RU_INLINE double lnOfMagnitude(double v)
{
    const double finite = lnOfFinite(v);
    const double counted = v > 0.0 ? finite : -infinity;
    return v < infinity ? counted : v;
}

/// 2^t, relative error 2^-28.5: t = k + f with |f| <= 1/2, 2^f by its minimax polynomial. Results outside the
/// range of float still round to 0 and infinity.
RU_INLINE double exp2Of(double t)
{
    constexpr double limit = 300.0;
    constexpr double whole = 0x1.8p52; // adding it rounds to a whole number, held in the low bits
    const double above = t < -limit ? -limit : t;
    const double inside = above > limit ? limit : above;
    const double shifted = inside + whole;
    const double f = inside - (shifted - whole);
    const double z = f * f;
    const double low = 0x1.62e431173463ap-1 + f * 0x1.ebfbe2c542082p-3;
    const double middle = 0x1.c6ae72deebd6dp-5 + f * 0x1.3b270e63e6e25p-7;
    const double high = 0x1.5f7277406161fp-10 + f * 0x1.470b49f17eb21p-13;
    const double power = 1.0 + f * (low + z * (middle + z * high));
    const double scaled = ofBits(static_cast<int64_t>(static_cast<uint64_t>(bitsOf(power)) +
                                                      (static_cast<uint64_t>(bitsOf(shifted)) << 52)));
    return t == t ? scaled : t;
}

RU_INLINE bool isWhole(double magnitude)
{
    return (magnitude >= 0x1p52) | ((magnitude + 0x1p52) - 0x1p52 == magnitude);
}

/// For floats: from 2^25 on they are even, and the sums stay exact.
RU_INLINE bool isOdd(double v)
{
    const double magnitude = __builtin_fabs(v);
    const bool whole = isWhole(magnitude);
    const bool even = isWhole(magnitude * 0.5);
    return whole & !even;
}

/// x^y for x >= 0 and NaN.
RU_INLINE double powOfMagnitude(double x, double y)
{
    const double power = exp2Of((y * log2e) * lnOfMagnitude(x));
    return ((x == 1.0) | (y == 0.0)) ? 1.0 : power;
}

/// `magnitude` with the sign of `sign` where `take` holds.
RU_INLINE double withSign(double magnitude, double sign, bool take)
{
    const double taken = take ? sign : 0.0;
    return ofBits(bitsOf(magnitude) | (bitsOf(taken) & INT64_MIN));
}

} // namespace ru_math

/// NaN below 0, -infinity at 0.
RU_INLINE float ru_log(float v)
{
    const double result = ru_math::lnOfMagnitude(v);
    return static_cast<float>(v < 0.0f ? static_cast<double>(__builtin_nan("")) : result);
}

RU_INLINE float ru_exp(float v)
{
    return static_cast<float>(ru_math::exp2Of(v * ru_math::log2e));
}

RU_INLINE float ru_pow(float x, float y)
{
    using namespace ru_math;
    const double base = x;
    const double exponent = y;
    const double magnitude = __builtin_fabs(base);
    const double power = withSign(powOfMagnitude(magnitude, exponent), base, isOdd(exponent));
    const bool undefined = (base < 0.0) & (magnitude < infinity) & !isWhole(__builtin_fabs(exponent));
    const bool one = (base == -1.0) & (__builtin_fabs(exponent) == infinity);
    const double defined = one ? 1.0 : power;
    return static_cast<float>(undefined ? __builtin_nan("") : defined);
}
