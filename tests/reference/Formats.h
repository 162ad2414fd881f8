#pragma once

#include <PXL/PXL_Format.h>
#include <SYS/SYS_Half.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

/// What formats mean, written from their definition in double, independently of the library.
namespace reference {

/// An element type with one of its two ranges: the parameter of typed tests.
template <class T, bool FullRange>
struct Variant
{
    using Type = T;
    static constexpr bool full = FullRange;
};

template <class Ignored, class... V>
struct VariantList
{
    using Types = ::testing::Types<V...>;
    static constexpr size_t count = sizeof...(V);
};

#define BOTH_RANGES(CODE, T, WHITE, NAME) , Variant<T, true>, Variant<T, false>
using EachVariant = VariantList<void PXL_FOR_EACH_FORMAT(BOTH_RANGES)>;
#undef BOTH_RANGES
static_assert(EachVariant::count == 10);
using Variants = EachVariant::Types;

struct VariantNames
{
    template <class V>
    static std::string GetName(int)
    {
        static constexpr const char* names[] = {"uint8", "uint16", "uint32", "float32", "half"};
        return std::string(names[PXL_FormatOf<typename V::Type>::code]) + (V::full ? "Full" : "Points");
    }
};

template <class T>
constexpr bool isInteger = std::is_integral_v<T>;

/// Black and white points. The full range is the one from 0 to the code of white.
struct Range
{
    unsigned int black;
    unsigned int white;

    double span() const { return white - black; } // an unsigned difference
};

template <class T>
constexpr Range fullRange{0, PXL_FormatOf<T>::white};

template <class T>
constexpr Range somePoints{PXL_FormatOf<T>::white / 16 + 1, PXL_FormatOf<T>::white / 13 * 12};

template <class V>
constexpr Range rangeOf = V::full ? fullRange<typename V::Type> : somePoints<typename V::Type>;

/// The relative error of one operation in the type that pixels of T are computed in.
template <class T>
constexpr double roundOff = std::is_same_v<T, unsigned int> ? 0x1p-53 : 0x1p-24;

inline double halfValue(uint16_t bits)
{
    const int exponent = (bits >> 10) & 31;
    const int mantissa = bits & 1023;
    double magnitude = exponent == 0 ? std::ldexp(mantissa, -24) : std::ldexp(1024 + mantissa, exponent - 25);
    if (exponent == 31)
        magnitude = mantissa == 0 ? HUGE_VAL : std::nan("");
    return (bits & 0x8000) != 0 ? -magnitude : magnitude;
}

/// The distance between neighbouring numbers around v in a format of `digits` bits whose smallest normal
/// exponent is `lowest`.
inline double spacing(long double v, int digits, int lowest)
{
    return std::ldexp(1.0, (v == 0 ? lowest : std::max(std::ilogb(v), lowest)) - digits + 1);
}
inline double halfSpacing(double v)
{
    return spacing(v, 11, -14);
}
inline double floatSpacing(long double v)
{
    return spacing(v, 24, -126);
}

inline double nearestHalf(double v)
{
    if (!std::isfinite(v))
        return v;
    if (std::abs(v) >= 65520.0)
        return std::copysign(HUGE_VAL, v);
    return std::copysign(std::nearbyint(v / halfSpacing(v)) * halfSpacing(v), v);
}

/// The distance of a stored float from the exact result, in units of its last place there. Infinity stands
/// for 2^128, where it begins.
inline double ulpError(float stored, long double exact)
{
    if (std::isnan(stored) || std::isnan(exact))
        return std::isnan(stored) && std::isnan(exact) ? 0.0 : HUGE_VAL;
    const long double end = 0x1p128L;
    const long double shown = std::clamp<long double>(stored, -end, end);
    const long double meant = std::clamp(exact, -end, end);
    if (shown == 0 && std::signbit(stored) != std::signbit(exact))
        return HUGE_VAL;
    const long double distance = std::abs(shown - meant);
    return static_cast<double>(distance / floatSpacing(std::min(std::abs(meant), 0x1.fffffep127L)));
}

template <class T>
double valueOf(T code, Range range)
{
    if constexpr (isInteger<T>)
        return (static_cast<double>(code) - range.black) / (range.white == range.black ? 1.0 : range.span());
    else if constexpr (std::is_same_v<T, fpreal16>)
        return halfValue(code.bits());
    else
        return code;
}

/// Is `code` a right way to store `value`, when `value` may be off by `slack`?
/// Integers must lie within half a code of the unrounded result, never farther.
template <class T>
::testing::AssertionResult isStored(T code, double value, Range range, double slack = 0.0)
{
    double shown = 0.0, meant = 0.0, allowed = 0.0;
    if constexpr (isInteger<T>) {
        const double unrounded = range.black + range.span() * value;
        shown = static_cast<double>(code);
        meant =
            std::isnan(unrounded) ? 0.0 : std::clamp<double>(unrounded, 0.0, std::numeric_limits<T>::max());
        const double size = std::abs(range.span() * value) + range.black + 1.0;
        allowed = 0.5 + range.span() * slack + (std::isfinite(size) ? size * 4.0 * roundOff<T> : 0.0);
    } else if constexpr (std::is_same_v<T, fpreal16>) {
        const auto end = [&](double v) { // infinity stands for 2^16, where it begins, unless it is exact
            return slack == 0.0 ? v : std::clamp(v, -0x1p16, 0x1p16);
        };
        shown = end(valueOf(code, range));
        meant = slack == 0.0 ? nearestHalf(value) : end(value);
        allowed = slack == 0.0 ? 0.0 : slack + halfSpacing(meant) / 2;
    } else {
        shown = code;
        meant = value;
        allowed = slack;
    }
    const bool same = shown == meant || (std::isnan(shown) && std::isnan(meant));
    if (same || std::abs(shown - meant) <= allowed)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "stored " << shown << ", exact " << meant << " +- " << allowed << ", value " << value
           << ", points " << range.black << " and " << range.white;
}

/// Equal bits, or both NaN.
inline bool sameFloat(float a, float b)
{
    return std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b) || (std::isnan(a) && std::isnan(b));
}

} // namespace reference
