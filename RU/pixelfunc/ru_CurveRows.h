#pragma once

#include <RU/kernel/ru_Kernels.h>

#include <cstdint>

/// What the table of a segment holds, in doubles.
enum ru_CurveSegment : int32_t {
    ru_segmentX,     ///< where it starts
    ru_segmentCells, ///< cells per unit of x
    ru_segmentCell,  ///< the number of its first cell
    ru_segmentDoubles
};

/// The coefficients of a cell, from the constant on.
inline constexpr int32_t ru_cellDoubles = 4;

/// A curve as a table, for the evaluation of values. A segment lies between neighbouring keys; it is cut into
/// cells of equal width in x, and y is a cubic polynomial of the place in the cell, 0 to 1. The coefficients of
/// a cell that no cubic fits are NaN.
struct ru_CurveView
{
    const double* segments; ///< ru_segmentDoubles for each
    /// ru_cellDoubles for each. A segment has one more cell behind its last, which holds the y at its end:
    /// rounding may lead there.
    const double* cells;
    /// The x of all segments but the first, and NaN up to `startCount`: a multiple of ru_curveStarts, or, if
    /// more than ru_curveCounted, a power of two with at least one NaN.
    const float* starts;
    int64_t startCount;

    float firstX, firstY, preslope;
    float lastX, lastY, postslope;
    bool extend; ///< follow the slopes outside, else stay flat
};

inline constexpr int ru_curveStarts = 4;
inline constexpr int ru_curveCounted = 32;

/// y at v between the ends; NaN in a cell that no cubic fits, some number outside. `segment` is the number of
/// starts not above v.
RU_INLINE float ru_curveInside(const ru_CurveView& curve, int32_t segment, float v)
{
    const float raised = v > curve.firstX ? v : curve.firstX;
    const double x = raised < curve.lastX ? raised : curve.lastX;
    const double* s = curve.segments;
    const int32_t which = ru_segmentDoubles * segment;
    const double place = (x - s[which + ru_segmentX]) * s[which + ru_segmentCells];
    const int32_t whole = static_cast<int32_t>(place);
    const double f = place - whole;
    const double* c = curve.cells;
    const int32_t cell = ru_cellDoubles * (whole + static_cast<int32_t>(s[which + ru_segmentCell]));
    return static_cast<float>(c[cell] + f * (c[cell + 1] + f * (c[cell + 2] + f * c[cell + 3])));
}

/// y at v, given what ru_curveInside() says. NaN stays NaN.
template <bool Extend>
RU_INLINE float ru_curveValue(const ru_CurveView& curve, float v, float inside)
{
    // Not without Extend: a slope of 0 times infinity.
    const float below = Extend ? (v - curve.firstX) * curve.preslope + curve.firstY : curve.firstY;
    const float above = Extend ? (v - curve.lastX) * curve.postslope + curve.lastY : curve.lastY;
    const float upper = v >= curve.lastX ? above : inside;
    const float result = v <= curve.firstX ? below : upper;
    return v == v ? result : v;
}

struct ru_CurveKernels : ru_KernelTable
{
    /// out = ru_curveValue(in), at most ru_curveRow values that do not overlap; true when one is NaN.
    bool (*run)(const ru_CurveView& curve, const float* in, float* out, int64_t count);
};

inline constexpr int64_t ru_curveRow = 512;
