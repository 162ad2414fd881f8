#include <UT/UT_BilinearSampleQuad2D.h>
#include <UT/UT_RootFinder.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr double tolerance = 1e-6;

/// How far a parameter lies outside of 0 to 1.
double excess(double t)
{
    return std::max({0.0, -t, t - 1.0});
}

} // namespace

void UT_BilinearSampleQuad2D::setVertices(float x0, float y0, float x1, float y1, float x2, float y2,
                                          float x3, float y3)
{
    origin_ = {x0, y0};
    across_ = {double(x1) - x0, double(y1) - y0};
    up_ = {double(x3) - x0, double(y3) - y0};
    twist_ = {double(x2) - x1 - up_.x, double(y2) - y1 - up_.y};
    size_ = 0.0;
    for (const Vector& v : {across_, up_, twist_})
        size_ = std::max({size_, std::abs(v.x), std::abs(v.y)});
    // In double the products of the largest floats stay finite, but a quadrilateral without area has no inside.
    const Vector diagonals[] = {{across_.x + up_.x + twist_.x, across_.y + up_.y + twist_.y},
                                {up_.x - across_.x, up_.y - across_.y}};
    const double area = std::max({std::abs(cross(across_, up_)), std::abs(cross(diagonals[0], diagonals[1])),
                                  std::abs(cross(across_, twist_)), std::abs(cross(up_, twist_))});
    if (!(area > 0x1p-50 * size_ * size_) || !std::isfinite(size_ + origin_.x + origin_.y))
        size_ = 0.0;
}

int UT_BilinearSampleQuad2D::sample(float x, float y, float& u, float& v) const
{
    if (size_ == 0.0 || !std::isfinite(x) || !std::isfinite(y))
        return 0;
    const Vector p = {x - origin_.x, y - origin_.y};
    double best = tolerance;
    bool inside = false;
    const auto offer = [&](double s, double t) {
        const double beyond = std::max(excess(s), excess(t));
        const double dx = s * across_.x + t * up_.x + s * t * twist_.x - p.x;
        const double dy = s * across_.y + t * up_.y + s * t * twist_.y - p.y;
        if (!(beyond <= best) || (inside && beyond == best) ||
            !(std::max(std::abs(dx), std::abs(dy)) <= tolerance * size_))
            return;
        best = beyond;
        inside = true;
        u = static_cast<float>(std::clamp(s, 0.0, 1.0));
        v = static_cast<float>(std::clamp(t, 0.0, 1.0));
    };
    // One parameter is a root of a quadratic, the other then lies on a line. Where two vertices coincide that line
    // shrinks to a point for one of the two ways around, and the other one finds the place.
    const auto solve = [&](Vector first, Vector second, bool swapped) {
        double roots[2];
        const int count =
            UT_RootFinder::quadratic(-cross(second, twist_), cross(p, twist_) - cross(second, first),
                                     cross(p, first), -2.0 * tolerance, 1.0 + 2.0 * tolerance, roots);
        for (int i = 0; i < count; ++i) {
            const double t = roots[i];
            const Vector line = {first.x + t * twist_.x, first.y + t * twist_.y};
            const double square = line.x * line.x + line.y * line.y;
            const double along = (p.x - t * second.x) * line.x + (p.y - t * second.y) * line.y;
            const double s = square > 0x1p-60 * size_ * size_ ? along / square : 0.0;
            swapped ? offer(t, s) : offer(s, t);
        }
    };
    solve(across_, up_, false);
    if (!inside || best > 0.0)
        solve(up_, across_, true);
    return inside ? 1 : 0;
}
