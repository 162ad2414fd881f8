#pragma once

#include <GU/GU_PrimCurve.h>

#include <algorithm>
#include <cmath>

namespace reference {

constexpr size_t coordinates[] = {0, 1};

/// The distance from a point to the nearest place on a curve.
inline double distance(const GEO_Detail::Values& point, const std::vector<GU_PrimCurve::Piece>& pieces)
{
    const auto at = [&](const GU_PrimCurve::Piece& piece, double t) {
        double square = 0.0;
        for (const size_t k : coordinates) {
            double b[4];
            std::transform(piece.begin(), piece.end(), b,
                           [k](const GEO_Detail::Values& control) { return control[k]; });
            for (size_t n = piece.size() - 1; n > 0; --n)
                for (size_t i = 0; i < n; ++i)
                    b[i] += t * (b[i + 1] - b[i]);
            square += (b[0] - point[k]) * (b[0] - point[k]);
        }
        return std::sqrt(square);
    };
    double nearest = HUGE_VAL;
    for (const GU_PrimCurve::Piece& piece : pieces) {
        double t = 0.0;
        for (int step = 1; step <= 50; ++step)
            t = at(piece, step / 50.0) < at(piece, t) ? step / 50.0 : t;
        for (double width = 0.02; width > 1e-9; width *= 0.7)
            for (const double other : {std::max(t - width, 0.0), std::min(t + width, 1.0)})
                t = at(piece, other) < at(piece, t) ? other : t;
        nearest = std::min(nearest, at(piece, t));
    }
    return nearest;
}

} // namespace reference
