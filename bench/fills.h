#pragma once

#include <bench/bench.h>

#include <UT/UT_Vector2.h>

#include <algorithm>

// Polygon fills: shapes in white, by what they cover of the pixels. All outlines run one way.

namespace bench {

enum class Shape {
    blob,     ///< a smooth outline of 5,000 vertices around 0.4 of the image
    star,     ///< 5,000 vertices, every other one a spike; the inner radius is a tenth of the outer one
    triangles ///< 2,000, about 64 pixels across
};

using Outline = std::vector<UT_Vector2>;

/// In pixels of an image of that size.
std::vector<Outline> outlinesOf(Shape shape, const TIL_TileList& image);

/// What a single outline that crosses itself nowhere covers of each pixel, exactly.
std::vector<double> coverageOf(Shape shape, const TIL_TileList& image);

// Our own work: drawing buckets that are sorted already, and what comes before.
Work fill(Planes& planes, Shape shape, int samples, int threads);
Work prepareFill(Planes& planes, Shape shape);

template <Shape Of, int Samples, int Threads = 1>
Work fill(Planes& planes)
{
    return fill(planes, Of, Samples, Threads);
}

template <Shape Of>
Work prepareFill(Planes& planes)
{
    return prepareFill(planes, Of);
}

template <Shape Of>
std::vector<double> coverageOf(const TIL_TileList& image)
{
    return coverageOf(Of, image);
}

} // namespace bench
