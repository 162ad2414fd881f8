#pragma once

#include <UT/UT_Vector2.h>

#include <vector>

/// Colour curves in double, step by step from their definition.
namespace reference {

struct Key
{
    float x, y, weight;
};

struct Point
{
    double x, y;
};

/// The control points of keys that are sorted.
std::vector<Point> controlPoints(const std::vector<Key>& keys);

/// y at x between the end points of a curve.
double curveInside(const UT_Vector2Array& points, double x);

} // namespace reference
