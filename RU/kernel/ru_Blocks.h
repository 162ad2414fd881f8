#pragma once

#include <RU/kernel/ru_Codes.h>
#include <RU/kernel/ru_OneNaN.h>

#include <type_traits>

#if defined(__AVX2__)
#include <immintrin.h>
#endif

/// Loops over codes that are computed in float, for sources named *.isa.cpp. A compiler takes as many 8- or
/// 16-bit codes at once as fill a vector and unpacks them in steps; a block has as many as a vector has
/// floats, which are widened at once: that saves a third of the time and more. Elsewhere, and in other
/// formats, a block is one value and the vectors are left to the compiler.
///
///     eachBlock<hasBlocks<T>>(count, [=](auto block, int64_t i) RU_BLOCK {
///         const auto values = block.load(codes + i) * gain; // working values: one or a vector of them
///         block.store(codes + i, values + 0.5f, white);
///     });
namespace RU_ISA {

#define RU_BLOCK __attribute__((always_inline))

/// The formats that are worth it.
template <class T>
constexpr bool hasBlocks = std::is_integral_v<T> && sizeof(T) <= 2;

template <int N>
struct Block;

template <>
struct Block<1>
{
    using Floats = float;

    template <class T>
    RU_INLINE auto load(const T* code)
    {
        if constexpr (std::is_floating_point_v<T>)
            return *code;
        else
            return valueOf(*code);
    }

    template <class Value, class Work>
    RU_INLINE void put(Value* value, Work computed)
    {
        *value = static_cast<Value>(computed);
    }

    /// The floor, clamped to the codes.
    template <class T, class Work>
    RU_INLINE void store(T* code, Work rounded, const ru_Clamp<Work>& to)
    {
        *code = codeOf<T>(rounded, to);
    }
};

#if defined(__AVX2__)

// The type of the vectors is the compiler's own, which has operators.

template <>
struct Block<8>
{
    using Floats = __m256;

    RU_INLINE Floats load(const float* values) { return _mm256_loadu_ps(values); }
    RU_INLINE void put(float* values, Floats computed) { _mm256_storeu_ps(values, computed); }
    template <class T>
    RU_INLINE Floats load(const T* codes)
    {
        return _mm256_cvtepi32_ps(widened(codes));
    }

    template <class T>
    RU_INLINE void store(T* codes, Floats rounded, const ru_Clamp<float>& to)
    {
        const Floats positive = _mm256_max_ps(rounded, _mm256_set1_ps(to.low)); // NaN becomes 0
        const __m256i whole = _mm256_cvttps_epi32(_mm256_min_ps(positive, _mm256_set1_ps(to.high)));
        const __m128i words =
            _mm_packus_epi32(_mm256_castsi256_si128(whole), _mm256_extracti128_si256(whole, 1));
        if constexpr (sizeof(T) == 1)
            _mm_storel_epi64(reinterpret_cast<__m128i*>(codes), _mm_packus_epi16(words, words));
        else
            _mm_storeu_si128(reinterpret_cast<__m128i*>(codes), words);
    }

private:
    RU_INLINE __m256i widened(const unsigned char* codes)
    {
        return _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(codes)));
    }
    RU_INLINE __m256i widened(const unsigned short* codes)
    {
        return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(codes)));
    }
};

#endif

#if defined(__AVX512F__)

template <>
struct Block<16>
{
    using Floats = __m512;

    RU_INLINE Floats load(const float* values) { return _mm512_loadu_ps(values); }
    RU_INLINE void put(float* values, Floats computed) { _mm512_storeu_ps(values, computed); }
    template <class T>
    RU_INLINE Floats load(const T* codes)
    {
        return _mm512_maskz_cvtepi32_ps(all, widened(codes));
    }

    template <class T>
    RU_INLINE void store(T* codes, Floats rounded, const ru_Clamp<float>& to)
    {
        const Floats positive = _mm512_maskz_max_ps(all, rounded, _mm512_set1_ps(to.low)); // NaN becomes 0
        const Floats clamped = _mm512_maskz_min_ps(all, positive, _mm512_set1_ps(to.high));
        const __m512i whole = _mm512_maskz_cvttps_epi32(all, clamped);
        if constexpr (sizeof(T) == 1)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(codes), _mm512_maskz_cvtepi32_epi8(all, whole));
        else
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(codes), _mm512_maskz_cvtepi32_epi16(all, whole));
    }

private:
    static constexpr __mmask16 all = 0xFFFF; // g++ 12 warns about the unmasked forms

    RU_INLINE __m512i widened(const unsigned char* codes)
    {
        return _mm512_maskz_cvtepu8_epi32(all, _mm_loadu_si128(reinterpret_cast<const __m128i*>(codes)));
    }
    RU_INLINE __m512i widened(const unsigned short* codes)
    {
        return _mm512_maskz_cvtepu16_epi32(all, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(codes)));
    }
};

#endif

// Counted from the black code, which needs no scale where the result is linear. Floats are their own.

template <bool FullRange, class T>
RU_INLINE auto loadAbove(auto block, const T* codes, const ru_Range<T>& range)
{
    if constexpr (FullRange || std::is_floating_point_v<T>)
        return block.load(codes);
    else
        return block.load(codes) - range.black; // exact, as float of 8- and 16-bit codes too
}

template <bool FullRange, class T>
RU_INLINE void storeAbove(auto block, T* codes, auto above, const ru_Range<T>& range,
                          const ru_Clamp<ru_Work<T>>& white)
{
    if constexpr (std::is_floating_point_v<T>)
        block.put(codes, ru_oneNaN(above));
    else
        block.store(codes, (FullRange ? above : above + range.black) + ru_Work<T>(0.5f), white);
}

/// Calls body(Block<N>, i) for all values from 0 to count, the largest blocks first.
template <bool inBlocks, class Body>
RU_INLINE void eachBlock(int64_t count, Body body)
{
    int64_t i = 0;
#if defined(__AVX2__)
    if constexpr (inBlocks) {
#if defined(__AVX512F__)
        for (; i + 16 <= count; i += 16)
            body(Block<16>(), i);
#endif
        for (; i + 8 <= count; i += 8)
            body(Block<8>(), i);
        for (; i < count; ++i) {
            asm("" : "+r"(i)); // no vectors for the few that are left
            body(Block<1>(), i);
        }
        return;
    }
#endif
    RU_EACH_ALONE
    for (; i < count; ++i)
        body(Block<1>(), i);
}

} // namespace RU_ISA
