#pragma once

#include <RU/kernel/ru_Kernels.h>
#include <UT/UT_Filter.h>

#include <cstdint>

/// How samples see one axis of the input.
struct ru_AreaAxis
{
    const UT_Filter* filter = nullptr;
    const UT_FilterPieces* pieces =
        nullptr; ///< the filter's; null for the box, and where a call per tap is needed
    bool box = true;
    float half = 0.5f, support = 1.0f;
    int wrap = 1;             ///< RU_FILTER_WRAP
    int resolution = 0;       ///< of the whole plane
    int first = 0, last = -1; ///< pixels that the input planes hold
};

/// The places and extents of samples, row after row.
struct ru_AreaGrid
{
    const float *u, *du, *v, *dv;
    int64_t rows, columns;
};

/// Planes of pixels first .. last of both axes, and planes of samples.
struct ru_AreaPlanes
{
    const float* in[4];
    float* out[4];
    int count;
    int64_t stride, size; ///< of a row and of all of an input plane
};

/// The windows of neighbouring samples, one to a lane: weights tap by tap, that of lane l and tap j at
/// weight[j * lanes + l].
struct ru_AreaWindows
{
    static constexpr int mostTaps = 1008, mostLanes = 16;

    alignas(64) float weight[mostTaps * mostLanes];
    alignas(64) int32_t first[mostLanes]; ///< tap, from the axis's first pixel
    alignas(64) int32_t count[mostLanes];
    alignas(
        64) int32_t plain[mostLanes]; ///< non-zero: inside the planes, built; else left to ru_areaWindow()
    int32_t most;                     ///< at least the largest count, a lane's weights beyond its own are 0
};

struct ru_AreaKernels : ru_KernelTable
{
    int64_t lanes;

    /// Bounds of all footprints along an axis, widened from `low` and `high`.
    void (*bounds)(const float* u, const float* du, int64_t count, float half, float support, float& low,
                   float& high);

    /// The windows of `lanes` intervals.
    void (*windows)(const ru_AreaAxis& axis, const float* low, const float* high, ru_AreaWindows& out);

    /// Samples, each with windows of its own; left[k] is 1 for those that take ru_areaWindow(), else 0.
    void (*samples)(const ru_AreaGrid& grid, const ru_AreaAxis& x, const ru_AreaAxis& y,
                    const ru_AreaPlanes& planes, ru_AreaWindows* work, unsigned char* left);

    /// `lanes` rows turned: out[i * lanes + l] = from[l][i].
    void (*turn)(const float* const* from, int64_t count, float* out);

    /// Sums of `lanes` turned rows with the taps of `columns` windows, to rows of `width` values that lie one
    /// behind the other. Windows are weights and taps from start[k] to start[k + 1]; the rows start at the tap
    /// `origin`. Three values behind the last column are spoiled.
    void (*rowSums)(const float* weight, const int32_t* tap, const int64_t* start, int64_t columns,
                    const float* turned, int32_t origin, float* out, int64_t width);

    /// out[k] = sum over j of rows[(tap[j] - origin) * width + k] * weight[j], k < count; reads `lanes` values more.
    void (*columnSums)(const float* weight, const int32_t* tap, int64_t taps, const float* rows,
                       int32_t origin, int64_t width, float* out, int64_t count);
};
