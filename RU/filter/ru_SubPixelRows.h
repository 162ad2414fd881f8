#pragma once

#include <RU/kernel/ru_Kernels.h>

#include <cstdint>

/// The weights of a pixel, the one to its right, and those after both; see RU_SubPixel.h.
template <class Work>
struct ru_SubPixelWeights
{
    Work w00, w10, w01, w11;
};

/// `count` weighted sums from two rows of count + 1 values. There is one for every choice of weights that are
/// read: 1 for w00, 2 for w10, 4 for w01 and 8 for w11.
template <class Work>
struct ru_SubPixelRow
{
    using Sum = void (*)(const Work* row, const Work* next, Work* out, int64_t count,
                         const ru_SubPixelWeights<Work>& weights);
    Sum sums[16];
};

struct ru_SubPixelKernels : ru_SubPixelRow<float>, ru_SubPixelRow<double>, ru_KernelTable
{
};
