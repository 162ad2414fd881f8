#pragma once

#include <RU/kernel/ru_Kernels.h>

#include <cstdint>

/// Any NaN as the one quiet NaN, 7fc00000 as a float. Whatever is computed passes through here before it is
/// stored: the sign of a new NaN, and which of two NaNs a sum keeps, depend on the instructions that the
/// compiler chose.
RU_INLINE float ru_oneNaN(float v)
{
    return v == v ? v : __builtin_nanf("");
}

/// The same for a sum of magnitudes, in one operation: its bits are those of a positive number, and a NaN that
/// was computed is quiet.
RU_INLINE float ru_oneNaNOfMagnitudes(float sum)
{
    constexpr int32_t quiet = 0x7FC00000;
    const auto bits = __builtin_bit_cast(int32_t, sum);
    return __builtin_bit_cast(float, bits < quiet ? bits : quiet);
}
