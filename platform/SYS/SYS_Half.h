#pragma once

#include <SYS/SYS_API.h>

#include <array>
#include <cstdint>

/// The bit pattern of the half nearest to `v`, ties to even. Too large becomes infinity, too small a
/// subnormal half or zero. A NaN keeps its sign and the top of its payload and becomes quiet, as F16C does
/// it.
[[gnu::always_inline]] constexpr uint16_t SYShalfBits(float v)
{
    const uint32_t bits = __builtin_bit_cast(uint32_t, v);
    const uint32_t sign = (bits >> 16) & 0x8000u;
    const uint32_t magnitude = bits & 0x7FFFFFFFu;
    if (magnitude > 0x7F800000u)
        return static_cast<uint16_t>(sign | 0x7E00u | ((magnitude >> 13) & 0x03FFu));
    if (magnitude >= 0x477FF000u) // from 65520 on
        return static_cast<uint16_t>(sign | 0x7C00u);
    if (magnitude < 0x38800000u) { // below the smallest normal half: let one float addition do the rounding
        const float aligned = __builtin_bit_cast(float, magnitude) + 0.5f;
        return static_cast<uint16_t>(sign | (__builtin_bit_cast(uint32_t, aligned) - 0x3F000000u));
    }
    const uint32_t odd = (magnitude >> 13) & 1u;
    return static_cast<uint16_t>(sign | ((magnitude - 0x38000000u + 0x0FFFu + odd) >> 13));
}

/// The value of a half's bit pattern. A signalling NaN becomes quiet, as F16C does it.
[[gnu::always_inline]] constexpr float SYShalfValue(uint16_t bits)
{
    const uint32_t sign = (bits & 0x8000u) << 16;
    const uint32_t exponent = (bits >> 10) & 0x1Fu;
    const uint32_t mantissa = bits & 0x03FFu;
    if (exponent == 0x1Fu)
        return __builtin_bit_cast(float,
                                  sign | 0x7F800000u | (mantissa << 13) | (mantissa != 0 ? 0x00400000u : 0u));
    if (exponent == 0) {
        const float magnitude = static_cast<float>(mantissa) * 0x1p-24f;
        return __builtin_bit_cast(float, sign | __builtin_bit_cast(uint32_t, magnitude));
    }
    return __builtin_bit_cast(float, sign | ((exponent + 112u) << 23) | (mantissa << 13));
}

/// A 16-bit IEEE half float: sign, 5 bits of exponent, 10 bits of mantissa.
class fpreal16
{
public:
    fpreal16() = default;
    fpreal16(float v) : bits_(SYShalfBits(v)) {}

    fpreal16& operator=(float v)
    {
        bits_ = SYShalfBits(v);
        return *this;
    }

    operator float() const { return _toFloat[bits_]; }

    static constexpr fpreal16 fromBits(uint16_t bits)
    {
        fpreal16 half;
        half.bits_ = bits;
        return half;
    }

    constexpr uint16_t bits() const { return bits_; }

    /// The value of every bit pattern; constant data, ready before any constructor runs.
    PLATFORM_API static const std::array<float, 65536> _toFloat;

private:
    uint16_t bits_ = 0;
};

static_assert(sizeof(fpreal16) == 2);
