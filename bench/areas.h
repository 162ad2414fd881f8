#pragma once

#include <bench/bench.h>

#include <UT/UT_Filter.h>

// Sampling of areas: the input, at another size or in perspective, into the first pixels of the output.

namespace bench {

/// Where sample (x, y) of an output of some size lies in the input: its centre and extents, in pixels.
struct Footprint
{
    float u, v, du, dv;
};

struct Sampling
{
    int width, height;
    Footprint (*at)(int x, int y);
    int blockSide; ///< of the samples that we take at once
};

template <int Tenths>
Footprint reducedAt(int x, int y)
{
    constexpr float step = Tenths / 10.0f;
    return {step * (static_cast<float>(x) + 0.5f), step * (static_cast<float>(y) + 0.5f), step, step};
}

/// A plane that leans back: footprints of 1.6 x 1.6 pixels at the top, of 4 x 10 at the bottom.
inline Footprint leaningAt(int x, int y)
{
    const float z = 1.0f - (1.0f - 1.6f / 4.0f) / 270.0f * static_cast<float>(y);
    return {960.0f + 1.6f * (static_cast<float>(x) - 240.0f) / z, 1.6f * static_cast<float>(y) / z, 1.6f / z,
            1.6f / (z * z)};
}

constexpr Sampling quarter = {480, 270, reducedAt<40>, 480};
constexpr Sampling by37 = {518, 291, reducedAt<37>, 518};
constexpr Sampling leaning = {480, 270, leaningAt, 128};

Work sampleAreas(Planes& planes, const Sampling& sampling, UT_FilterType filter);

template <const Sampling& Of, UT_FilterType Filter>
Work areas(Planes& planes)
{
    return sampleAreas(planes, Of, Filter);
}

} // namespace bench
