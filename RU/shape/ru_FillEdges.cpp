#include <RU/shape/ru_FillEdges.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double far = 1e6;    ///< a column beyond all blocks
constexpr double vague = 0.25; ///< boundaries that are off by as much say nothing

/// The pixel in which a place lies, from the block's first one, limited to one beside the block.
int64_t pixelOf(float place, int64_t pixels, int64_t first, int64_t count)
{
    const double at = std::floor(double{place} * static_cast<double>(pixels)) - static_cast<double>(first);
    return static_cast<int64_t>(std::clamp(at, -1.0, static_cast<double>(count)));
}

} // namespace

ru_FillEdge::ru_FillEdge(const ru_FillPoint& from, const ru_FillPoint& to, bool insideIsLeft)
    : a(double{to.y} - double{from.y}), b(double{from.x} - double{to.x}), left(insideIsLeft)
{
    c = -(a * double{from.x} + b * double{from.y});
    if (!left) {
        a = -a;
        b = -b;
        c = -c;
    }
}

ru_FillBoundary ru_FillEdge::boundary(const ru_FillGrid& grid, const ru_FillBlock& block) const
{
    const double scale = -static_cast<double>(grid.nx * grid.width) / a;
    return {b * scale, c * scale + (2.0 - grid.lead - static_cast<double>(grid.nx * block.x))};
}

double ru_FillEdge::slack(const ru_FillGrid& grid) const
{
    const double columns = static_cast<double>(grid.nx * grid.width);
    return grid.drift + 2e-15 * columns * (1.0 + std::abs(b / a) + std::abs(c / a));
}

int64_t ru_FillEdge::firstColumn(const ru_FillBlock& block, double y, int64_t guess, double slack) const
{
    const double by = b * y;
    const auto before = [&](int64_t column) { return ((a * block.xs[column] + by) + c <= 0.0) == left; };
    if (isLevel())
        return before(0) ? block.columns : 0;
    if (slack >= vague) {
        int64_t low = 0, high = block.columns;
        while (low < high) {
            const int64_t middle = (low + high) / 2;
            if (before(middle))
                low = middle + 1;
            else
                high = middle;
        }
        return low;
    }
    int64_t column = std::clamp<int64_t>(guess, 0, block.columns);
    while (column < block.columns && before(column))
        ++column;
    while (column > 0 && !before(column - 1))
        --column;
    return column;
}

ru_TriangleEdges::ru_TriangleEdges(const ru_FillTriangle& triangle) : corners(triangle.corners)
{
    std::sort(corners.begin(), corners.end());
    const auto& [v0, v1, v2] = corners;
    const double cross =
        (double{v1.x} - v0.x) * (double{v2.y} - v0.y) - (double{v1.y} - v0.y) * (double{v2.x} - v0.x);
    valid = cross != 0.0 && std::isfinite(cross);
    const bool secondIsRight = cross > 0.0; // of the line from the first to the third
    edges = {ru_FillEdge(v0, v1, secondIsRight), ru_FillEdge(v0, v2, !secondIsRight),
             ru_FillEdge(v1, v2, secondIsRight)};
}

bool ru_TriangleSpans::find(const ru_FillGrid& grid, const ru_FillBlock& block,
                            const ru_TriangleEdges& triangle)
{
    limit(grid, block, triangle);
    if (count_ <= 0)
        return false;
    ru_FillBoundary boundaries[3];
    slack_ = 0.0;
    for (size_t e = 0; e < 3; ++e) {
        const ru_FillEdge& edge = triangle.edges[e];
        boundaries[e] =
            edge.isLevel() ? ru_FillBoundary{0.0, edge.left ? far : -far} : edge.boundary(grid, block);
        if (!edge.isLevel())
            slack_ = std::max(slack_, edge.slack(grid));
    }
    const int64_t first = first_ * grid.ny, rows = count_ * grid.ny;
    begin_.resize(static_cast<size_t>(block.rows + ru_rowGroup));
    end_.resize(begin_.size());
    doubts_.resize(begin_.size());
    const ru_ColumnLimits limits = {static_cast<double>(low_), static_cast<double>(high_),
                                    std::min(slack_, 0.5)};
    if (ru_fillRows().span(boundaries, triangle.edges[1].left, limits, block.ys + first, rows, begin_.data(),
                           end_.data(), doubts_.data()) != 0)
        for (int64_t row = 0; row < rows; ++row)
            if ((doubts_[static_cast<size_t>(row / ru_rowGroup)] >> (row % ru_rowGroup) & 1) != 0)
                repair(grid, block, triangle, row);
    if (triangle.edges[0].isLevel())
        repairAround(grid, block, triangle, triangle.corners[0].y);
    if (triangle.edges[2].isLevel())
        repairAround(grid, block, triangle, triangle.corners[2].y);
    return true;
}

/// The pixels around the triangle, in rows without those where an edge leaves nothing of the block.
void ru_TriangleSpans::limit(const ru_FillGrid& grid, const ru_FillBlock& block,
                             const ru_TriangleEdges& triangle)
{
    const auto& corners = triangle.corners;
    const auto [leftmost, rightmost] = std::minmax({corners[0].x, corners[1].x, corners[2].x});
    const int64_t spare = grid.lead == 0.0 ? 1 : 0; // a corner may lie on the edge of a pixel beside
    count_ = 0;
    low_ = grid.nx * std::max<int64_t>(pixelOf(leftmost, grid.width, block.x, block.width) - spare, 0);
    high_ =
        std::min(grid.nx * (pixelOf(rightmost, grid.width, block.x, block.width) + 1 + spare), block.columns);
    if (low_ >= high_)
        return;
    int64_t from = std::max<int64_t>(0, pixelOf(corners[0].y, grid.height, block.y, block.height) - spare);
    int64_t last =
        std::min(block.rows / grid.ny - 1, pixelOf(corners[2].y, grid.height, block.y, block.height) + spare);
    for (const ru_FillEdge& edge : triangle.edges) {
        if (edge.isLevel() || edge.slack(grid) >= vague)
            continue;
        const ru_FillBoundary line = edge.boundary(grid, block);
        const double bound = edge.left ? static_cast<double>(low_ - 1) : static_cast<double>(high_ + 3);
        const double row = (bound - line.bias) / line.slope * static_cast<double>(grid.height) -
                           static_cast<double>(block.y);
        if (!(std::abs(row) < far))
            continue;
        if ((line.slope < 0.0) == edge.left)
            last = std::min(last, static_cast<int64_t>(std::floor(row)) + 1 + spare);
        else
            from = std::max(from, static_cast<int64_t>(std::floor(row)) - 1 - spare);
    }
    first_ = from;
    count_ = last - from + 1;
}

/// A row again, by the edges themselves.
void ru_TriangleSpans::repair(const ru_FillGrid& grid, const ru_FillBlock& block,
                              const ru_TriangleEdges& triangle, int64_t row)
{
    const double y = block.ys[first_ * grid.ny + row];
    int64_t begin = low_, end = high_;
    for (const ru_FillEdge& edge : triangle.edges) {
        double guess = 0.0;
        if (!edge.isLevel()) {
            const ru_FillBoundary line = edge.boundary(grid, block);
            guess = std::clamp(y * line.slope + line.bias - 1.0, 0.0, static_cast<double>(block.columns));
        }
        const int64_t column = edge.firstColumn(block, y, static_cast<int64_t>(guess), slack_);
        if (edge.left)
            end = std::min(end, column);
        else
            begin = std::max(begin, column);
    }
    begin_[static_cast<size_t>(row)] = static_cast<uint16_t>(begin);
    end_[static_cast<size_t>(row)] = static_cast<uint16_t>(end);
}

/// Rows of the pixels where a level edge lies, which has no boundary.
void ru_TriangleSpans::repairAround(const ru_FillGrid& grid, const ru_FillBlock& block,
                                    const ru_TriangleEdges& triangle, float place)
{
    const int64_t spare = grid.lead == 0.0 ? 1 : 0;
    const int64_t pixel = pixelOf(place, grid.height, block.y, block.height) - first_;
    const int64_t to = std::min(pixel + spare + 1, count_) * grid.ny;
    for (int64_t row = std::max<int64_t>(pixel - spare, 0) * grid.ny; row < to; ++row)
        repair(grid, block, triangle, row);
}
