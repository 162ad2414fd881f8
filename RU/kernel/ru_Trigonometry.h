#pragma once

#include <RU/kernel/ru_Math.h>

/// Sine, tangent, the hyperbolic functions and their like for floats, made as log, exp and pow are: in
/// double, rounded once, the same bits in every form. Errors against the exact result, for every float, in
/// units of the last place of the float result:
///
///     ru_sin  0.501      ru_asin  0.505      ru_sinh  0.501
///     ru_tan  0.501      ru_acos  0.505      ru_cosh  0.501
///                        ru_atan  0.511      ru_tanh  0.501
///
/// Special cases are those of C. Nothing branches but ru_sin and ru_tan, on whether an angle is moderate:
/// what runs over many values asks isModerate() first.

namespace ru_math {

inline constexpr double pi = 0x1.921fb54442d18p+1;

/// An angle as n steps of pi or pi / 2 and a rest of at most half a step.
struct Angle
{
    double rest;
    uint64_t n; ///< its lowest bit counts
};

/// Below 2^23; or infinite or NaN, which end as NaN.
RU_INLINE bool isModerate(float x)
{
    const float magnitude = __builtin_fabsf(x);
    return int(magnitude < 0x1p23f) | int(!(magnitude < infinity));
}

/// A moderate x in steps of pi / parts, which is 1 or 2. The first part of pi has 29 bits and n at most 23,
/// so that their product is exact and its difference from x too. The second is positive: -0 stays -0.
RU_INLINE Angle angleOfModerate(double x, double parts)
{
    constexpr double perPi = 0x1.45f306dc9c883p-2;
    constexpr double piHigh = 0x1.921fb54p+1;
    constexpr double piLow = 0x1.10b4611a62633p-29;
    const Whole n = nearestWhole(x * (perPi * parts));
    return {(x - n.value * (piHigh / parts)) - n.value * (piLow / parts), n.bits};
}

/// x that is not moderate in steps of pi or, with `halved`, pi / 2. x is m * 2^e, both whole: its turns, as a
/// fraction of 64 bits, are m times the digits of 1 / (2 pi) from the one after 2^-e on.
RU_INLINE Angle angleOfHuge(float x, bool halved)
{
    constexpr uint64_t digits[] = {0x28be60db, 0x9391054a, 0x7f09d5f4, 0x7d4d3770,
                                   0x36d8a566, 0x4f10e410, 0x7f9458ea};
    const auto bits = __builtin_bit_cast(uint32_t, x);
    const uint64_t m = (bits & 0x7FFFFF) | 0x800000;
    const unsigned int e = ((bits >> 23) & 0xFF) - 150;
    const uint64_t* from = digits + e / 32;
    const unsigned int shift = e % 32;
    const uint64_t high = (from[0] << 32 | from[1]) << shift | from[2] >> (32 - shift);
    const uint64_t low = ((from[2] << 32 | from[3]) << shift) >> 32;
    const uint64_t turns = m * high + (m * low >> 32);
    const unsigned int below = halved ? 62 : 63; // bits of a step
    const uint64_t n = (turns + (uint64_t(1) << (below - 1))) >> below;
    const double rest = static_cast<double>(static_cast<int64_t>(turns - (n << below))) * (pi * 0x1p-63);
    return {x < 0.0f ? -rest : rest, n};
}

/// From steps of pi: an odd minimax polynomial on [-pi / 2, pi / 2], relative error 2^-35.
RU_INLINE float sinOf(Angle angle)
{
    const double z = angle.rest * angle.rest;
    const double s =
        angle.rest * polynomial(z, 0x1.ffffffffd17cep-1, -0x1.5555554175922p-3, 0x1.11110b74aabb8p-7,
                                -0x1.a017a8fd2aff3p-13, 0x1.716ba4e0ed97cp-19, -0x1.9a0e1696dd92ap-26);
    return static_cast<float>(ofBits(bitsOf(s) ^ static_cast<int64_t>(angle.n << 63)));
}

/// From steps of pi / 2: a minimax fraction on [-pi / 4, pi / 4], relative error 2^-35; -1 over it for odd n.
RU_INLINE float tanOf(Angle angle)
{
    const double z = angle.rest * angle.rest;
    const double over =
        angle.rest * polynomial(z, 0x1.0000000018491p+0, -0x1.c822eed515f1dp-4, 0x1.19d868eba9289p-10);
    const double under = polynomial(z, 1.0, -0x1.c75e10ee0de09p-2, 0x1.05b542e5e283cp-6);
    // Not with selects: the baseline compares no 64-bit integers.
    const auto swap = (bitsOf(over) ^ bitsOf(under)) & -static_cast<int64_t>(angle.n & 1);
    const auto negate = static_cast<int64_t>(angle.n << 63);
    return static_cast<float>(ofBits(bitsOf(over) ^ swap ^ negate) / ofBits(bitsOf(under) ^ swap));
}

RU_INLINE float sinOfModerate(float x)
{
    return sinOf(angleOfModerate(x, 1.0));
}

RU_INLINE float tanOfModerate(float x)
{
    return tanOf(angleOfModerate(x, 2.0));
}

/// asin(magnitude) up to 1/2; above asin(sqrt((1 - magnitude) / 2)), which is half of acos(magnitude).
/// A minimax polynomial, relative error 2^-31.
RU_INLINE double lesserAsin(double magnitude)
{
    const bool small = magnitude <= 0.5;
    const double z = small ? magnitude * magnitude : 0.5 - 0.5 * magnitude;
    const double s = small ? magnitude : __builtin_sqrt(z);
    return s * polynomial(z, 0x1.0000000117f17p+0, 0x1.55554848e38eep-3, 0x1.333988d61744dp-4,
                          0x1.6c91bbfc18a7bp-5, 0x1.0554db2cf43a1p-5, 0x1.cf525bfed6a72p-7,
                          0x1.365bebfe56bcap-5);
}

struct Hyperbolic
{
    double sinh, cosh;
};

/// Both for magnitude >= 0 and NaN. With 2^t for e^magnitude and t = k + f, they are sums of products of
/// those of k and of f, the latter minimax polynomials for |f| <= 1/2; relative error 2^-33.
RU_INLINE Hyperbolic hyperbolicOf(double magnitude)
{
    constexpr double limit = 150.0; // sinh and cosh of it are infinite as floats
    constexpr uint64_t half = 0x3FE0000000000000;
    const double unlimited = magnitude * log2e;
    const double t = limit < unlimited ? limit : unlimited;
    const Whole k = nearestWhole(t);
    const double f = t - k.value;
    const double z = f * f;
    const double s = f * polynomial(z, 0x1.62e42fef9cd70p-1, 0x1.c6b08da6c2946p-5, 0x1.5d8775fb48800p-10,
                                    0x1.00c0a2c945473p-16);
    const double c = polynomial(z, 0x1.ffffffffa99c8p-1, 0x1.ebfbe0a725912p-3, 0x1.3b29daa5e8dabp-7,
                                0x1.446b32297368ap-13);
    const double up = ofBits(static_cast<int64_t>(half + (k.bits << 52)));
    const double down = ofBits(static_cast<int64_t>(half - (k.bits << 52)));
    return {s * (up + down) + c * (up - down), c * (up + down) + s * (up - down)};
}

} // namespace ru_math

RU_INLINE float ru_sin(float x)
{
    using namespace ru_math;
    return isModerate(x) ? sinOfModerate(x) : sinOf(angleOfHuge(x, false));
}

RU_INLINE float ru_tan(float x)
{
    using namespace ru_math;
    return isModerate(x) ? tanOfModerate(x) : tanOf(angleOfHuge(x, true));
}

RU_INLINE float ru_asin(float x)
{
    using namespace ru_math;
    const double magnitude = __builtin_fabsf(x);
    const double lesser = lesserAsin(magnitude);
    return withSign(static_cast<float>(magnitude <= 0.5 ? lesser : pi / 2 - 2.0 * lesser), x, true);
}

RU_INLINE float ru_acos(float x)
{
    using namespace ru_math;
    const double magnitude = __builtin_fabsf(x);
    const double lesser = lesserAsin(magnitude);
    const bool small = magnitude <= 0.5;
    const double ofPositive = small ? -lesser : 2.0 * lesser;
    const double from = small ? pi / 2 : x < 0.0f ? pi : 0.0;
    return static_cast<float>(from + (x < 0.0f ? -ofPositive : ofPositive));
}

/// 0, pi / 4 or pi / 2 and the arc of a fraction of at most tan(pi / 8): a minimax polynomial, relative error
/// 2^-30.
RU_INLINE float ru_atan(float x)
{
    using namespace ru_math;
    constexpr double first = 0x1.a827999fcef32p-2,
                     second = 0x1.3504f333f9de6p+1; // tan(pi / 8), tan(3 pi / 8)
    const double magnitude = __builtin_fabsf(x);
    const bool small = magnitude <= first, large = magnitude > second;
    const double over = small ? magnitude : large ? -1.0 : magnitude - 1.0;
    const double under = small ? 1.0 : large ? magnitude : magnitude + 1.0;
    const double from = small ? 0.0 : large ? pi / 2 : pi / 4;
    const double t = over / under;
    const double z = t * t;
    const double arc = t * polynomial(z, 0x1.fffffffad13b2p-1, -0x1.55554414ba474p-2, 0x1.9990406366c55p-3,
                                      -0x1.23a30b24ea965p-3, 0x1.b116edb2120dcp-4, -0x1.ee5e80c077cc6p-5);
    return withSign(static_cast<float>(from + arc), x, true);
}

RU_INLINE float ru_sinh(float x)
{
    using namespace ru_math;
    return withSign(static_cast<float>(hyperbolicOf(__builtin_fabsf(x)).sinh), x, true);
}

RU_INLINE float ru_cosh(float x)
{
    using namespace ru_math;
    return static_cast<float>(hyperbolicOf(__builtin_fabsf(x)).cosh);
}

RU_INLINE float ru_tanh(float x)
{
    using namespace ru_math;
    const Hyperbolic both = hyperbolicOf(__builtin_fabsf(x));
    return withSign(static_cast<float>(both.sinh / both.cosh), x, true);
}
