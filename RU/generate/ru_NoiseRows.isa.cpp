#include <RU/generate/ru_NoiseRows.h>
#include <RU/kernel/ru_Lanes.h>
#include <RU/kernel/ru_OneNaN.h>

namespace RU_ISA {
namespace {

using namespace UT_noise;

void locate(const ru_NoiseAxis& given, uint32_t* __restrict cells, float* __restrict fractions, int64_t count)
{
    const ru_NoiseAxis axis = given;
    for (int32_t i = 0; i < static_cast<int32_t>(count); ++i) {
        const Place place = placeOf(ru_NoiseAxis::at(axis, i));
        cells[i] = place.cell;
        fractions[i] = place.fraction;
    }
}

void perlinVectors(const uint32_t* keys, const uint32_t* __restrict cells, float* __restrict vectors,
                   int64_t count)
{
    for (int k = 0; k < perlinPoints; ++k) {
        const uint32_t key = keys[k];
        float* __restrict x = vectors + 3 * count * k;
        float* __restrict y = x + count;
        float* __restrict z = y + count;
        for (int64_t i = 0; i < count; ++i) {
            const Vector vector = perlinVector(cells[i], key);
            x[i] = vector.x;
            y[i] = vector.y;
            z[i] = vector.z;
        }
    }
}

void perlinColumns(const PerlinRow& given, const float* vectors, float* arrays, int64_t count)
{
    const PerlinRow row = given;
    float* slopes = arrays;
    float* levels = arrays + count;
    RU_EACH_ALONE
    for (int64_t i = 0; i < count; ++i) {
        float slope = 0.0f, level = 0.0f;
        for (int k = 0; k < perlinPoints; ++k) {
            const float* x = vectors + 3 * count * k + i;
            addPerlinVector(row, k, {x[0], x[count], x[2 * count]}, slope, level);
        }
        slopes[i] = slope;
        levels[i] = level;
    }
}

void pointColumns(const PointRow& row, const uint32_t* __restrict cells, float* __restrict arrays,
                  int64_t count)
{
    for (int k = 0; k < points; ++k) {
        const uint32_t key = row.keys[k];
        const float y = row.y[k], z = row.z[k];
        float* __restrict x = arrays + 3 * count * k;
        float* __restrict rest = x + count;
        float* __restrict strength = rest + count;
        for (int64_t i = 0; i < count; ++i)
            pointColumn(key, y, z, cells[i], x[i], rest[i], strength[i]);
    }
}

// How a vector of pixels finds what its columns are made of: all in one column, in columns that fit a vector, or
// anywhere.

struct InOne
{
    [[gnu::always_inline]] Floats operator()(const float* array, int next) const
    {
        return splat(array[column + next]);
    }
    /// Nothing that starts from this squared distance is seen.
    [[gnu::always_inline]] bool isFar(const float* rests, int next) const
    {
        return rests[column + next] >= 1.0f;
    }
    int64_t column;
};

struct Anywhere
{
    [[gnu::always_inline]] Floats operator()(const float* array, int next) const
    {
        Floats found;
        for (int64_t k = 0; k < laneCount; ++k)
            found[k] = array[columns[k] + next];
        return found;
    }
    [[gnu::always_inline]] static bool isFar(const float*, int) { return false; }
    const int32_t* columns;
};

#if defined(__AVX2__)
struct InVector
{
    [[gnu::always_inline]] Floats operator()(const float* array, int next) const
    {
        const auto entries = loadVector<Floats>(array + first);
        const Ints index = columns + next;
#if defined(__AVX512F__)
        return (Floats)_mm512_maskz_permutexvar_ps(0xFFFF, (__m512i)index, (__m512)entries);
#else
        return (Floats)_mm256_permutevar8x32_ps((__m256)entries, (__m256i)index);
#endif
    }
    [[gnu::always_inline]] static bool isFar(const float*, int)
    {
        return false;
    }
    int64_t first;
    Ints columns; ///< from the first
};
#endif

/// Adds the weighted noise of Noise(find) to all pixels; it takes `Reach` columns beside the first.
template <int Reach, class Noise>
RU_INLINE void addNoise(const ru_NoisePiece& piece, float* sum, const Noise& noise)
{
    const int32_t* columns = piece.columns;
    const float weight = piece.weight;
    for (int64_t i = 0; i < piece.count; i += laneCount) {
        const int64_t a = columns[i], b = columns[i + laneCount - 1];
        const int64_t low = a < b ? a : b, span = a < b ? b - a : a - b;
        const auto u = loadVector<Floats>(piece.fractions + i);
        Floats value;
        if (span == 0)
            value = noise(u, InOne{low});
#if defined(__AVX2__)
        else if (span + Reach < laneCount)
            value = noise(u, InVector{low, loadVector<Ints>(columns + i) - static_cast<int32_t>(low)});
#endif
        else
            value = noise(u, Anywhere{columns + i});
        const Floats before = piece.isFirst ? Floats{} : loadVector<Floats>(sum + i);
        storeVector(sum + i, before + value * weight);
    }
}

void perlinNoise(const ru_NoisePiece& piece, float* sum)
{
    const float* slopes = piece.cells;
    const float* levels = slopes + piece.columnCount;
    addNoise<1>(
        piece, sum, [=](Floats u, const auto& find) __attribute__((always_inline)) {
            return perlin<Floats>(u, find(slopes, 0), find(levels, 0), find(slopes, 1), find(levels, 1));
        });
}

void sparseNoise(const ru_NoisePiece& piece, float* sum)
{
    const float* cells = piece.cells;
    const int64_t count = piece.columnCount;
    addNoise<2>(
        piece, sum, [=](Floats u, const auto& find) __attribute__((always_inline)) {
            Floats spots = {};
            for (int k = 0; k < points; ++k) {
                const float* x = cells + 3 * count * k;
                for (int column = 0; column < 3; ++column) {
                    const Floats squared = squaredDistance<Floats>(u, static_cast<float>(column - 1),
                                                                   find(x, column), find(x + count, column));
                    spots += sparseSpot<Floats>(squared, find(x + 2 * count, column));
                }
            }
            return spots * sparseGain;
        });
}

void cellularNoise(const ru_NoisePiece& piece, float* sum)
{
    const float* cells = piece.cells;
    const int64_t count = piece.columnCount;
    addNoise<2>(
        piece, sum, [=](Floats u, const auto& find) __attribute__((always_inline)) {
            Floats nearest = splat(1.0f);
            for (int k = 0; k < points; ++k) {
                const float* x = cells + 3 * count * k;
                for (int column = 0; column < 3; ++column) {
                    const Floats squared = squaredDistance<Floats>(u, static_cast<float>(column - 1),
                                                                   find(x, column), find(x + count, column));
                    nearest = squared < nearest ? squared : nearest;
                }
            }
            Floats value;
            for (int64_t k = 0; k < laneCount; ++k)
                value[k] = cellular(nearest[k]);
            return value;
        });
}

void finish(const float* sum, float* out, int64_t count, float mean, float amplitude)
{
    for (int64_t i = 0; i < count; ++i) {
        const float low = sum[i] > -1.0f ? sum[i] : -1.0f;
        out[i] = ru_oneNaN(mean + amplitude * (low < 1.0f ? low : 1.0f));
    }
}

} // namespace

extern constinit const ru_NoiseKernels ru_noiseRows = {{RU_COMPILED_FOR}, locate,        perlinVectors,
                                                       perlinColumns,     pointColumns,  perlinNoise,
                                                       sparseNoise,       cellularNoise, finish};

} // namespace RU_ISA
