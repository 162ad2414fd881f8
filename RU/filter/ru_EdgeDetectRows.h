#pragma once

#include <RU/kernel/ru_Kernels.h>

#include <cstdint>

/// The weights of the general kernel; see RU_EdgeDetect.h.
template <class Work>
struct ru_EdgeWeights
{
    Work gain;   ///< a
    Work corner; ///< b
    Work middle; ///< m
    Work norm;   ///< n
};

/// `count` edge strengths from three rows of count + 2 values, in the working type.
template <class Work>
struct ru_EdgeRow
{
    void (*sobel)(const Work* top, const Work* middle, const Work* bottom, Work* out, int64_t count);
    void (*prewitt)(const Work* top, const Work* middle, const Work* bottom, Work* out, int64_t count);
    void (*general)(const Work* top, const Work* middle, const Work* bottom, Work* out, int64_t count,
                    const ru_EdgeWeights<Work>& weights);
};

struct ru_EdgeDetectKernels : ru_EdgeRow<float>, ru_EdgeRow<double>, ru_KernelTable
{
};
