#pragma once

#include <RU/kernel/ru_Power.h>
#include <RU/kernel/ru_Vectors.h>

#if defined(__AVX2__)
#include <immintrin.h>
#endif

/// Vectors of the compiler's own, for sources named *.isa.cpp whose arithmetic is written in lanes: as wide as
/// the instruction set has them, with the operators of their elements.
namespace RU_ISA {

#if defined(__AVX512F__)
constexpr int64_t laneCount = 16;
#elif defined(__AVX2__)
constexpr int64_t laneCount = 8;
#else
constexpr int64_t laneCount = 4;
#endif

typedef float Floats __attribute__((vector_size(4 * laneCount)));
typedef int32_t Ints __attribute__((vector_size(4 * laneCount)));
typedef uint32_t Words __attribute__((vector_size(4 * laneCount)));

RU_INLINE Floats splat(float v)
{
    return v - Floats{}; // v + 0 would lose the sign of -0
}

/// Is any lane not 0?
RU_INLINE bool anyLane(Ints lanes)
{
    int32_t any = 0;
    for (int64_t k = 0; k < laneCount; ++k)
        any |= lanes[k];
    return any != 0;
}

/// Eight floats, looked up by the low three bits of indexes. In memory they are aligned to 32 bytes.
class Eight
{
public:
    [[gnu::always_inline]] explicit Eight(const float* entries);
    [[gnu::always_inline]] Floats operator[](Ints index) const;

private:
#if defined(__AVX2__)
    Floats entries_; ///< with AVX-512 twice
#else
    const float* entries_;
#endif
};

#if defined(__AVX512F__)

inline Eight::Eight(const float* entries)
    : entries_((Floats)_mm512_maskz_broadcast_f32x8(0xFFFF, _mm256_load_ps(entries)))
{
    asm("" : "+v"(entries_)); // or compilers load it anew each time
}

inline Floats Eight::operator[](Ints index) const
{
    return (Floats)_mm512_maskz_permutexvar_ps(0xFFFF, (__m512i)index, (__m512)entries_);
}

#elif defined(__AVX2__)

inline Eight::Eight(const float* entries) : entries_((Floats)_mm256_load_ps(entries))
{
    asm("" : "+x"(entries_)); // or compilers load it anew each time
}

inline Floats Eight::operator[](Ints index) const
{
    return (Floats)_mm256_permutevar8x32_ps((__m256)entries_, (__m256i)index);
}

#else

inline Eight::Eight(const float* entries) : entries_(entries) {}

inline Floats Eight::operator[](Ints index) const
{
    Floats found;
    for (int64_t k = 0; k < laneCount; ++k)
        found[k] = entries_[index[k] & 7];
    return found;
}

#endif

/// Values in lanes, as ru_math::powInReach() takes them.
struct PowerOfLanes
{
    using Floats = RU_ISA::Floats;
    using Ints = RU_ISA::Ints;
    using Bits = Words;

    [[gnu::always_inline]] explicit PowerOfLanes(const ru_Exponent& exponent)
        : factor(exponent.factor), hi(exponent.hi), lo(exponent.lo), root(exponent.root), p(exponent)
    {
    }

    RU_INLINE Floats converted(Ints whole) { return __builtin_convertvector(whole, Floats); }

    const Eight factor, hi, lo, root;
    const ru_Exponent& p;
};

} // namespace RU_ISA
