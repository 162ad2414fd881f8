#pragma once

#include <UT/UT_Convex.h>

#include <array>
#include <cstdint>
#include <vector>

/// A vertex of an outline, moved to the nearest point of a grid, where all decisions are exact.
struct ut_GridPoint
{
    int64_t x, y;  ///< 0 to ut_gridSize
    int64_t index; ///< in the outline
};

constexpr int64_t ut_gridSize = int64_t(1) << 30;

/// Twice the area of a triangle, above 0 where it runs counterclockwise (y up). Below 2^62.
inline int64_t ut_turn(const ut_GridPoint& a, const ut_GridPoint& b, const ut_GridPoint& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// Leaves the vertices out at which nothing turns. What remains may be empty.
std::vector<ut_GridPoint> ut_turningPoints(const std::vector<ut_GridPoint>& outline);

/// Whether no edge touches another but at the vertex that they share. At each vertex the outline has to turn.
bool ut_isSimple(const std::vector<ut_GridPoint>& outline);

using ut_Triangle = std::array<int64_t, 3>;

/// The triangles of a simple outline that turns at each vertex, as places in `outline`.
std::vector<ut_Triangle> ut_clipEars(const std::vector<ut_GridPoint>& outline);

/// Upright trapezoids and triangles, counterclockwise.
struct ut_Trapezoid
{
    std::array<UT_ConvexCorner, 4> corners;
    int64_t count = 0;
};

/// What any finite outline winds around.
std::vector<ut_Trapezoid> ut_sweepTrapezoids(const std::vector<UT_Vector2>& outline);
