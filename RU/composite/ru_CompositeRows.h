#pragma once

#include <RU/composite/RU_Composite.h>
#include <RU/kernel/ru_Kernels.h>

#include <cstdint>

/// What a call comes to: an operation, or what is left of it without an alpha.
enum class ru_CompositeStep {
#define RU_STEP(TYPE, ...) TYPE,
    RU_FOR_EACH_COMPOSITE_TYPE(RU_STEP)
#undef RU_STEP
        ERASE, ///< the last one that has a loop
    COPY,
    KEEP,
    ZERO
};

/// The alphas that an operation reads.
enum class ru_CompositeAlphas { NEITHER, SOURCE, DESTINATION, BOTH };

/// What an operation on integer colours is computed in: their codes, or those of bytes beside bytes alone.
enum class ru_CompositeArithmetic { CODES, BYTES };

constexpr bool ru_readsSource(ru_CompositeAlphas reads)
{
    return reads == ru_CompositeAlphas::SOURCE || reads == ru_CompositeAlphas::BOTH;
}

constexpr bool ru_readsDestination(ru_CompositeAlphas reads)
{
    return reads == ru_CompositeAlphas::DESTINATION || reads == ru_CompositeAlphas::BOTH;
}

/// The loops of the steps over colours of type T beside alphas of type U. Arrays are the same or apart.
template <class T, class U>
struct ru_CompositeLoops
{
    using Loop = void (*)(T* dst, const U* dstAlpha, const T* src, const U* srcAlpha, int64_t count);
    Loop loops[static_cast<int>(ru_CompositeStep::ERASE) + 1];
};

/// Those of the operations over alphas.
template <class T>
struct ru_CompositeAlphaLoops
{
    using Loop = void (*)(T* dstAlpha, const T* srcAlpha, int64_t count);
    Loop loops[static_cast<int>(ru_CompositeStep::ERASE)];
};

/// What chooses between values that cannot be mixed: masks are 1 where something holds, else 0.
struct ru_CompositeSelection
{
    void (*markNonZero)(int32_t* mask, const float* plane, int64_t count); ///< mask or plane is not 0
    void (*andPositive)(int32_t* mask, const float* alpha, int64_t count); ///< mask and alpha > 0
    void (*andBelowOne)(int32_t* mask, const float* alpha, int64_t count); ///< mask and alpha < 1
    void (*select)(float* dst, const int32_t* mask, const float* chosen, const float* other, int64_t count);
};

struct ru_CompositeKernels :
#define RU_BASE(T, U) ru_CompositeLoops<T, U>,
    RU_FOR_EACH_COMPOSITE_PAIR(RU_BASE)
#undef RU_BASE
#define RU_BASE(T) ru_CompositeAlphaLoops<T>,
        RU_FOR_EACH_COMPOSITE_FORMAT(RU_BASE)
#undef RU_BASE
            ru_CompositeSelection,
    ru_KernelTable
{
};
