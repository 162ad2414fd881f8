#pragma once

#include <RU/pixelfunc/RU_ColorCurve.h>
#include <reference/Random.h>

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

/// Up to 40 keys, sorted: some share an x, some of their curves fold back, some are tiny or huge.
std::vector<Key> randomKeys(Random& random);

RU_ColorCurve curveOf(const std::vector<Key>& keys, bool extend);

/// The control points of keys that are sorted.
std::vector<Point> controlPoints(const std::vector<Key>& keys);

/// y at x between the end points of a curve.
double curveInside(const UT_Vector2Array& points, double x);

} // namespace reference
