#pragma once

#include <RU/kernel/ru_Blocks.h>

#include <cstdint>
#include <type_traits>

// The two arithmetics that the formulas of compositing are computed in; for *.isa.cpp only. Each has lanes
// for colours and alphas and the operators on them. Codes come first, exact; a formula that asks for an
// operator which they lack is computed in float.

namespace RU_ISA {

#define RU_LANE [[gnu::always_inline]] inline

/// In place of an alpha that is not read; has no operators.
struct NoAlpha
{
};

// Codes, in lanes of their own width. What would overflow is kept in parts until it is known what it is for;
// where it is stored it saturates.

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

/// The half, rounded up; no formula divides by anything but 2.
template <class T>
RU_INLINE Code<T> operator/(CodeSum<T> sum, int)
{
    return {static_cast<T>((sum.a + sum.b + 1) >> 1)};
}

/// Of equal values the first one.
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

// 8-bit codes are multiplied too, in 16-bit lanes. A product counts 255ths of a code. None lies half-way
// between two codes, so that one that is added to a code, or taken away, may be rounded before.

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

/// A sum without the product of its parts, which is at most the lesser of them.
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
        asm("" : "+r"(white_)); // g++ 12 would make 255 - x a NOT, which waits for its register's last value
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

// Everything else in float: colours in units of their codes, alphas of which full is 1. B is the block
// that they are a part of.

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

/// One of two colours is normalised.
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

/// Of equal values the first one.
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
