#pragma once

#include <GEO/GEO_Detail.h>

#include <vector>

using gu_Rows = std::vector<GEO_Detail::Values>;

/// The knots of an open B-spline of a degree that is to have given values at ascending parameters: the parameters
/// where the degree is odd, else the middles between them, but for some next to the ends.
std::vector<double> gu_openKnots(const std::vector<double>& params, int degree);

/// The control points of the open B-spline with these knots that passes through `rows` at `params`.
gu_Rows gu_interpolateOpen(const std::vector<double>& params, const std::vector<double>& knots, int degree,
                           gu_Rows rows);

/// The control points of the periodic cubic B-spline whose knots are `params`, one more than there are rows, and
/// which passes through the rows there. At least 3 rows. Control point i lies next to row i.
gu_Rows gu_interpolateClosed(const std::vector<double>& params, const gu_Rows& rows);
