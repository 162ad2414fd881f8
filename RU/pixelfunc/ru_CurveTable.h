#pragma once

#include <RU/pixelfunc/ru_CurveRows.h>
#include <UT/UT_Vector2.h>

#include <cstdint>
#include <vector>

/// A created curve, ready to be evaluated. Values come from a table that agrees with the curve to 2^-28 of
/// the range of y between two keys; where no table does, they are solved for. Never changes.
class ru_CurveTable
{
public:
    /// At least four control points.
    ru_CurveTable(const UT_Vector2Array& points, bool extend, float preslope, float postslope);

    float evaluate(float x) const;
    /// `in` and `out` are the same row or apart.
    void evaluate(const float* in, float* out, int64_t count,
                  const ru_CurveKernels& kernels = ru_curveRows()) const;

    /// From the control points, without the table.
    float solve(float x) const;

private:
    float solved(float x) const; ///< with any NaN
    ru_CurveView view() const;

    const UT_Vector2Array points_;
    const UT_Vector2 first_;
    const UT_Vector2 last_;
    const bool extend_;
    const float preslope_;
    const float postslope_;
    std::vector<double> segments_; ///< these as in ru_CurveView
    std::vector<double> cells_;    ///< empty: every value is solved for
    std::vector<float> starts_;
    int64_t startCount_ = 0; ///< starts that are numbers
};
