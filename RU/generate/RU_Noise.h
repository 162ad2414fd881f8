#pragma once

#include <RU/framework/RU_Factories.h>
#include <UT/UT_Noise.h>

template <class T, bool FullRange>
class RU_NoiseOp;

extern template class RU_API RU_GeneratorFactories<RU_NoiseOp>;

/// Noise: octaves of UT_Noise.h, each of twice the frequency of the one before. For component c, in the pixel at
/// column x and row y of the image,
///
///     out = mean[c] + amplitude[c] n,   n = limit( sum r^k N(X_k, Y_k, Z_k; key) / sqrt(sum r^(2k)) )
///
///     X_k = (x + offsetX) (2^k / periodX)                Y_k = (Y + offsetY) (2^k / periodY)
///     Z_k = (time + offsetZ) (2^k / periodTime)          Y = (y + vertical offset) / vertical scale
///
/// summed over octaves k from 0 to turbulence - 1, with r = roughness, N = UTnoise(type, ...), mix() of UT_Noise.h
/// and the octave's key mix(k ^ mix(c ^ mix(seed))). limit() takes n to -1 to 1; vertical offset and scale are the
/// tile list's. Coordinates are those of the image, in double: tiles and fields join without a seam, and 100,000
/// pixels to the right noise is as smooth as at 0.
///
/// Output: any rectangle; rows from the first one by the row step.
/// Units: periods and offsets in pixels, those of time in its own unit, mostly frames. A period below 0 mirrors
/// its direction; infinite, 0 or NaN (or 1 / it infinite) it leaves the direction out, as if it had one coordinate.
/// A vertical scale of 0 or NaN counts as 1.
/// Range: n has a mean of 0 and a spread of 1/3 whatever the octaves, each within 0.02, and is limited in less
/// than one pixel of fifty; so mean 0.5 and amplitude 0.5 fill 0 to 1. Floats are mean - |amplitude| to
/// mean + |amplitude|.
/// n is a float for all formats: of 32-bit codes the lowest eight bits are not random.
/// Result: 1, also when interrupted.
/// Cost: per pixel and octave some ten operations of vectors for Perlin, two hundred for the others; and where cells
/// are narrow, the hashing of each column of cells once per row.
class RU_API RU_Noise : public RU_GeneratorFactories<RU_NoiseOp>
{
public:
    RU_Noise() = default;
    RU_Noise(const RU_Noise&) = default;
    RU_Noise& operator=(const RU_Noise&) = default;
    ~RU_Noise() override;

    static constexpr int maxTurbulence = 16;

    UT_NoiseType type = UT_NOISE_PERLIN;
    unsigned int seed = 0;    ///< another one gives other noise
    int turbulence = 1;       ///< octaves, taken as from 1 to maxTurbulence
    float roughness = 0.5f;   ///< each octave's amplitude over the one before, taken as from 0 to 1; NaN as 0
    bool monochrome = false;  ///< all components take the noise of the first
    float periodX = 32.0f;    ///< of the first octave, in pixels
    float periodY = 32.0f;    ///< of the first octave, in pixels
    float periodTime = 10.0f; ///< of the first octave, in units of time
    float offsetX = 0.0f;     ///< added to columns
    float offsetY = 0.0f;     ///< added to rows
    float offsetZ = 0.0f;     ///< added to the time
    float amplitude[4] = {0.5f, 0.5f, 0.5f, 0.5f};
    float mean[4] = {0.5f, 0.5f, 0.5f, 0.5f};
};
