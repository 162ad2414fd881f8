#pragma once

#include <RU/kernel/ru_Kernels.h>

#include <cstdint>

/// log, exp and pow of floats that compilers can vectorise, with the same bits on every instruction set.
///
/// They compute in double, where every float, subnormals included, is a normal number and one rounding at
/// the end suffices. Errors against the exact result, in units of the last place of the float result:
///
///     ru_log  0.501      ru_exp  0.55      ru_pow  0.55
///
/// Special cases are those of C. Nothing here branches. Rows with one exponent: ru_Power.h.

/// The largest error of any of them, in ulp.
inline constexpr double ru_mathUlp = 0.55;

namespace ru_math {

inline constexpr float infinity = __builtin_inff();
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

/// A whole number; the low bits of its bits are its own.
struct Whole
{
    double value;
    uint64_t bits;
};

/// For |v| < 2^51. Halves go to the even neighbour. Any other v gives some number, NaN for infinities and
/// NaN.
RU_INLINE Whole nearestWhole(double v)
{
    constexpr double aligned = 0x1.8p52;
    const double shifted = v + aligned;
    return {shifted - aligned, static_cast<uint64_t>(bitsOf(shifted))};
}

/// first + z rest[0] + z^2 rest[1] ...
template <class... Rest>
RU_INLINE double polynomial(double z, double first, Rest... rest)
{
    if constexpr (sizeof...(rest) == 0)
        return first;
    else
        return first + z * polynomial(z, rest...);
}

/// log2(v) for 0 < v < infinity, relative error 2^-37. With v = 2^e m, m in [sqrt(1/2), sqrt(2)), and
/// s = (m - 1) / (m + 1): log2(m) = 2 atanh(s) / ln(2), by its minimax polynomial in s^2.
/// Any other v gives some number.
RU_INLINE double log2OfFinite(double v)
{
    constexpr uint64_t rootOfHalf = 0x3FE6A09E667F3BCD;
    constexpr uint64_t bias = uint64_t(1023) << 52;
    constexpr double whole = 0x1p52; // its mantissa holds a whole number
    const uint64_t shifted = static_cast<uint64_t>(bitsOf(v)) - (rootOfHalf - bias);
    const double e = ofBits(static_cast<int64_t>((shifted >> 52) | 0x4330000000000000)) - (whole + 1023.0);
    const double m = ofBits(static_cast<int64_t>((shifted & 0x000FFFFFFFFFFFFF) + rootOfHalf));
    const double s = (m - 1.0) / (m + 1.0);
    const double z = s * s;
    const double tail = (0x1.ec709d45121e0p-1 + z * 0x1.277767520de25p-1) +
                        (z * z) * (0x1.a596587100302p-2 + z * 0x1.5c623f148c9e2p-2);
    return e + s * (0x1.71547652b82fep+1 + z * tail);
}

/// As a float, 2^limit is infinity and 2^-limit zero.
inline constexpr double exp2Limit = 300.0;

/// t within the limits; NaN stays.
RU_INLINE double clamped(double t)
{
    const double above = -exp2Limit > t ? -exp2Limit : t;
    return exp2Limit < above ? exp2Limit : above;
}

/// 2^t within the limits, relative error 2^-28.5: t = k + f with |f| <= 1/2, 2^f by its minimax polynomial.
/// Any other t gives some number.
RU_INLINE double exp2OfClamped(double t)
{
    const Whole k = nearestWhole(t);
    const double f = t - k.value;
    const double z = f * f;
    const double low = 1.0 + f * 0x1.62e431173463ap-1;
    const double middle = 0x1.ebfbe2c542082p-3 + f * 0x1.c6ae72deebd6dp-5;
    const double high = (0x1.3b270e63e6e25p-7 + f * 0x1.5f7277406161fp-10) + z * 0x1.470b49f17eb21p-13;
    const double power = low + z * (middle + z * high);
    return ofBits(static_cast<int64_t>(static_cast<uint64_t>(bitsOf(power)) + (k.bits << 52)));
}

/// x^y for x >= 0 and NaN.
RU_INLINE float powOfMagnitude(float x, float y)
{
    const double t = static_cast<double>(y) * log2OfFinite(x);
    const float power = static_cast<float>(exp2OfClamped(clamped(t)));
    // 0, infinity and NaN stay what they are, or swap places: 1 / x by its bits.
    const int32_t bits = __builtin_bit_cast(int32_t, x);
    const float edge = y > 0.0f ? x : __builtin_bit_cast(float, 0x7F800000 - bits);
    const bool ordinary = int(static_cast<uint32_t>(bits - 1) < 0x7F7FFFFFu) | int(y == 0.0f);
    const float inside = ordinary ? power : edge;
    const float defined = y == y ? inside : y;
    return x == 1.0f ? 1.0f : defined;
}

RU_INLINE bool isWhole(float magnitude)
{
    return (magnitude >= 0x1p23f) | ((magnitude + 0x1p23f) - 0x1p23f == magnitude);
}

/// From 2^24 on floats are even.
RU_INLINE bool isOdd(float v)
{
    const float magnitude = __builtin_fabsf(v);
    return int(isWhole(magnitude)) & int(!isWhole(magnitude * 0.5f));
}

/// `magnitude` with the sign of `sign` where `take` holds.
RU_INLINE float withSign(float magnitude, float sign, bool take)
{
    const float taken = take ? sign : 0.0f;
    return __builtin_bit_cast(float, __builtin_bit_cast(int32_t, magnitude) |
                                         (__builtin_bit_cast(int32_t, taken) & INT32_MIN));
}

} // namespace ru_math

/// NaN below 0, -infinity at 0.
RU_INLINE float ru_log(float v)
{
    using namespace ru_math;
    const float finite = static_cast<float>(log2OfFinite(v) * ln2);
    const float counted = v > 0.0f ? finite : v == 0.0f ? -infinity : __builtin_nanf("");
    return v < infinity ? counted : v;
}

RU_INLINE float ru_exp(float v)
{
    using namespace ru_math;
    const float result = static_cast<float>(exp2OfClamped(clamped(v * log2e)));
    return v == v ? result : v;
}

RU_INLINE float ru_pow(float x, float y)
{
    using namespace ru_math;
    const float magnitude = __builtin_fabsf(x);
    const float power = withSign(powOfMagnitude(magnitude, y), x, isOdd(y));
    const bool undefined = (x < 0.0f) & (magnitude < infinity) & !isWhole(__builtin_fabsf(y));
    return undefined ? __builtin_nanf("") : power;
}
