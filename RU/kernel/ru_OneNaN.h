#pragma once

#include <RU/kernel/ru_Kernels.h>

/// Any NaN as the one quiet NaN, 7fc00000 as a float. Whatever is computed passes through here before it is
/// stored: the sign of a new NaN, and which of two NaNs a sum keeps, depend on the instructions that the
/// compiler chose.
RU_INLINE float ru_oneNaN(float v)
{
    return v == v ? v : __builtin_nanf("");
}
