#include <reference/Curves.h>

#include <algorithm>
#include <cmath>

namespace reference {

namespace {

Point operator+(Point p, Point q)
{
    return {p.x + q.x, p.y + q.y};
}
Point operator*(double s, Point p)
{
    return {s * p.x, s * p.y};
}
Point way(const Key& from, const Key& to)
{
    return {double{to.x} - from.x, double{to.y} - from.y};
}
Point unit(Point p)
{
    const double l = std::hypot(p.x, p.y);
    return l == 0 ? Point{0, 0} : Point{p.x / l, p.y / l};
}

double bernstein(const double* p, double t)
{
    const double u = 1 - t;
    return u * u * u * p[0] + 3 * u * u * t * p[1] + 3 * u * t * t * p[2] + t * t * t * p[3];
}

/// Where x is reached near 0..1, by a grid fine enough for curves that fold.
std::vector<double> rootsNear01(const double* p, double x)
{
    constexpr int cells = 1000;
    std::vector<double> roots;
    for (int i = 0; i < cells; ++i) {
        double low = -0.1 + 1.2 * i / cells, high = -0.1 + 1.2 * (i + 1) / cells;
        const bool below = bernstein(p, low) < x;
        if (below == (bernstein(p, high) < x))
            continue;
        for (int k = 0; k < 50; ++k) {
            const double middle = (low + high) / 2;
            ((bernstein(p, middle) < x) == below ? low : high) = middle;
        }
        roots.push_back(high);
    }
    return roots;
}

} // namespace

std::vector<Key> randomKeys(Random& random)
{
    const double size = std::ldexp(1.0, random.oneIn(3) ? random.between(-90, 90) : 0);
    std::vector<Key> keys(
        static_cast<size_t>(random.oneIn(3) ? random.between(0, 40) : random.between(2, 6)));
    for (Key& key : keys) {
        const double x = random.oneIn(4) ? random.between(0, 8) / 8.0 : random.between(-0.2, 1.2);
        const double y = random.oneIn(4) ? x : random.between(-1.0, 2.0);
        const float weights[] = {0.0f, 0.0f, 1.0f, 0.5f, -0.7f, 1.8f};
        key = {static_cast<float>(x * size), static_cast<float>(y * size), weights[random.between(0, 5)]};
    }
    std::stable_sort(keys.begin(), keys.end(), [](const Key& a, const Key& b) { return a.x < b.x; });
    return keys;
}

RU_ColorCurve curveOf(const std::vector<Key>& keys, bool extend)
{
    RU_ColorCurve curve;
    for (const Key& key : keys)
        curve.addPoint(key.x, key.y, key.weight);
    curve.create(extend);
    return curve;
}

std::vector<Point> controlPoints(const std::vector<Key>& keys)
{
    const size_t n = keys.size();
    if (n < 2)
        return {n == 1 ? Point{keys[0].x, keys[0].y} : Point{0, 0}};
    std::vector<Point> out(n, {0, 0}), in(n, {0, 0});
    for (size_t i = 1; i + 1 < n; ++i) {
        const Point d1 = way(keys[i - 1], keys[i]), d2 = way(keys[i], keys[i + 1]);
        const double l1 = std::hypot(d1.x, d1.y), l2 = std::hypot(d2.x, d2.y), m = (l1 + l2) * 0.166666;
        const double s = l1 == l2 ? 0.5 : l1 / (l1 + l2);
        const Point tangent = s * unit(d1) + (1 - s) * unit(d2);
        in[i] = -std::min(l1 / 2, m) * tangent;
        out[i] = std::min(l2 / 2, m) * tangent;
    }
    const auto end = [](Point d, Point handle) {
        return 0.33333 * std::hypot(d.x, d.y) * unit(2 * d + handle);
    };
    out[0] = keys[0].x == keys[1].x ? Point{0, 0} : end(way(keys[0], keys[1]), in[1]);
    if (keys[n - 1].x == keys[n - 2].x)
        out[0] = {0, 0};
    else
        in[n - 1] = -1 * end(way(keys[n - 2], keys[n - 1]), out[n - 2]);
    for (size_t i = 0; i < n; ++i) {
        const double w = keys[i].weight;
        if (i > 0)
            in[i] = (1 - w) * in[i] + 0.33333 * w * way(keys[i], keys[i - 1]);
        if (i + 1 < n)
            out[i] = (1 - w) * out[i] + 0.33333 * w * way(keys[i], keys[i + 1]);
    }
    std::vector<Point> points;
    for (size_t i = 0; i < n; ++i) {
        const Point p = {keys[i].x, keys[i].y};
        if (i > 0)
            points.push_back(p + in[i]);
        points.push_back(p);
        if (i + 1 < n)
            points.push_back(p + out[i]);
    }
    return points;
}

double curveInside(const UT_Vector2Array& points, double x)
{
    int64_t j = 0;
    while (j < points.entries() - 4 && !(points(j).x <= x && x < points(j + 3).x))
        j += 3;
    double px[4], py[4];
    for (int k = 0; k < 4; ++k) {
        px[k] = points(j + k).x;
        py[k] = points(j + k).y;
    }
    const std::vector<double> roots = rootsNear01(px, x);
    double t = 0;
    for (const double root : roots)
        if (roots.size() == 1 || (root >= 0 && root <= 1))
            t = root;
    return bernstein(py, t);
}

} // namespace reference
