#pragma once

#include <RU/kernel/ru_Kernels.h>
#include <UT/UT_Noise.h>

#include <cstdint>

/// The coordinate of pixel i along a row: (first + i + offset) frequency + displacement.
struct ru_NoiseAxis
{
    double first, offset, frequency, displacement;

    UT_NOISE_INLINE double at(const ru_NoiseAxis& axis, double i)
    {
        return UT_noise::limited((axis.first + i + axis.offset) * axis.frequency + axis.displacement);
    }
};

/// What rows go through at once, so that it stays in the nearest caches, and how far they may run over.
inline constexpr int64_t ru_noisePiece = 1024, ru_noiseSpare = 16;

/// A piece of a row in one octave. Beyond `count` there are spare pixels, in the last one's column.
struct ru_NoisePiece
{
    const int32_t* columns; ///< of each pixel the first column of cells that it takes
    const float* fractions; ///< where it lies in its cell
    int64_t count;
    const float* cells;  ///< arrays of what columns of cells are made of
    int64_t columnCount; ///< in each array, spare ones included
    float weight;
    bool isFirst; ///< octave: it is stored, not added
};

/// Rows of noise; see UT_Noise.h. `cells` are the lattice coordinates of the columns.
struct ru_NoiseKernels : ru_KernelTable
{
    void (*locate)(const ru_NoiseAxis& axis, uint32_t* cells, float* fractions, int64_t count);
    /// Three arrays for each vector of a column: x, y, z. They hold for all rows with these keys.
    void (*perlinVectors)(const uint32_t* keys, const uint32_t* cells, float* vectors, int64_t count);
    /// Two arrays: slopes, levels.
    void (*perlinColumns)(const UT_noise::PerlinRow& row, const float* vectors, float* arrays, int64_t count);
    /// Three arrays for each point of a column: x, rest, strength.
    void (*pointColumns)(const UT_noise::PointRow& row, const uint32_t* cells, float* arrays, int64_t count);
    // Sums of weight times noise. Perlin takes a pixel's column and the next one, the others the one after that too
    void (*perlin)(const ru_NoisePiece& piece, float* sum);
    void (*sparse)(const ru_NoisePiece& piece, float* sum);
    void (*cellular)(const ru_NoisePiece& piece, float* sum);
    void (*finish)(const float* sum, float* out, int64_t count, float mean, float amplitude);
};
