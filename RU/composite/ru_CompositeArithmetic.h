#pragma once

#include <RU/kernel/ru_Blocks.h>

#include <cstdint>
#include <type_traits>

// The formulas of compositing are computed in codes, which is exact, or in floats; for *.isa.cpp only. Either
// way there are types for colours and alphas, the operators on these, and lanes that load and store them. The
// list of operations says which way a formula goes.

namespace RU_ISA {

#define RU_LANE [[gnu::always_inline]] inline

/// Stands for an alpha that is not read. It has no operators.
struct NoAlpha
{
};

// Codes, in lanes of their own width. Sums and differences would overflow: they are kept as two operands and
// saturate when they are stored.

template <class T>
struct Code
{
    T code;
};

template <class T>
struct CodeSum
{
    T a, b;
};

template <class T>
struct CodeDifference
{
    T a, b;
};

template <class T>
RU_INLINE CodeSum<T> operator+(Code<T> a, Code<T> b)
{
    return {a.code, b.code};
}

template <class T>
RU_INLINE CodeDifference<T> operator-(Code<T> a, Code<T> b)
{
    return {a.code, b.code};
}

/// Half of a sum, rounded up. No formula divides by anything but 2.
template <class T>
RU_INLINE Code<T> operator/(CodeSum<T> sum, int)
{
    return {static_cast<T>((sum.a + sum.b + 1) >> 1)};
}

/// The first one where both are equal.
template <class T>
RU_INLINE Code<T> min(Code<T> a, Code<T> b)
{
    return {a.code <= b.code ? a.code : b.code};
}

template <class T>
RU_INLINE Code<T> max(Code<T> a, Code<T> b)
{
    return {b.code <= a.code ? a.code : b.code};
}

template <class T>
RU_INLINE Code<T> abs(CodeDifference<T> d)
{
    return {static_cast<T>((d.a > d.b ? d.a : d.b) - (d.a > d.b ? d.b : d.a))};
}

// Products of 8-bit codes have 16-bit lanes and count in 255ths of a code. No product lies half-way between
// two codes: a product may be rounded before a code is added, which gives the same as rounding the sum.

using Byte = unsigned char;

struct ByteAlpha
{
    Byte code, white;
};

struct ByteProduct
{
    uint16_t value;
};

RU_INLINE Byte rounded(ByteProduct product)
{
    const auto t = static_cast<uint16_t>(product.value + 128);
    return static_cast<Byte>(static_cast<uint16_t>(t + (t >> 8)) >> 8);
}

RU_INLINE Code<Byte> operator-(int, ByteAlpha alpha) // 1 - alpha
{
    return {static_cast<Byte>(alpha.white - alpha.code)};
}

RU_INLINE ByteProduct operator*(Code<Byte> a, Code<Byte> b)
{
    return {static_cast<uint16_t>(a.code * b.code)};
}

RU_INLINE ByteProduct operator*(Code<Byte> colour, ByteAlpha alpha)
{
    return colour * Code<Byte>{alpha.code};
}

/// Saturates at white times white.
RU_INLINE ByteProduct operator+(ByteProduct a, ByteProduct b)
{
    const auto room = static_cast<uint16_t>(255 * 255 - a.value);
    return {static_cast<uint16_t>(a.value + (b.value < room ? b.value : room))};
}

RU_INLINE CodeSum<Byte> operator+(Code<Byte> a, ByteProduct b)
{
    return {a.code, rounded(b)};
}

/// a + b - a b. The product is at most b and the result at most white: nothing overflows.
RU_INLINE Code<Byte> operator-(CodeSum<Byte> sum, ByteProduct product)
{
    return {static_cast<Byte>(sum.a + (sum.b - rounded(product)))};
}

template <class T, class U>
class CodeLanes
{
public:
    using Colour = Code<T>;
    using Alpha = std::conditional_t<sizeof(T) == 1 && sizeof(U) == 1, ByteAlpha, NoAlpha>;

    RU_LANE CodeLanes(float)
    {
        // Hides the value from g++ 12, which would turn 255 - x into a NOT: that waits for what its register
        // held before.
        asm("" : "+r"(white_));
    }
    RU_LANE Colour colour(Block<1>, const T* code) const { return {*code}; }
    RU_LANE Alpha alpha(Block<1>, const U* code) const { return {*code, white_}; }
    RU_LANE void store(Block<1>, T* code, auto result) const { *code = stored(result); }

    RU_LANE T stored(Code<T> value) const { return value.code; }
    RU_LANE T stored(CodeSum<T> sum) const
    {
        const T room = static_cast<T>(white_ - sum.a);
        return static_cast<T>(sum.a + (sum.b < room ? sum.b : room));
    }
    RU_LANE T stored(CodeDifference<T> difference) const
    {
        return static_cast<T>((difference.a > difference.b ? difference.a : difference.b) - difference.b);
    }
    RU_LANE T stored(ByteProduct product) const { return rounded(product); }

private:
    T white_ = PXL_FormatOf<T>::white;
};

// Floats: colours in units of their codes, alphas as 0 to 1. B is the block that loads and stores them.

template <class T, class B>
struct FloatColour
{
    typename B::Floats value;
};

template <class B>
struct FloatAlpha
{
    typename B::Floats value;
};

template <class B>
RU_INLINE FloatAlpha<B> operator-(int one, FloatAlpha<B> alpha)
{
    return {static_cast<float>(one) - alpha.value};
}

template <class T, class B>
RU_INLINE FloatColour<T, B> operator*(FloatColour<T, B> colour, FloatAlpha<B> alpha)
{
    return {colour.value * alpha.value};
}

template <class T, class B>
RU_INLINE FloatColour<T, B> operator*(FloatAlpha<B> alpha, FloatColour<T, B> colour)
{
    return {alpha.value * colour.value};
}

/// One of two colours that are multiplied is normalised.
template <class T, class B>
RU_INLINE FloatColour<T, B> operator*(FloatColour<T, B> a, FloatColour<T, B> b)
{
    constexpr float unit = 1.0f / PXL_FormatOf<T>::white;
    return {a.value * (b.value * unit)};
}

template <class T, class B>
RU_INLINE FloatColour<T, B> operator+(FloatColour<T, B> a, FloatColour<T, B> b)
{
    return {a.value + b.value};
}

template <class T, class B>
RU_INLINE FloatColour<T, B> operator-(FloatColour<T, B> a, FloatColour<T, B> b)
{
    return {a.value - b.value};
}

template <class T, class B>
RU_INLINE FloatColour<T, B> operator/(FloatColour<T, B> a, int divisor)
{
    return {a.value / static_cast<float>(divisor)};
}

template <class T>
RU_INLINE FloatColour<T, Block<1>> abs(FloatColour<T, Block<1>> a)
{
    return {__builtin_fabsf(a.value)};
}

/// The first one where both are equal.
template <class T>
RU_INLINE FloatColour<T, Block<1>> min(FloatColour<T, Block<1>> a, FloatColour<T, Block<1>> b)
{
    return {a.value <= b.value ? a.value : b.value};
}

template <class T>
RU_INLINE FloatColour<T, Block<1>> max(FloatColour<T, Block<1>> a, FloatColour<T, Block<1>> b)
{
    return {b.value <= a.value ? a.value : b.value};
}

template <class T, class U>
class FloatLanes
{
public:
    RU_LANE FloatLanes(float alphaUnit) : white_(PXL_FormatOf<T>::white), alphaUnit_(alphaUnit) {}

    template <class B>
    RU_LANE FloatColour<T, B> colour(B block, const T* codes) const
    {
        return {block.load(codes)};
    }

    template <class B>
    RU_LANE FloatAlpha<B> alpha(B block, const U* codes) const
    {
        return {block.load(codes) * alphaUnit_};
    }

    template <class B>
    RU_LANE void store(B block, T* codes, FloatColour<T, B> result) const
    {
        if constexpr (std::is_integral_v<T>)
            block.store(codes, result.value + 0.5f, white_);
        else
            *codes = ru_oneNaN(std::is_integral_v<U> ? clamped(result.value) : result.value);
    }

private:
    /// Floats beside integer alphas. NaN stays.
    RU_LANE static float clamped(float value)
    {
        constexpr float most = 1e32f;
        return value > most ? most : value < -most ? -most : value;
    }

    ru_Clamp<float> white_;
    float alphaUnit_;
};

} // namespace RU_ISA
