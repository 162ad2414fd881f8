#pragma once

#include <RU/kernel/ru_Kernels.h>

#include <cstdint>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

// Mixtures (1 - w) a + w b of codes in integers: exact, rounded once, halves up; for *.isa.cpp only. A weight w
// from 0 to 1 is a whole number W of 2^-24ths for 8-bit and of 2^-29ths for 16-bit codes, in two digits that
// multiply codes without overflow. The vector forms are for as many codes as fill a register.

namespace RU_ISA {

#if defined(__AVX512BW__)
#define RU_VECTOR(OPERATION) _mm512_##OPERATION
using Register = __m512i;
#elif defined(__AVX2__)
#define RU_VECTOR(OPERATION) _mm256_##OPERATION
using Register = __m256i;
#elif defined(__SSE2__)
#define RU_VECTOR(OPERATION) _mm_##OPERATION
using Register = __m128i;
#endif

template <class T>
struct CodeMix;

/// W = 2^16 high + low, with a signed low. With d = b - a:
///
///     floor((2^24 a + W d + 2^23) / 2^24) = floor((2^8 a + high d + floor(low d / 2^16) + 2^7) / 2^8)
///
/// because 2^8 a + high d is whole. The dividend on the right fits 16 bits, parts of it need not.
template <>
struct CodeMix<unsigned char>
{
    using Digit = int16_t;
    static constexpr float one = 0x1p24f;

    static constexpr Digit high(int weight) { return static_cast<Digit>((weight + 0x8000) >> 16); }
    static constexpr Digit low(int weight) { return static_cast<Digit>(weight); }

    [[gnu::always_inline]] static unsigned char of(unsigned char a, unsigned char b, Digit high, Digit low)
    {
        const auto d = static_cast<int16_t>(b - a);
        const auto sum = static_cast<uint16_t>((a << 8) + 128 + high * d + ((low * d) >> 16));
        return static_cast<unsigned char>(sum >> 8);
    }

#if defined(RU_VECTOR)
    using Lane = uint16_t;
    using Digits = Lane __attribute__((vector_size(sizeof(Register)), may_alias));

    [[gnu::always_inline]] static Register unpackLow(Register a, Register b)
    {
        return RU_VECTOR(unpacklo_epi8)(a, b);
    }
    [[gnu::always_inline]] static Register unpackHigh(Register a, Register b)
    {
        return RU_VECTOR(unpackhi_epi8)(a, b);
    }
    [[gnu::always_inline]] static Register pack(Digits low, Digits high)
    {
        return RU_VECTOR(packus_epi16)(Register(low), Register(high));
    }

    [[gnu::always_inline]] static Digits ofPairs(Register pairs, Digits high, Digits low)
    {
#if defined(__SSSE3__)
        const Digits signs = Digits{} + 0x01FF; // of a -1, of b 1
        const auto d = Digits(RU_VECTOR(maddubs_epi16)(pairs, Register(signs)));
#else
        const Digits d = (Digits(pairs) >> 8) - (Digits(pairs) & 0xFF);
#endif
        const auto product = Digits(RU_VECTOR(mulhi_epi16)(Register(low), Register(d)));
        return ((Digits(pairs) << 8) + 128 + high * d + product) >> 8;
    }
#endif
};

/// W = 2^15 h + l. With x and y for a and b less 2^15, which have 16 bits and a sign:
///
///     floor((2^29 x + W (y - x) + 2^28) / 2^29)
///         = floor(((2^14 - h) x + h y + floor((l y - l x) / 2^15) + 2^13) / 2^14)
///
/// A digit holds both factors, that of x in its lower half.
template <>
struct CodeMix<unsigned short>
{
    using Digit = int32_t;
    static constexpr float one = 0x1p29f;

    static constexpr Digit high(int weight) { return factors((1 << 14) - (weight >> 15), weight >> 15); }
    static constexpr Digit low(int weight) { return factors(-(weight & 0x7FFF), weight & 0x7FFF); }

    [[gnu::always_inline]] static unsigned short of(unsigned short a, unsigned short b, Digit high, Digit low)
    {
        const int x = a - 0x8000, y = b - 0x8000;
        const int sum = products(x, y, high) + (products(x, y, low) >> 15) + (1 << 13);
        return static_cast<unsigned short>((sum >> 14) + 0x8000);
    }

#if defined(RU_VECTOR)
    using Lane = int32_t;
    using Digits = Lane __attribute__((vector_size(sizeof(Register)), may_alias));

    [[gnu::always_inline]] static Register unpackLow(Register a, Register b)
    {
        return RU_VECTOR(unpacklo_epi16)(a, b) ^ signs();
    }
    [[gnu::always_inline]] static Register unpackHigh(Register a, Register b)
    {
        return RU_VECTOR(unpackhi_epi16)(a, b) ^ signs();
    }
    [[gnu::always_inline]] static Register pack(Digits low, Digits high)
    {
        return RU_VECTOR(packs_epi32)(Register(low), Register(high)) ^ signs();
    }

    [[gnu::always_inline]] static Digits ofPairs(Register pairs, Digits high, Digits low)
    {
        const auto sum = Digits(RU_VECTOR(madd_epi16)(pairs, Register(high)));
        const auto rest = Digits(RU_VECTOR(madd_epi16)(pairs, Register(low)));
        return (sum + (rest >> 15) + (1 << 13)) >> 14;
    }
#endif

private:
    static constexpr Digit factors(int ofX, int ofY)
    {
        return (ofY << 16) | (ofX & 0xFFFF);
    }

    [[gnu::always_inline]] static int products(int x, int y, Digit factors)
    {
        return x * static_cast<int16_t>(factors) + y * (factors >> 16);
    }

#if defined(RU_VECTOR)
    [[gnu::always_inline]] static Register signs()
    {
        return Register(Digits{} + int32_t(0x80008000));
    }
#endif
};

} // namespace RU_ISA
