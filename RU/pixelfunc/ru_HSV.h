#pragma once

#include <RU/kernel/ru_Kernels.h>

/// Hue, saturation and value, each in [0, 1] for colours in [0, 1]. Nothing here branches. The three cases of
/// the usual formula select what is divided, so that there is one division and not one for each; the result is
/// the same.
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

RU_INLINE float clamped01(float v) // NaN becomes 0
{
    const float above = v > 0.0f ? v : 0.0f;
    return above < 1.0f ? above : 1.0f;
}

/// Hue of a colour whose largest and smallest components are given. The circle has six sectors. In each, hue
/// is a whole number of sectors plus or minus (largest - component) / (largest - smallest), for one component.
RU_INLINE float hue(float r, float g, float b, float largest, float smallest)
{
    const bool red = largest == r, green = largest == g;
    const float next = red ? g : green ? b : r, last = red ? b : green ? r : g; // around the circle
    const bool fromLast = smallest == next;
    const float component = fromLast ? last : next;
    const float up = red ? 5.0f : green ? 1.0f : 3.0f, down = red ? 1.0f : green ? 3.0f : 5.0f;
    const float base = fromLast ? up : down;
    const float way = fromLast ? 1.0f : -1.0f;
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
RU_INLINE float remainderOfSix(float x)
{
    double rest = x;
    rest -= __builtin_trunc(rest / (6.0 * 0x1p76)) * (6.0 * 0x1p76);
    rest -= __builtin_trunc(rest / (6.0 * 0x1p26)) * (6.0 * 0x1p26);
    return static_cast<float>(rest - __builtin_trunc(rest / 6.0) * 6.0);
}

/// (1 - s * d) * v, and v at a distance of 0 whatever the saturation is.
RU_INLINE float paled(float s, float d, float v)
{
    const float part = d != 0.0f ? s * d : 0.0f;
    return (1.0f - part) * v;
}

/// Back, for a hue in sectors, 0 to 6. A component is full over two sectors, falls off linearly over the one to
/// either side, and is lowest over the other two; how far it has fallen, 0 to 1, is exact. A hue that is NaN
/// leaves red full, blue lowest and green NaN. A saturation above 1 gives components below 0.
RU_INLINE void toWideColour(float sectors, float s, float v, float& r, float& g, float& b)
{
    const float fromRed = smaller(5.0f - sectors, sectors - 1.0f);
    const float fromGreen = larger(sectors - 3.0f, 1.0f - sectors);
    const float fromBlue = larger(sectors - 5.0f, 3.0f - sectors);
    const float red = clamped01(fromRed);
    const float green = smaller(larger(fromGreen, 0.0f), 1.0f); // NaN stays
    const float blue = larger(smaller(1.0f, fromBlue), 0.0f);   // NaN becomes 1
    const bool coloured = s > 0.0f;
    r = coloured ? paled(s, red, v) : v;
    g = coloured ? paled(s, green, v) : v;
    b = coloured ? paled(s, blue, v) : v;
}

/// The same with a saturation of at most 1.
RU_INLINE void toColour(float sectors, float s, float v, float& r, float& g, float& b)
{
    toWideColour(sectors, s > 1.0f ? 1.0f : s, v, r, g, b);
}

/// A hue in [0, 1] in sectors.
RU_INLINE float sectorsOf(float h)
{
    const float sectors = h * 6.0f;
    return sectors >= 6.0f ? sectors - 6.0f : sectors;
}

/// A hue in turns without its whole turns, 0 to 1.
RU_INLINE float withinTurn(float h)
{
    const float rest = h - __builtin_truncf(h);
    return rest < 0.0f ? rest + 1.0f : rest;
}

} // namespace ru_hsv
