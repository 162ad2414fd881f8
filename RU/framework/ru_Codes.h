#pragma once

#include <RU/framework/ru_ConvertRows.h>

/// One integer code to its value and back, for sources named *.isa.cpp whose loops convert as they compute.
namespace RU_ISA {

/// code - black, exact and signed.
template <class T>
RU_INLINE float difference(T code, const ru_Range<T>& range)
{
    return static_cast<float>(static_cast<int>(code) - range.blackCode);
}

/// 32-bit codes go through signed integers, which every instruction set converts to double.
RU_INLINE double valueOf(unsigned int code)
{
    return static_cast<double>(static_cast<int>(code ^ 0x80000000u)) + 2147483648.0;
}

RU_INLINE double difference(unsigned int code, const ru_Range<unsigned int>& range)
{
    return valueOf(code) - range.black;
}

template <class T>
RU_INLINE float valueOf(T code)
{
    return static_cast<float>(code);
}

// The clamp comes before the cast and asks for "above 0" first, so that NaN becomes 0; what is left is not
// negative, so that the cast is the floor.

template <class T>
RU_INLINE T codeOf(float rounded)
{
    constexpr float white = PXL_FormatOf<T>::white;
    const float positive = rounded > 0.0f ? rounded : 0.0f;
    return static_cast<T>(static_cast<int>(positive < white ? positive : white));
}

template <class T>
RU_INLINE T codeOf(double rounded)
{
    constexpr double white = PXL_FormatOf<T>::white;
    const double positive = rounded > 0.0 ? rounded : 0.0;
    const double clamped = positive < white ? positive : white;
    constexpr double whole = 4503599627370496.0; // 2^52: adding it rounds to whole numbers
    const double nearest = (clamped + whole) - whole;
    const double floored = nearest > clamped ? nearest - 1.0 : nearest;
    return static_cast<unsigned int>(static_cast<int>(floored - 2147483648.0)) ^ 0x80000000u;
}

} // namespace RU_ISA
