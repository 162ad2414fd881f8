#include <host/operation/Projection.h>

#include <cstddef>

namespace host {

/// With d1 and d2 the sides at the far corner and d3 what the points lack to a parallelogram.
Projection Projection::squareTo(const std::array<std::array<double, 2>, 4>& points)
{
    const auto& [a, b, c, d] = points;
    const double x1 = b[0] - c[0], x2 = d[0] - c[0], x3 = a[0] - b[0] + c[0] - d[0];
    const double y1 = b[1] - c[1], y2 = d[1] - c[1], y3 = a[1] - b[1] + c[1] - d[1];
    const double det = x1 * y2 - x2 * y1;
    const double g = (x3 * y2 - x2 * y3) / det, h = (x1 * y3 - x3 * y1) / det;
    return {{b[0] - a[0] + g * b[0], d[0] - a[0] + h * d[0], a[0], b[1] - a[1] + g * b[1],
             d[1] - a[1] + h * d[1], a[1], g, h, 1}};
}

Projection Projection::operator*(const Projection& first) const
{
    Projection product{{}};
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column)
            for (size_t k = 0; k < 3; ++k)
                product.m[3 * row + column] += m[3 * row + k] * first.m[3 * k + column];
    return product;
}

double Projection::determinant() const
{
    return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
           m[2] * (m[3] * m[7] - m[4] * m[6]);
}

Projection Projection::inverse() const
{
    Projection result{{m[4] * m[8] - m[5] * m[7], m[2] * m[7] - m[1] * m[8], m[1] * m[5] - m[2] * m[4],
                       m[5] * m[6] - m[3] * m[8], m[0] * m[8] - m[2] * m[6], m[2] * m[3] - m[0] * m[5],
                       m[3] * m[7] - m[4] * m[6], m[1] * m[6] - m[0] * m[7], m[0] * m[4] - m[1] * m[3]}};
    const double det = determinant();
    for (double& value : result.m)
        value /= det;
    return result;
}

std::array<double, 3> Projection::at(double x, double y) const
{
    const double w = m[6] * x + m[7] * y + m[8];
    return {(m[0] * x + m[1] * y + m[2]) / w, (m[3] * x + m[4] * y + m[5]) / w, w};
}

} // namespace host
