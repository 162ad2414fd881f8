#pragma once

#include <RU/kernel/ru_ConvertRows.h>

#include <type_traits>

/// One integer code to its value and back, for sources named *.isa.cpp whose loops convert as they compute.
namespace RU_ISA {

/// 32-bit codes go through signed integers, which every instruction set converts to double.
RU_INLINE double valueOf(unsigned int code)
{
    return static_cast<double>(static_cast<int>(code ^ 0x80000000u)) + 2147483648.0;
}

template <class T>
RU_INLINE float valueOf(T code)
{
    return static_cast<float>(code);
}

/// The ends of a clamp, made before the loop that clamps: comparisons with values that it does not know are
/// one instruction to g++ 12, those with constants are two.
template <class Work>
struct ru_Clamp
{
    [[gnu::always_inline]] explicit ru_Clamp(Work top) : low(unknown(0)), high(unknown(top)) {}

    Work low, high;

private:
    [[gnu::always_inline]] static Work unknown(Work known)
    {
        asm("" : "+m"(known));
        return known;
    }
};

/// The floor of a value from 0 up to the next code after white: for what is not negative, the cast.
template <class T>
RU_INLINE T flooredCode(float inRange)
{
    return static_cast<T>(static_cast<int>(inRange));
}

template <class T>
RU_INLINE T flooredCode(double inRange)
{
    constexpr double whole = 4503599627370496.0; // 2^52: adding it rounds to whole numbers
    const double nearest = (inRange + whole) - whole;
    const double floored = nearest > inRange ? nearest - 1.0 : nearest;
    return static_cast<unsigned int>(static_cast<int>(floored - 2147483648.0)) ^ 0x80000000u;
}

/// The floor of any value; the clamp comes before the cast, and asks for "above 0", so that NaN becomes 0.
template <class T, class Work>
RU_INLINE T codeOf(Work rounded, const ru_Clamp<Work>& to)
{
    const Work positive = rounded > to.low ? rounded : to.low;
    const Work clamped =
        positive < to.high ? positive : to.high; // of its own, or g++ casts before it selects
    return flooredCode<T>(clamped);
}

} // namespace RU_ISA
