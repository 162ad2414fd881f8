#pragma once

#include <cstdint>

/// What a channel without samples gives.
inline constexpr float PXL_noSample = 0.0f;

/// A function given by samples at equal distances: linear in between, the end samples outside. A view; by
/// default it gives 0 everywhere. In double, so that the place of a sample gives that very sample.
struct PXL_LookupChannel
{
    const float* samples = &PXL_noSample;
    double start = 0.0; ///< where the first sample stands
    double scale = 0.0; ///< samples per unit; 0: the first sample everywhere
    int32_t last = 0;   ///< index of the last sample

    /// NaN takes the first sample.
    [[gnu::always_inline]] inline float evaluate(float v) const
    {
        const double end = last;
        const double place = (v - start) * scale;
        const double raised = place > 0.0 ? place : 0.0;
        const double within = raised < end ? raised : end;
        const auto index = static_cast<int32_t>(within);
        const int32_t next = index + int32_t(index < last);
        const double fraction = within - index;
        const float low = samples[index];
        const float high = samples[next];
        const double between = low + (double(high) - low) * fraction;
        return fraction == 0.0 ? low : static_cast<float>(between); // beside an infinite sample too
    }
};
