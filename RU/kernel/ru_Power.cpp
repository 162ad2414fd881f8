#include <RU/kernel/ru_Power.h>

#include <cmath>

namespace {

constexpr int cells = 8;

/// log2(e) / c.
constexpr float factors[cells] = {0x1.5c1e9ap+0f, 0x1.376d44p+0f, 0x1.19bb48p+0f, 0x1.0134d4p+0f,
                                  0x1.d937ep-1f,  0x1.b621e4p-1f, 0x1.97e3ep-1f,  0x1.7d8da4p-1f};
/// log2(c), and the constant term of the polynomial of log2(1 + q ln 2).
constexpr double logs[cells] = {0x1.5d803e8ab9ce9p-4, 0x1.f7d7c1248efd1p-3, 0x1.8ff68d751412cp-2,
                                0x1.0b4178851b327p-1, 0x1.48e93b757de8ep-1, 0x1.81d06e26e9fc7p-1,
                                0x1.b6a541aa7d009p-1, 0x1.e7f2fa222ca68p-1};
/// The other terms; relative error 2^-30.
constexpr double logTerms[5] = {1.0, -0x1.62e3f5adeca31p-2, 0x1.47fcadab01c32p-3, -0x1.5643d5da0fa2ap-4,
                                0x1.7c2dc64cd2e6dp-5};
/// 2^(i / 8) times a factor for which all of them are nearly floats.
constexpr float roots[cells] = {0x1.feb052p-1f, 0x1.16747cp+0f, 0x1.2fa848p+0f, 0x1.4b2404p+0f,
                                0x1.691c8ap+0f, 0x1.89cb7cp+0f, 0x1.ad6fb4p+0f, 0x1.d44dbcp+0f};
constexpr double logOfRootFactor = -0x1.e4e794cb38b85p-9;

/// The bits of 2^t, the nearest normal number where that is none, those of infinity from 2^128 on.
uint32_t bitsOfPower(double t)
{
    if (t <= -126.0)
        return 0x00800000;
    return t >= 128.0 ? 0x7F800000
                      : __builtin_bit_cast(uint32_t, static_cast<float>(ru_math::exp2OfClamped(t)));
}

} // namespace

ru_Exponent::ru_Exponent(float p) : exponent(p)
{
    const double size = std::fabs(p);
    const bool usable = size >= 0x1p-20 && size <= 3.0;
    pHi = __builtin_bit_cast(float, (__builtin_bit_cast(uint32_t, p) + 0x80) & 0xFFFFFF00);
    pLo = static_cast<float>(double(p) - pHi);
    const double grid = usable ? std::ldexp(0x1.8p52, std::ilogb(pHi) - 15) : 0.0; // of what pHi e can be
    for (int k = 0; k < 5; ++k)
        terms[k] = static_cast<float>(p * logTerms[k]);
    for (int i = 0; i < cells; ++i) {
        constexpr double bias = 127.0;
        const double v = p * logs[i], whole = (v + grid) - grid;
        factor[i] = factors[i];
        hi[i] = static_cast<float>(whole - bias * pHi);
        lo[i] = static_cast<float>((v - whole) - bias * pLo - logOfRootFactor);
        root[i] = __builtin_bit_cast(float, __builtin_bit_cast(uint32_t, roots[i]) -
                                                (static_cast<uint32_t>(i) << 20));
    }
    const double least = (p > 0.0f ? -120.0 : -125.0) / size, most = (p > 0.0f ? 125.0 : 120.0) / size;
    lowest = bitsOfPower(least);
    span = usable ? bitsOfPower(most) - lowest + (most < 128.0 ? 1 : 0) : 0;
    if (ru_math::powInReach(1.0f, ru_math::PowerOfOne(*this)) != 1.0f) // five exponents miss it by one place
        span = 0;
}
