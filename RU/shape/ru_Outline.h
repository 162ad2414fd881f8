#pragma once

#include <GEO/GEO_Detail.h>

#include <vector>

/// A place on an outline and what it carries along.
struct ru_OutlinePoint
{
    double x = 0.0, y = 0.0;
    double alpha = 1.0;
    double feather = 0.0;
    double step = 0.0; ///< what the feather is more on the edge that leaves

    double featherAfter() const { return feather + step; }
    ru_OutlinePoint moved(double dx, double dy) const { return {x + dx, y + dy, alpha, feather}; }
};

/// A line of edges, none of which has length 0.
struct ru_Outline
{
    std::vector<ru_OutlinePoint> points;
    bool isClosed = false;

    size_t edges() const { return points.empty() ? 0 : points.size() - (isClosed ? 0 : 1); }
    const ru_OutlinePoint& point(size_t i) const { return points[i < points.size() ? i : i - points.size()]; }
    /// Above 0 where it runs counterclockwise, y up.
    double signedArea() const;
    /// Drops points that repeat the one before.
    void dropRepeats();
};

/// A direction of length 1, or 0 where there is none.
struct ru_Direction
{
    double x = 0.0, y = 0.0;

    ru_Direction left() const { return {-y, x}; }
};

/// The direction of an edge, from its point i to the next one.
ru_Direction ru_edgeDirection(const ru_Outline& outline, size_t i);

/// The outline that a detail with one polygon holds; none when it has no primitive. One that has less than two
/// places is empty.
ru_Outline ru_outlineOf(const GEO_Detail& detail);

/// Adds a closed polygon with points of its own, or none where a place does not fit a float. Result: whether it did.
bool ru_addPolygon(GEO_Detail& detail, const std::vector<ru_OutlinePoint>& corners);
