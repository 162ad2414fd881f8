#pragma once

#include <RU/framework/ru_Kernels.h>

/// Hue, saturation and value, each in [0, 1] for colours in [0, 1]. Nothing here branches; what looks
/// roundabout makes one division out of several, with the same result.
namespace ru_hsv {

/// One sixth, with which a pure red comes to a hue of 1.0000002 and not 1. Kept as it stands.
inline constexpr float sixth = 0.1666667f;

RU_INLINE float larger(float a, float b)
{
    return b > a ? b : a;
}

RU_INLINE float smaller(float a, float b)
{
    return b < a ? b : a;
}

RU_INLINE float limited(float v) // NaN becomes 0
{
    const float above = v > 0.0f ? v : 0.0f;
    return above < 1.0f ? above : 1.0f;
}

/// Hue of a colour whose largest and smallest components are given. A sector's hue is base + or - the
/// distance of one component from the largest, as a part of the whole range.
RU_INLINE float hue(float r, float g, float b, float largest, float smallest)
{
    const bool red = largest == r, green = largest == g;
    const bool minR = smallest == r, minG = smallest == g, minB = smallest == b;
    const float afterGreen = green ? (minB ? r : b) : (minR ? g : r);
    const float component = red ? (minG ? b : g) : afterGreen;
    const float baseAfterGreen = green ? (minB ? 1.0f : 3.0f) : (minR ? 3.0f : 5.0f);
    const float base = red ? (minG ? 5.0f : 1.0f) : baseAfterGreen;
    const float wayAfterGreen = green ? (minB ? 1.0f : -1.0f) : (minR ? 1.0f : -1.0f);
    const float way = red ? (minG ? 1.0f : -1.0f) : wayAfterGreen;
    const float range = largest - smallest;
    const float part = (largest - component) / range;
    const float turned = (base + way * part) * sixth;
    const float wrapped = turned == 1.0f ? 0.0f : turned;
    return range == 0.0f ? 0.0f : wrapped;
}

RU_INLINE float saturation(float largest, float smallest)
{
    const float part = (largest - smallest) / largest;
    return largest > 0.0f ? part : 0.0f;
}

/// Red, green, blue to hue, saturation, value.
RU_INLINE void fromColour(float& r, float& g, float& b)
{
    const float largest = larger(larger(r, g), b), smallest = smaller(smaller(r, g), b);
    const float h = hue(r, g, b, largest, smallest);
    r = h;
    g = saturation(largest, smallest);
    b = largest;
}

/// The remainder of x / 6 with the sign of x, exact for every float: in steps whose quotients a double holds.
RU_INLINE double remainderOfSix(float x)
{
    double rest = x;
    rest -= __builtin_trunc(rest / (6.0 * 0x1p76)) * (6.0 * 0x1p76);
    rest -= __builtin_trunc(rest / (6.0 * 0x1p26)) * (6.0 * 0x1p26);
    return rest - __builtin_trunc(rest / 6.0) * 6.0;
}

/// Back, for a hue given as its sixfold in [0, 6]. At 6 itself, to which rounding can lead, it is red as at 0.
/// A saturation above 1 stands for components below 0.
RU_INLINE void toWideColour(float sixfold, float s, float v, float& r, float& g, float& b)
{
    const float sector = __builtin_floorf(sixfold);
    const bool one = sector == 1.0f, two = sector == 2.0f, three = sector == 3.0f;
    const bool four = sector == 4.0f, five = sector == 5.0f;
    const float part = sixfold - sector;
    const float low = (1.0f - s) * v;
    const float way = (one | three | five) ? part : 1.0f - part;
    const float between = (1.0f - s * way) * v;
    const float red = (two | three) ? low : (one | four) ? between : v;
    const float green = (four | five) ? low : (one | two) ? v : between;
    const float blue = (three | four) ? v : (two | five) ? between : low;
    const bool coloured = s > 0.0f;
    r = coloured ? red : v;
    g = coloured ? green : v;
    b = coloured ? blue : v;
}

/// The same with a saturation of at most 1.
RU_INLINE void toColour(float sixfold, float s, float v, float& r, float& g, float& b)
{
    toWideColour(sixfold, s > 1.0f ? 1.0f : s, v, r, g, b);
}

/// The sixfold of a hue in [0, 1].
RU_INLINE float sixfoldOf(float h)
{
    const float sixfold = h * 6.0f;
    return sixfold >= 6.0f ? sixfold - 6.0f : sixfold;
}

/// A hue to within one turn: the remainder of a division by 1, made positive.
RU_INLINE float withinTurn(float h)
{
    const float rest = h - __builtin_truncf(h);
    return rest < 0.0f ? rest + 1.0f : rest;
}

} // namespace ru_hsv
