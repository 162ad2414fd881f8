#pragma once

#include <array>

namespace host {

/// Maps places of the output to those of the input: (x, y, 1) times the rows, divided by the third.
struct Projection
{
    std::array<double, 9> m{1, 0, 0, 0, 1, 0, 0, 0, 1};

    static Projection scaling(double x, double y) { return {{x, 0, 0, 0, y, 0, 0, 0, 1}}; }
    static Projection shift(double x, double y) { return {{1, 0, x, 0, 1, y, 0, 0, 1}}; }
    /// The unit square to four points, going around: 0,0 1,0 1,1 0,1.
    static Projection squareTo(const std::array<std::array<double, 2>, 4>& points);

    Projection operator*(const Projection& first) const; ///< `first` comes first
    Projection inverse() const;
    double determinant() const;
    std::array<double, 3> at(double x, double y) const; ///< the third is what the others were divided by
    bool operator==(const Projection&) const = default;
};

} // namespace host
