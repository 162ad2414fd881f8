#pragma once

#include <SYS/SYS_API.h>

#include <cstdint>

/// The kinds of noise: X(enumerator, name, what it is made of).
#define UT_FOR_EACH_NOISE_TYPE(X)                                                                            \
    X(UT_NOISE_PERLIN, "perlin", "slopes in random directions, joined smoothly")                             \
    X(UT_NOISE_SPARSE, "sparse", "soft spots of random strength at random places")                           \
    X(UT_NOISE_CELLULAR, "cellular", "the distance to the nearest of random places")

enum UT_NoiseType : int {
#define UT_ENUMERATOR(NAME, TEXT, SUMMARY) NAME,
    UT_FOR_EACH_NOISE_TYPE(UT_ENUMERATOR)
#undef UT_ENUMERATOR
};

/// Noise in three dimensions, without a feature larger than about a cell: a continuous function of the place with
/// a mean of 0 and a spread (standard deviation) of 1/3, each within 0.02. Different keys give functions that
/// know nothing of each other. Nothing is stored: all that is random is hashed from lattice coordinates and key.
///
///     mix(h)         h ^= h >> 16, h *= 7feb352d, h ^= h >> 15, h *= 846ca68b, h ^= h >> 16, in 32 bits
///     H(i, j, k)     mix(i ^ mix(j ^ mix(k ^ key))): the hash of a lattice point or of the cell above it
///     b0, b1, b2     the lowest ten bits of a hash, the next ten, and the ten above
///
/// The lattice is displaced by mix(key + 1), mix(key + 2) and mix(key + 3), as fractions of 2^32. i, j, k are the
/// floors of the displaced x, y, z and (u, v, w) what is left of these.
///
/// - Perlin: the eight lattice points around have unit vectors along (2 b0 - 1023, 2 b1 - 1023, 2 b2 - 1023). Their
///   products with the vectors from the lattice points to the place are joined linearly with the weights
///   fade(u), fade(v), fade(w), fade(t) = t^3 (t (6 t - 15) + 10), and times `perlinGain`.
/// - Sparse: each cell has a point at (b0 + 1/2, b1 + 1/2, b2 + 1/2) / 1024 of a strength from -1 to 1, the signed
///   mix(H) / 2^31. The sum of strength (1 - r^2)^3 over all points at distances r below 1, times `sparseGain`.
/// - Cellular: the distance to the nearest of the same points, at most 1; less `cellularMean`, times `cellularGain`.
///
/// Places beyond 2^50 are taken as 2^50, NaN as -2^50; after 2^32 cells the noise repeats. Computed in float from
/// places in double, with + - * / and square roots only: the same bits on every processor. `type` beyond the
/// list is Perlin.
PLATFORM_API float UTnoise(UT_NoiseType type, double x, double y, double z, uint32_t key);

/// What noise is made of, for loops that compute rows of it. A row is a line along x: what depends on y and z alone
/// is in a row's struct, and what depends on the lattice's x besides is computed once per column of cells. Internal
/// linkage on purpose: each instruction set keeps its own copy.
namespace UT_noise {

#define UT_NOISE_INLINE [[gnu::always_inline]] static inline

inline constexpr float perlinGain = 1.745f;
inline constexpr float sparseGain = 1.08f;
inline constexpr float cellularMean = 0.52f, cellularGain = 1.9f;

UT_NOISE_INLINE uint32_t mixed(uint32_t h)
{
    h ^= h >> 16;
    h *= 0x7feb352du;
    h ^= h >> 15;
    h *= 0x846ca68bu;
    return h ^ (h >> 16);
}

UT_NOISE_INLINE uint32_t hashed(uint32_t cell, uint32_t key)
{
    return mixed(cell ^ key);
}

/// By how much the lattice of a key is displaced along axis 0 to 2.
UT_NOISE_INLINE double displacement(uint32_t key, uint32_t axis)
{
    return mixed(key + 1 + axis) * 0x1p-32;
}

/// Where a displaced coordinate lies on its axis.
struct Place
{
    uint32_t cell;
    float fraction;
};

UT_NOISE_INLINE double limited(double v)
{
    constexpr double limit = 0x1p50;
    const double low = v > -limit ? v : -limit; // NaN too
    return low < limit ? low : limit;
}

/// Of a limited coordinate.
UT_NOISE_INLINE Place placeOf(double v)
{
    constexpr double aligned = 0x1.8p52; // adding it rounds to a whole number, whose low bits are the sum's
    const double shifted = v + aligned;
    const double nearest = shifted - aligned;
    const bool above = nearest > v;
    const auto cell = static_cast<uint32_t>(__builtin_bit_cast(uint64_t, shifted)) - (above ? 1u : 0u);
    return {cell, static_cast<float>(v - (above ? nearest - 1.0 : nearest))};
}

template <class V>
UT_NOISE_INLINE V fade(V t)
{
    return t * t * t * (t * (t * 6.0f - 15.0f) + 10.0f);
}

UT_NOISE_INLINE float tenBits(uint32_t h)
{
    return static_cast<float>(static_cast<int32_t>(h & 1023u));
}

// Perlin: each column of lattice points has four vectors. Along a row they come to a line, slope times the distance
// plus level.

constexpr int perlinPoints = 4; ///< lattice points in a column

struct PerlinRow
{
    uint32_t keys[perlinPoints];
    float weights[perlinPoints], y[perlinPoints], z[perlinPoints];
};

UT_NOISE_INLINE PerlinRow perlinRow(Place y, Place z, uint32_t key)
{
    PerlinRow row;
    const float v = fade(y.fraction), w = fade(z.fraction);
    for (uint32_t k = 0; k < perlinPoints; ++k) {
        const uint32_t j = k & 1, l = k >> 1;
        row.keys[k] = hashed(y.cell + j, hashed(z.cell + l, key));
        row.weights[k] = (j != 0 ? v : 1.0f - v) * (l != 0 ? w : 1.0f - w);
        row.y[k] = y.fraction - static_cast<float>(j);
        row.z[k] = z.fraction - static_cast<float>(l);
    }
    return row;
}

struct Vector
{
    float x, y, z;
};

UT_NOISE_INLINE Vector perlinVector(uint32_t cell, uint32_t key)
{
    const uint32_t h = hashed(cell, key);
    const float x = 2.0f * tenBits(h) - 1023.0f;
    const float y = 2.0f * tenBits(h >> 10) - 1023.0f;
    const float z = 2.0f * tenBits(h >> 20) - 1023.0f;
    const float unit = 1.0f / __builtin_sqrtf(x * x + y * y + z * z);
    return {x * unit, y * unit, z * unit};
}

/// Adds vector k of a column to its line.
UT_NOISE_INLINE void addPerlinVector(const PerlinRow& row, int k, const Vector& vector, float& slope,
                                     float& level)
{
    slope += row.weights[k] * vector.x;
    level += row.weights[k] * (vector.y * row.y[k] + vector.z * row.z[k]);
}

/// Between two columns.
template <class V>
UT_NOISE_INLINE V perlin(V u, V slope, V level, V nextSlope, V nextLevel)
{
    const V here = slope * u + level;
    const V next = nextSlope * (u - 1.0f) + nextLevel;
    return (here + fade(u) * (next - here)) * perlinGain;
}

// Sparse and cellular: each column has nine points, of which x, the square of the distance in y and z, and the
// strength are kept.

constexpr int points = 9;

struct PointRow
{
    uint32_t keys[points];
    float y[points], z[points];
};

UT_NOISE_INLINE PointRow pointRow(Place y, Place z, uint32_t key)
{
    PointRow row;
    for (uint32_t k = 0; k < points; ++k) {
        const uint32_t j = k % 3 - 1, l = k / 3 - 1;
        row.keys[k] = hashed(y.cell + j, hashed(z.cell + l, key));
        row.y[k] = static_cast<float>(static_cast<int32_t>(j)) - y.fraction;
        row.z[k] = static_cast<float>(static_cast<int32_t>(l)) - z.fraction;
    }
    return row;
}

UT_NOISE_INLINE void pointColumn(uint32_t key, float y, float z, uint32_t cell, float& x, float& rest,
                                 float& strength)
{
    constexpr float unit = 0x1p-10f;
    const uint32_t h = hashed(cell, key);
    const float dy = (tenBits(h >> 10) + 0.5f) * unit + y;
    const float dz = (tenBits(h >> 20) + 0.5f) * unit + z;
    x = (tenBits(h) + 0.5f) * unit;
    rest = dy * dy + dz * dz;
    strength = static_cast<float>(static_cast<int32_t>(mixed(h))) * 0x1p-31f;
}

/// The square of the distance to a point of the column -1, 0 or 1.
template <class V>
UT_NOISE_INLINE V squaredDistance(V u, float column, V x, V rest)
{
    const V dx = (x + column) - u;
    return dx * dx + rest;
}

template <class V>
UT_NOISE_INLINE V sparseSpot(V squared, V strength)
{
    const V inside = 1.0f - squared;
    const V near = inside > V{} ? inside : V{};
    return near * near * near * strength;
}

UT_NOISE_INLINE float cellular(float nearestSquared)
{
    return (__builtin_sqrtf(nearestSquared) - cellularMean) * cellularGain;
}

} // namespace UT_noise
