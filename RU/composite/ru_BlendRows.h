#pragma once

#include <RU/kernel/ru_ConvertRows.h>

#include <type_traits>

/// The weights of both images: for all pixels of a row, or, under a mask, one for each.
template <class Work>
struct ru_BlendWeights
{
    Work first, second;
    const Work* firstRow;
    const Work* secondRow;
};

/// Blends `count` codes in place. `second` may be `first` itself; it is only read by kernels for two images.
template <class T>
using ru_BlendKernel = void (*)(T* first, const T* second, int64_t count,
                                const ru_BlendWeights<ru_Work<T>>& weights, const ru_Range<T>& range);

/// The kernels of one format and range: for one image or two, with the same weights for all pixels or rows.
template <class T, bool FullRange>
struct ru_BlendRow
{
    ru_BlendKernel<T> of(bool two, bool rows) const { return kernels[two][rows]; }

    ru_BlendKernel<T> kernels[2][2];
};

/// Turns a mask into rows of weights: the fraction clamp01(factor * M), with M or the inverted 1 - M, and
/// what is left to 1.
template <class Work>
struct ru_BlendMask
{
    using Weigh = void (*)(const float* mask, Work* fraction, Work* rest, int64_t count, Work factor);

    Weigh of(bool inverted) const { return kernels[inverted]; }

    Weigh kernels[2];
};

/// Mixes of 8- and 16-bit codes whose weights share 1: codes = a + (b - a) * weight, exact. A mix needs no
/// points, lies between its codes and rounds halves up. A weight consists of two digits, of which only these
/// kernels know what they mean.
template <class T>
struct ru_MixRow
{
    using Digit = std::conditional_t<sizeof(T) == 1, int16_t, int32_t>;
    struct Weights
    {
        Digit* high;
        Digit* low;
    };
    using Mix = void (*)(T* codes, const T* a, const T* b, int64_t count, const Weights& weights);
    using Weigh = bool (*)(const float* mask, const Weights& weights, int64_t count, float factor);

    /// Takes the same weight for all codes or, with rows, one for each. `codes` may be one of the others.
    Mix of(bool rows) const { return mixes[rows]; }
    /// Turns a mask into weights clamp01(factor * M), with M or the inverted 1 - M, and returns whether some are
    /// NaN. These have `notANumber` as their high digit.
    Weigh weigh(bool inverted) const { return weighs[inverted]; }

    static constexpr Digit notANumber = -1;

    Mix mixes[2];
    Weigh weighs[2];
};

/// The formats that it is for.
template <class T>
inline constexpr bool ru_hasMixes = std::is_integral_v<T> && sizeof(T) <= 2;

struct ru_BlendKernels :
#define RU_BASES(CODE, T, WHITE, NAME) ru_BlendRow<T, true>, ru_BlendRow<T, false>,
    PXL_FOR_EACH_FORMAT(RU_BASES)
#undef RU_BASES
        ru_BlendMask<float>,
    ru_BlendMask<double>,
    ru_MixRow<unsigned char>,
    ru_MixRow<unsigned short>,
    ru_KernelTable
{
};
