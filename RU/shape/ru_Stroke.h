#pragma once

#include <RU/shape/ru_Outline.h>

#include <array>

/// One side of a stroke at a point of its line: the corners between the edge that arrives and the one that leaves.
/// A single one where their sides meet in it.
struct ru_StrokeSide
{
    std::array<ru_OutlinePoint, 3> corners;
    size_t count = 0;
    bool isOuter = false; ///< of a corner that the edges do not share

    const ru_OutlinePoint& first() const { return corners[0]; }
    const ru_OutlinePoint& last() const { return corners[count - 1]; }
    void append(const ru_OutlinePoint& corner) { corners[count++] = corner; }
};

/// Both sides, for each point of a line.
struct ru_Stroke
{
    std::vector<ru_StrokeSide> left, right;
};

/// A stroke around a line. Ends are butt ends, corners mitred, or bevelled where the mitre would be longer than
/// ru_mitreLimit half widths. Edges share their corners where both are long enough; elsewhere each keeps its whole
/// rectangle and the corner between them is a polygon of its own, so that everything is covered.
ru_Stroke ru_strokeAround(const ru_Outline& line, double halfWidth);

/// The longest mitre, in half widths: that of a turn by 120 degrees.
constexpr double ru_mitreLimit = 2.0;

/// Adds a stroke's polygons: four corners for each edge; three or four for each corner that edges do not share.
void ru_addStroke(GEO_Detail& detail, const ru_Outline& line, const ru_Stroke& stroke);

/// The outlines of a stroke, inside on their left: one around an open line; the right and the
/// left one of a closed line.
std::vector<ru_Outline> ru_outlinesOfStroke(const ru_Outline& line, const ru_Stroke& stroke);
