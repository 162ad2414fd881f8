#pragma once

#include <RU/pixelfunc/ru_HSV.h>
#include <UT/UT_Matrix4.h>

#include <cstdint>

/// The arithmetic of the functions that look at several components of a pixel, once: vector form and rows
/// are both made from it. An expression changes the components that it is given in place; what is absent or
/// out of scope is written to nowhere.
#define RU_PIXEL_EXPRESSION [[gnu::always_inline]] inline void operator()

/// Which components a pixel has: bit c for component c.
using ru_Present = unsigned;

inline constexpr ru_Present ru_allColour = 7;

/// For functions of red, green and blue that do nothing unless all three are there.
struct ru_OfColour
{
    static constexpr int width = 3;
    static constexpr ru_Present needed = ru_allColour;
    /// The component to read for component c; 4 reads zeros.
    static int source(int c, ru_Present) { return c; }
};

/// For functions of whatever is there; an absent component reads as 0.
struct ru_OfPresent
{
    static constexpr int width = 4;
    static constexpr ru_Present needed = 0;
    static int source(int c, ru_Present present) { return (present >> c & 1) != 0 ? c : 4; }
};

/// The same, with the first component that is there in place of absent ones.
struct ru_OfPresentAlone : ru_OfPresent
{
    static int source(int c, ru_Present present)
    {
        return (present >> c & 1) != 0 ? c : __builtin_ctz(present | 16);
    }
};

/// What red, green and blue count for in a luminance.
struct ru_Weights
{
    float red, green, blue;
    [[gnu::always_inline]] inline float sum(float r, float g, float b) const
    {
        return red * r + green * g + blue * b;
    }
};

/// Of linear light.
inline constexpr ru_Weights ru_linearLuminance = {0.3086f, 0.6094f, 0.082f};

struct ru_WeightedSum : ru_OfColour
{
    ru_Weights weights;
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b) const { r = g = b = weights.sum(r, g, b); }
};

/// One component for all, 0 where it is absent: what is read is what is written.
struct ru_OneComponent : ru_OfPresent
{
    int component;
    int source(int, ru_Present present) const
    {
        return component >= 0 && component < 4 && (present >> component & 1) != 0 ? component : 4;
    }
    RU_PIXEL_EXPRESSION(float&, float&, float&, float&) const {}
};

/// A later component wins only where it is strictly larger.
struct ru_Max : ru_OfPresentAlone
{
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b, float& a) const
    {
        r = g = b = a = ru_hsv::larger(ru_hsv::larger(ru_hsv::larger(r, g), b), a);
    }
};

struct ru_Min : ru_OfPresentAlone
{
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b, float& a) const
    {
        r = g = b = a = ru_hsv::smaller(ru_hsv::smaller(ru_hsv::smaller(r, g), b), a);
    }
};

struct ru_Average : ru_OfPresent
{
    float count;
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b, float& a) const
    {
        r = g = b = a = (r + g + b + a) / count;
    }
};

struct ru_Length : ru_OfPresent
{
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b, float& a) const
    {
        r = g = b = a = __builtin_sqrtf(r * r + g * g + b * b + a * a);
    }
};

struct ru_Normalize : ru_OfPresent
{
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b, float& a) const
    {
        const float square = r * r + g * g + b * b + a * a;
        const float scale = square > 0.0f ? 1.0f / __builtin_sqrtf(square) : 1.0f;
        r *= scale;
        g *= scale;
        b *= scale;
        a *= scale;
    }
};

struct ru_Saturation : ru_OfColour
{
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b) const
    {
        using namespace ru_hsv;
        r = g = b = saturation(larger(larger(r, g), b), smaller(smaller(r, g), b));
    }
};

struct ru_Transform : ru_OfPresent
{
    static constexpr int width = 3;
    UT_Matrix4 xform;
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b) const
    {
        const UT_Vector4 moved = rowVecMult({r, g, b, 1.0f}, xform);
        r = moved.x;
        g = moved.y;
        b = moved.z;
    }
};

struct ru_Hue : ru_OfColour
{
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b) const
    {
        using namespace ru_hsv;
        r = g = b = hue(r, g, b, larger(larger(r, g), b), smaller(smaller(r, g), b));
    }
};

struct ru_ToHSV : ru_OfColour
{
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b) const { ru_hsv::fromColour(r, g, b); }
};

struct ru_FromHSV : ru_OfColour
{
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b) const
    {
        const float rest = ru_hsv::remainderOfSix(r * 6.0f);
        ru_hsv::toColour(rest < 0.0f ? rest + 6.0f : rest, g, b, r, g, b);
    }
};

/// Saturation and value are scaled and shifted, hue turned. A pixel that has red alone is a grey: it reads
/// as red thrice, and its saturation parameters are 0.
struct ru_AdjustHSV : ru_OfPresent
{
    static constexpr int width = 3;
    static bool redAlone(ru_Present present) { return (present & ru_allColour) == 1; }
    static int source(int c, ru_Present present)
    {
        return redAlone(present) ? 0 : ru_OfPresent::source(c, present);
    }

    float turn, satScale, satShift, valScale, valShift;
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b) const
    {
        using namespace ru_hsv;
        fromColour(r, g, b);
        const float s = clamped01(g * satScale + satShift);
        toColour(sectorsOf(withinTurn(r + turn)), s, b * valScale + valShift, r, g, b);
    }
};

/// The same, and the luminance is then brought to what value alone would have made of it.
struct ru_AdjustHSVKeepingLuminance : ru_AdjustHSV
{
    ru_Weights weights; ///< of the input
    RU_PIXEL_EXPRESSION(float& r, float& g, float& b) const
    {
        const float before = weights.sum(r, g, b);
        ru_AdjustHSV::operator()(r, g, b);
        const float after = ru_linearLuminance.sum(r, g, b);
        const float ratio = (before * valScale + valShift) / after;
        const float scale = after != 0.0f ? ratio : 1.0f;
        r *= scale;
        g *= scale;
        b *= scale;
    }
};

/// Hue is turned, saturation and value are multiplied by what a table says of the hue.
struct ru_HueCurve : ru_OfColour
{
    static constexpr int steps = 2048;        ///< around the circle, a power of two
    static constexpr float whole = 0x1.8p23f; ///< adding it rounds to a whole number, held in the low bits
    /// `steps` + 1 samples each, the last one as the first.
    const float *turns, *satGains, *valGains;

    /// A gather for which the compilers keep an index of 32 bits.
    [[gnu::always_inline]] static float between(const float* samples, int index, float part)
    {
        const float* next = samples + 1;
        return samples[index] + (next[index] - samples[index]) * part;
    }

    RU_PIXEL_EXPRESSION(float& r, float& g, float& b) const
    {
        using namespace ru_hsv;
        float h = r, s = g, v = b;
        fromColour(h, s, v);
        const float place = h * static_cast<float>(steps);
        const float shifted = (place - 0.5f) + whole;
        const float part = place - (shifted - whole);
        const int at = __builtin_bit_cast(int, shifted) & (steps - 1);
        const float turn = between(turns, at, part);
        const float satGain = between(satGains, at, part), valGain = between(valGains, at, part);
        const float grown = v * (1.0f + (valGain - 1.0f) * smaller(s, 1.0f));
        float red, green, blue;
        toWideColour(sectorsOf(withinTurn(h + turn)), s * satGain, grown, red, green, blue);
        const bool changes = (turn != 0.0f) | (satGain != 1.0f) | (valGain != 1.0f);
        const bool touched = changes & (v > 0.0f) & (s < __builtin_inff());
        r = touched ? red : r;
        g = touched ? green : g;
        b = touched ? blue : b;
    }
};

/// A key colour becomes another one, and what is near it follows.
struct ru_Replace : ru_OfColour
{
    float keyHue, keySat, keyVal;
    float inner, outer, slope; ///< slope: 1 / (outer - inner)
    float toHue, hueScale;     ///< what the key becomes, and how much of a pixel's distance is added
    float satScale, satShift, valScale, valShift;

    RU_PIXEL_EXPRESSION(float& r, float& g, float& b) const
    {
        using namespace ru_hsv;
        float h = r, s = g, v = b;
        fromColour(h, s, v);
        const float way = h - keyHue;
        const float around = way > 0.5f ? way - 1.0f : way + 1.0f;
        const float hueApart = __builtin_fabsf(way) > 0.5f ? around : way;
        const float turn = 2.0f * hueApart * smaller(s, keySat);
        const float satApart = s - keySat, valApart = v - keyVal;
        const float distance = __builtin_sqrtf(turn * turn + satApart * satApart + valApart * valApart);
        const float rise = clamped01((outer - distance) * slope);
        const float smooth = rise * rise * (3.0f - 2.0f * rise);
        const float weight = distance <= inner ? 1.0f : smooth;

        float red, green, blue;
        const float sectors = sectorsOf(withinTurn(toHue + hueScale * hueApart));
        toColour(sectors, s * satScale + satShift, v * valScale + valShift, red, green, blue);
        const bool touched = weight > 0.0f;
        r = touched ? (1.0f - weight) * r + weight * red : r;
        g = touched ? (1.0f - weight) * g + weight * green : g;
        b = touched ? (1.0f - weight) * b + weight * blue : b;
    }
};

/// The list that the kernels are made from.
#define RU_FOR_EACH_VECTOR_EXPRESSION(X)                                                                     \
    X(ru_WeightedSum)                                                                                        \
    X(ru_OneComponent)                                                                                       \
    X(ru_Max)                                                                                                \
    X(ru_Min)                                                                                                \
    X(ru_Average)                                                                                            \
    X(ru_Length)                                                                                             \
    X(ru_Normalize)                                                                                          \
    X(ru_Saturation)                                                                                         \
    X(ru_Transform)                                                                                          \
    X(ru_Hue)                                                                                                \
    X(ru_ToHSV)                                                                                              \
    X(ru_FromHSV)                                                                                            \
    X(ru_AdjustHSV)                                                                                          \
    X(ru_AdjustHSVKeepingLuminance)                                                                          \
    X(ru_HueCurve)                                                                                           \
    X(ru_Replace)

/// An expression over rows of pixels. Component c is read from in[c] and written to out[c], which may be the
/// same row; no other rows overlap.
template <class Expression>
struct ru_PixelKernel
{
    void (*run)(const Expression& expression, const float* const* in, float* const* out, int64_t count);
};

struct ru_VectorKernels :
#define RU_BASE(EXPRESSION) ru_PixelKernel<EXPRESSION>,
    RU_FOR_EACH_VECTOR_EXPRESSION(RU_BASE)
#undef RU_BASE
        ru_KernelTable
{
};
