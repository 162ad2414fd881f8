#include <UT/UT_Convex.h>
#include <UT/ut_ConvexOutline.h>

#include <algorithm>
#include <cmath>

namespace {

using Outline = std::vector<UT_Vector2>;

bool isFinite(const Outline& outline)
{
    return std::all_of(outline.begin(), outline.end(),
                       [](UT_Vector2 p) { return std::isfinite(p.x) && std::isfinite(p.y); });
}

struct Bounds
{
    double x, y;   ///< of the lower left corner
    double extent; ///< the larger of width and height
};

Bounds boundsOf(const Outline& outline)
{
    const auto [left, right] = std::minmax_element(outline.begin(), outline.end(),
                                                   [](UT_Vector2 a, UT_Vector2 b) { return a.x < b.x; });
    const auto [low, high] = std::minmax_element(outline.begin(), outline.end(),
                                                 [](UT_Vector2 a, UT_Vector2 b) { return a.y < b.y; });
    return {left->x, low->y, std::max(double(right->x) - left->x, double(high->y) - low->y)};
}

/// Whether the grid is fine enough for most edges. One vertex that is far off takes its resolution from all others.
bool gridSuits(const Outline& outline, double extent)
{
    std::vector<double> lengths;
    lengths.reserve(outline.size());
    UT_Vector2 before = outline.back();
    for (const UT_Vector2 p : outline) {
        const double length = std::hypot(double(p.x) - before.x, double(p.y) - before.y);
        if (length > 0.0)
            lengths.push_back(length);
        before = p;
    }
    const auto middle = lengths.begin() + static_cast<int64_t>(lengths.size() / 2);
    std::nth_element(lengths.begin(), middle, lengths.end());
    return *middle > 0x1p-16 * extent;
}

std::vector<ut_GridPoint> onGrid(const Outline& outline, const Bounds& bounds)
{
    // A power of two keeps vertices that lie on a grid of their own in line.
    const double scale = std::ldexp(0.5 * ut_gridSize, -std::ilogb(bounds.extent));
    std::vector<ut_GridPoint> points;
    points.reserve(outline.size());
    for (size_t i = 0; i < outline.size(); ++i)
        points.push_back({std::llround((outline[i].x - bounds.x) * scale),
                          std::llround((outline[i].y - bounds.y) * scale), static_cast<int64_t>(i)});
    return points;
}

bool runsClockwise(const Outline& outline)
{
    double area = 0.0;
    const UT_Vector2 origin = outline.front();
    for (size_t i = 2; i < outline.size(); ++i) {
        const UT_Vector2 a = outline[i - 1], b = outline[i];
        area += (double(a.x) - origin.x) * (double(b.y) - origin.y) -
                (double(b.x) - origin.x) * (double(a.y) - origin.y);
    }
    return area < 0.0;
}

} // namespace

std::vector<ut_GridPoint> ut_turningPoints(const std::vector<ut_GridPoint>& outline)
{
    const size_t n = outline.size();
    std::vector<size_t> next(n), before(n);
    for (size_t i = 0; i < n; ++i) {
        next[i] = i + 1 == n ? 0 : i + 1;
        before[i] = i == 0 ? n - 1 : i - 1;
    }
    size_t left = n, at = 0;
    for (size_t seen = 0; left > 2 && seen < left;) {
        if (ut_turn(outline[before[at]], outline[at], outline[next[at]]) != 0) {
            ++seen;
            at = next[at];
            continue;
        }
        next[before[at]] = next[at];
        before[next[at]] = before[at];
        at = before[at]; // whose turn is another now
        seen -= seen > 0 ? 1 : 0;
        --left;
    }
    std::vector<ut_GridPoint> turning;
    if (left > 2)
        for (size_t i = 0; i < left; ++i, at = next[at])
            turning.push_back(outline[at]);
    return turning;
}

void UT_Convex::tell(const UT_ConvexCorner* corners, int64_t count, int64_t most)
{
    const int64_t pieces = count <= most ? 1 : count - 2;
    const int64_t size = count <= most ? count : 3;
    for (int64_t piece = 0; piece < pieces; ++piece) {
        beginPiece();
        for (int64_t i = 0; i < size; ++i)
            addVertex(corners[i == 0 ? 0 : piece + i]);
        endPiece();
    }
}

void UT_Convex::convex(int mostVertices)
{
    const int64_t most = std::max(mostVertices, 3);
    Outline outline;
    for (int64_t i = 0, n = vertexCount(); i < n; ++i)
        outline.push_back(vertexPosition(i));
    if (outline.size() < 3 || !isFinite(outline))
        return;
    const Bounds bounds = boundsOf(outline);
    if (bounds.extent == 0.0)
        return;
    if (gridSuits(outline, bounds.extent)) {
        const std::vector<ut_GridPoint> points = ut_turningPoints(onGrid(outline, bounds));
        if (points.empty())
            return;
        if (ut_isSimple(points)) {
            for (const ut_Triangle& triangle : ut_clipEars(points)) {
                UT_ConvexCorner corners[3];
                for (size_t i = 0; i < 3; ++i) {
                    const int64_t index = points[static_cast<size_t>(triangle[i])].index;
                    const UT_Vector2 p = outline[static_cast<size_t>(index)];
                    corners[i] = {p.x, p.y, index, 0.0f};
                }
                tell(corners, 3, most);
            }
            return;
        }
    }
    const bool clockwise = runsClockwise(outline);
    for (ut_Trapezoid piece : ut_sweepTrapezoids(outline)) {
        if (clockwise)
            std::reverse(piece.corners.begin(), piece.corners.begin() + piece.count);
        tell(piece.corners.data(), piece.count, most);
    }
}
