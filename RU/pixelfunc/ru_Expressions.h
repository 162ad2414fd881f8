#pragma once

#include <PXL/PXL_LookupChannel.h>
#include <RU/kernel/ru_Power.h>
#include <RU/kernel/ru_Trigonometry.h>
#include <SYS/SYS_Math.h>

/// The arithmetic of every pixel function, once: its parameters for one component, and the result for a
/// value. Scalar and row forms are both made from it. What looks roundabout keeps the loop over a row free
/// of branches.
///
/// Where few values need a branch, an expression says so by two more members, ordinary(v) and ofOrdinary(v),
/// the latter without branches and equal to the expression for ordinary values. Rows go by it in segments.
#define RU_MEMBER [[gnu::always_inline]] inline
#define RU_EXPRESSION RU_MEMBER float operator()

/// A line, then limits: multiplying by 1, adding -0 and infinite limits change nothing. The upper limit sees
/// what the lower one made.
struct ru_Line
{
    float mult = 1.0f, add = -0.0f;
    float lower = -ru_math::infinity, belowValue = 0.0f;
    float upper = ru_math::infinity, aboveValue = 0.0f;

    RU_EXPRESSION(float v) const
    {
        const float w = v * mult + add;
        const float raised = w < lower ? belowValue : w;
        return raised > upper ? aboveValue : raised;
    }
    bool multiplies() const { return mult != 1.0f; }
    bool adds() const { return add != 0.0f || !__builtin_signbit(add); }
    bool limits() const { return (lower > -ru_math::infinity) | (upper < ru_math::infinity); }
};

struct ru_Scale
{
    ru_Scale(float scale, float pivot) : lines{{1.0f, -pivot}, {scale, pivot}} {}
    RU_EXPRESSION(float v) const { return lines[1](lines[0](v)); }
    ru_Line lines[2];
};

/// 0 and 1 stay exactly what they are, whatever the exponent.
struct ru_Gamma
{
    const ru_Exponent* exponent;
    RU_EXPRESSION(float v) const
    {
        const float power = ru_powOfMagnitude(__builtin_fabsf(v), *exponent); // 1 at 1
        const float odd = v > 0.0f ? power : -power;
        return v == 0.0f ? 0.0f : odd;
    }
};

/// v^expon, odd about 0; a zero keeps the sign that C gives it.
struct ru_Power
{
    const ru_Exponent* exponent;
    RU_EXPRESSION(float v) const
    {
        const float power = ru_powOfMagnitude(__builtin_fabsf(v), *exponent);
        return ru_math::withSign(power, v, (v < 0.0f) | ((v == 0.0f) & ru_math::isOdd(exponent->exponent)));
    }
};

struct ru_Quantize
{
    float step, offset;
    RU_EXPRESSION(float v) const { return __builtin_floorf((v - offset) / step) * step + offset; }
};

struct ru_Lookup
{
    PXL_LookupChannel channel;
    RU_EXPRESSION(float v) const { return channel.evaluate(v); }
};

struct ru_Abs
{
    RU_EXPRESSION(float v) const { return __builtin_fabsf(v); }
};

struct ru_Invert
{
    bool useReplacement;
    float replacement;
    RU_EXPRESSION(float v) const
    {
        const float atZero = useReplacement ? replacement : v;
        return v == 0.0f ? atZero : 1.0f / v;
    }
};

struct ru_Sign
{
    RU_EXPRESSION(float v) const { return v < 0.0f ? -1.0f : v > 0.0f ? 1.0f : 0.0f; }
};

struct ru_Floor
{
    RU_EXPRESSION(float v) const { return __builtin_floorf(v); }
};

struct ru_Ceil
{
    RU_EXPRESSION(float v) const { return SYSceil(v); }
};

struct ru_Round
{
    RU_EXPRESSION(float v) const { return __builtin_floorf(v + 0.5f); }
};

/// base^v, negated for a base below 0.
struct ru_Raise
{
    float base;
    RU_EXPRESSION(float v) const
    {
        const float power = ru_math::powOfMagnitude(__builtin_fabsf(base), v);
        return ru_math::withSign(power, base, (base < 0.0f) | ((base == 0.0f) & ru_math::isOdd(v)));
    }
};

struct ru_Log
{
    float factor;
    bool useReplacement;
    float replacement;
    RU_EXPRESSION(float v) const
    {
        const float otherwise = useReplacement ? replacement : v;
        return v > 0.0f ? ru_log(v) * factor : otherwise;
    }
};

struct ru_Sin
{
    float scale, shift;
    RU_EXPRESSION(float v) const { return ru_sin(v * scale + shift); }
    RU_MEMBER bool ordinary(float v) const { return ru_math::isModerate(v * scale + shift); }
    RU_MEMBER float ofOrdinary(float v) const { return ru_math::sinOfModerate(v * scale + shift); }
};

struct ru_Sinh
{
    float scale;
    RU_EXPRESSION(float v) const { return ru_sinh(v * scale); }
};

struct ru_Cosh
{
    float scale;
    RU_EXPRESSION(float v) const { return ru_cosh(v * scale); }
};

/// At the float nearest to pi / 2 the replacement, or the input as it came in, unscaled.
struct ru_Tan
{
    float scale;
    bool useReplacement;
    float replacement;
    RU_EXPRESSION(float v) const { return unlessAtPole(v, ru_tan(v * scale)); }
    RU_MEMBER bool ordinary(float v) const { return ru_math::isModerate(v * scale); }
    RU_MEMBER float ofOrdinary(float v) const { return unlessAtPole(v, ru_math::tanOfModerate(v * scale)); }

    RU_MEMBER float unlessAtPole(float v, float tangent) const
    {
        constexpr float pole = 1.5707964f;
        const float otherwise = useReplacement ? replacement : v;
        return __builtin_fabsf(v * scale) == pole ? otherwise : tangent;
    }
};

struct ru_Tanh
{
    float scale;
    RU_EXPRESSION(float v) const { return ru_tanh(v * scale); }
};

struct ru_Atan
{
    float scale;
    RU_EXPRESSION(float v) const { return ru_atan(v) * scale; }
};

/// Only NaN takes the replacement; a number outside [-1, 1] gives what C's asin gives, NaN.
struct ru_Asin
{
    float scale;
    bool useReplacement;
    float replacement;
    RU_EXPRESSION(float v) const
    {
        const float otherwise = useReplacement ? replacement : v;
        return v == v ? ru_asin(v) * scale : otherwise;
    }
};

struct ru_Acos
{
    float scale;
    bool useReplacement;
    float replacement;
    RU_EXPRESSION(float v) const
    {
        const float otherwise = useReplacement ? replacement : v;
        return v == v ? ru_acos(v) * scale : otherwise;
    }
};

/// The list that the kernels are made from. Lines and powers have theirs in ru_LineRows.h.
#define RU_FOR_EACH_EXPRESSION(X)                                                                            \
    X(ru_Quantize)                                                                                           \
    X(ru_Lookup)                                                                                             \
    X(ru_Abs)                                                                                                \
    X(ru_Invert)                                                                                             \
    X(ru_Sign)                                                                                               \
    X(ru_Floor)                                                                                              \
    X(ru_Ceil)                                                                                               \
    X(ru_Round)                                                                                              \
    X(ru_Raise)                                                                                              \
    X(ru_Log)                                                                                                \
    X(ru_Sin)                                                                                                \
    X(ru_Sinh)                                                                                               \
    X(ru_Cosh)                                                                                               \
    X(ru_Tan)                                                                                                \
    X(ru_Tanh)                                                                                               \
    X(ru_Atan)                                                                                               \
    X(ru_Asin)                                                                                               \
    X(ru_Acos)

/// An expression over a row. `in` and `out` are the same row or apart.
template <class Expression>
struct ru_RowKernel
{
    void (*run)(const Expression& expression, const float* in, float* out, int64_t count);
};

struct ru_ExpressionKernels :
#define RU_BASE(EXPRESSION) ru_RowKernel<EXPRESSION>,
    RU_FOR_EACH_EXPRESSION(RU_BASE)
#undef RU_BASE
        ru_KernelTable
{
};
