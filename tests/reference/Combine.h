#pragma once

#include <cmath>

/// What combining a source and a destination means, written from the formulas.
namespace reference {

/// A compositing operation by its number, in steps of Number: colours as codes, alphas from 0 to 1. A null
/// alpha is full everywhere.
template <class Number>
Number composited(int type, Number s, Number d, const Number* sA, const Number* dA, Number white)
{
    const Number notS = sA ? 1 - *sA : 0, notD = dA ? 1 - *dA : 0;
    const Number inside = dA ? s * *dA : s, outside = dA ? s * notD : 0;
    const Number results[] = {
        sA ? s + notS * d : s,           // over
        dA ? d + notD * s : d,           // under
        sA ? inside + notS * d : inside, // atop
        inside,                          //
        outside,                         //
        s + d - s * d / white,           // screen
        s + d,                           // add
        d - s,                           // subtract
        std::abs(s - d),                 // difference
        s * d / white,                   // multiply
        d <= s ? d : s,                  // minimum
        s <= d ? d : s,                  // maximum
        (s + d) / 2,                     // average
        !sA  ? outside
        : dA ? outside + d * notS
             : d * notS, // xor
        s - d,           // reversed subtract
    };
    return results[type];
}

/// What the result is as it stands, for want of alphas: the source, the destination or zero; null: none.
template <class T>
const T* plain(int type, const T* s, const T* d, bool sA, bool dA)
{
    static constexpr T zero = 0;
    if (type == 1 || type == 3 || type == 4)
        return dA ? nullptr : type == 1 ? d : type == 3 ? s : &zero;
    if (sA || (dA && type != 0))
        return nullptr;
    return type == 0 || type == 2 ? s : type == 13 ? &zero : nullptr;
}

/// Values that are chosen rather than mixed, by the first five operations.
inline float selected(int type, float s, float d, const float* sA, const float* dA, bool geometry)
{
    const bool showsS = !sA || (geometry && *sA > 0), showsD = !dA || (geometry && *dA > 0);
    const float results[] = {
        showsS ? s : d,           // over
        showsD ? d : s,           // under
        showsS && showsD ? s : d, // atop
        !dA || *dA > 0 ? s : 0,   // inside
        dA && *dA < 1 ? s : 0,    // outside
    };
    return results[type];
}

} // namespace reference
