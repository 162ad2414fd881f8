#pragma once

#include <SYS/SYS_Half.h>
#include <gtest/gtest.h>
#include <reference/Random.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

/// What formats mean, written from their definition in double, independently of the library.
namespace reference {

using Bytes = std::vector<unsigned char>;

/// Black and white points. The full range is the one from 0 to the code of white.
struct Range
{
    unsigned int black;
    unsigned int white;

    double span() const { return white - black; } // an unsigned difference
};

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

inline double nearestHalf(double v)
{
    if (!std::isfinite(v))
        return v;
    if (std::abs(v) >= 65520.0)
        return std::copysign(HUGE_VAL, v);
    return std::copysign(std::nearbyint(v / halfSpacing(v)) * halfSpacing(v), v);
}

/// The distance of a stored float from the exact result, in units of its last place there. Infinity stands
/// for 2^128, where it begins. Below `least`, in units of the last place there.
inline double ulpError(float stored, long double exact, double least = 0.0)
{
    if (std::isnan(stored) || std::isnan(exact))
        return std::isnan(stored) && std::isnan(exact) ? 0.0 : HUGE_VAL;
    const long double end = 0x1p128L;
    const long double shown = std::clamp<long double>(stored, -end, end);
    const long double meant = std::clamp(exact, -end, end);
    if (shown == 0 && least == 0.0 && std::signbit(stored) != std::signbit(exact))
        return HUGE_VAL;
    const long double unit =
        spacing(std::clamp<long double>(std::abs(meant), least, 0x1.fffffep127L), 24, -126);
    return static_cast<double>(std::abs(shown - meant) / unit);
}

/// Equal bits, or both NaN.
inline bool sameFloat(float a, float b)
{
    return std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b) || (std::isnan(a) && std::isnan(b));
}

/// A storage format with one of its two ranges. Pixels are bytes and a format, so that tests are compiled
/// once.
struct Format
{
    unsigned char code; ///< 8, 16, 32 bits, float, half
    bool full;

    bool isInteger() const { return code <= 2; }
    bool isHalf() const { return code == 4; }
    int size() const { return code == 0 ? 1 : code == 1 || code == 4 ? 2 : 4; }
    unsigned int white() const { return isInteger() ? 0xFFFFFFFFu >> (32 - 8 * size()) : 1; }
    Range range() const { return full ? Range{0, white()} : Range{white() / 16 + 1, white() / 13 * 12}; }
    /// The relative error of one operation in the type that pixels are computed in.
    double roundOff() const { return code == 2 ? 0x1p-53 : 0x1p-24; }

    uint32_t bitsAt(const void* data, int64_t index) const
    {
        uint32_t bits = 0;
        std::memcpy(&bits, static_cast<const unsigned char*>(data) + index * size(),
                    static_cast<size_t>(size()));
        return bits;
    }
    /// The code at an index, or the value where codes are values.
    double codeAt(const void* data, int64_t index) const
    {
        const uint32_t bits = bitsAt(data, index);
        return isHalf()      ? halfValue(static_cast<uint16_t>(bits))
               : isInteger() ? bits
                             : static_cast<double>(std::bit_cast<float>(bits));
    }
    double valueOf(double stored, Range points) const
    {
        if (!isInteger())
            return stored;
        return (stored - points.black) / (points.white == points.black ? 1.0 : points.span());
    }
    /// Stores a code, or a value.
    void put(void* data, int64_t index, double stored) const
    {
        const auto value = static_cast<float>(isInteger() ? 0.0 : stored);
        putBits(data, index,
                isInteger() ? static_cast<uint32_t>(stored)
                : isHalf()  ? SYShalfBits(value)
                            : std::bit_cast<uint32_t>(value));
    }
    void putBits(void* data, int64_t index, uint32_t bits) const
    {
        std::memcpy(static_cast<unsigned char*>(data) + index * size(), &bits, static_cast<size_t>(size()));
    }

    uint32_t quietNaN() const { return isHalf() ? 0x7E00 : 0x7FC00000; }

    /// Any codes; else values around [0, 1], and one in `oddOneIn` an odd one: NaN with any bits, an infinity, a
    /// zero, a one, something subnormal, or, of all `kinds`, huge. 0: none.
    void randomize(void* data, int64_t count, Random& random, int oddOneIn, int kinds = 5) const
    {
        const uint32_t infinity = isHalf() ? 0x7C00 : 0x7F800000, lowest = infinity & ~(infinity << 1);
        for (int64_t i = 0; i < count; ++i) {
            const auto any = static_cast<uint32_t>(random.bits()), rest = any & ~infinity;
            const uint32_t sign = rest & ~(lowest - 1), one = (infinity >> 1) & infinity;
            const uint32_t odd[] = {rest | infinity,           sign | infinity, sign, sign | one, rest,
                                    rest | (infinity - lowest)};
            if (isInteger())
                putBits(data, i, any);
            else if (oddOneIn > 0 && random.oneIn(oddOneIn))
                putBits(data, i, odd[random.between(1, kinds) - 1]);
            else
                put(data, i, random.between(-1.0, 2.0));
        }
    }

    /// Is `stored` a right way to store `value`, when `value` may be off by `slack`?
    /// Integers must lie within half a code of the unrounded result, never farther; between equal points any
    /// value is the black code.
    ::testing::AssertionResult holds(double stored, double value, Range points, double slack = 0.0) const
    {
        double shown = stored, meant = value, allowed = slack;
        if (isInteger() && points.span() == 0) {
            meant = std::min(points.black, white());
            allowed = 0.0;
        } else if (isInteger()) {
            const double unrounded = points.black + points.span() * value;
            meant = std::isnan(unrounded) ? 0.0 : std::clamp<double>(unrounded, 0.0, white());
            const double most = std::abs(points.span() * value) + points.black + 1.0;
            allowed = 0.5 + points.span() * slack + (std::isfinite(most) ? most * 4.0 * roundOff() : 0.0);
        } else if (isHalf() && slack == 0.0) {
            meant = nearestHalf(value);
        } else if (isHalf()) { // infinity stands for 2^16, where it begins
            shown = std::clamp(stored, -0x1p16, 0x1p16);
            meant = std::clamp(value, -0x1p16, 0x1p16);
            allowed = slack + halfSpacing(meant) / 2;
        }
        if (shown == meant || (std::isnan(shown) && std::isnan(meant)) || std::abs(shown - meant) <= allowed)
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure()
               << "stored " << shown << ", exact " << meant << " +- " << allowed << ", value " << value
               << ", points " << points.black << " and " << points.white;
    }
};

inline std::vector<Format> formats()
{
    std::vector<Format> all;
    for (unsigned char code = 0; code < 5; ++code)
        all.insert(all.end(), {{code, true}, {code, false}});
    return all;
}

inline std::string nameOf(Format format)
{
    static constexpr const char* names[] = {"uint8", "uint16", "uint32", "float32", "half"};
    return std::string(names[format.code]) + (format.full ? "Full" : "Points");
}
inline std::string nameOfParameter(const ::testing::TestParamInfo<Format>& info)
{
    return nameOf(info.param);
}

} // namespace reference
