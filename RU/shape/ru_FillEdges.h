#pragma once

#include <RU/shape/ru_FillGrid.h>
#include <RU/shape/ru_FillRows.h>

#include <array>
#include <cstdint>
#include <vector>

struct ru_FillPoint
{
    float x = 0.0f, y = 0.0f;

    friend bool operator==(const ru_FillPoint&, const ru_FillPoint&) = default;
    /// From the top, then from the left: the order in which edges run, so that those of neighbours are the same line.
    friend bool operator<(const ru_FillPoint& p, const ru_FillPoint& q)
    {
        return p.y < q.y || (p.y == q.y && p.x < q.x);
    }
};

/// One side of a shape, from its upper end to its lower one. A sample is inside where (a x + b y) + c <= 0, in double
/// and in this order; rounding is monotone, so along a row these are all up to a column or all from one on.
struct ru_FillEdge
{
    ru_FillEdge() = default;
    ru_FillEdge(const ru_FillPoint& from, const ru_FillPoint& to, bool insideIsLeft);

    bool isLevel() const { return a == 0.0; }
    bool contains(double x, double y) const { return (a * x + b * y) + c <= 0.0; }
    /// The boundary in columns of a block, and how near to a sample it is in doubt. Not for level edges.
    ru_FillBoundary boundary(const ru_FillGrid& grid, const ru_FillBlock& block) const;
    double slack(const ru_FillGrid& grid) const;
    /// The first column that is inside, or where the inside is on the left the first one that is not; `guess` is
    /// near it where slack() is less than a quarter of a column.
    int64_t firstColumn(const ru_FillBlock& block, double y, int64_t guess, double slack) const;

    double a = 0.0, b = 0.0, c = 0.0;
    bool left = false; ///< where the inside is, seen along a row
};

struct ru_FillTriangle
{
    std::array<ru_FillPoint, 3> corners;
    int quad = -1; ///< the feather quad that it is a part of
};

/// The sides of a triangle: of its corners in order the first and the second, the first and the third, the second
/// and the third.
struct ru_TriangleEdges
{
    explicit ru_TriangleEdges(const ru_FillTriangle& triangle);

    std::array<ru_FillPoint, 3> corners; ///< in order
    std::array<ru_FillEdge, 3> edges;
    bool valid; ///< it has an area, and all places are finite
};

/// The columns of rows of samples that a triangle has in a block.
class ru_TriangleSpans
{
public:
    /// Finds them. False when there are none, for sure.
    bool find(const ru_FillGrid& grid, const ru_FillBlock& block, const ru_TriangleEdges& triangle);

    int64_t firstRow() const { return first_; } ///< of pixels in the block
    int64_t pixelRows() const { return count_; }
    const uint16_t* begin() const { return begin_.data(); }
    const uint16_t* end() const { return end_.data(); }

private:
    void limit(const ru_FillGrid& grid, const ru_FillBlock& block, const ru_TriangleEdges& triangle);
    void repair(const ru_FillGrid& grid, const ru_FillBlock& block, const ru_TriangleEdges& triangle,
                int64_t row);
    void repairAround(const ru_FillGrid& grid, const ru_FillBlock& block, const ru_TriangleEdges& triangle,
                      float place);

    int64_t first_ = 0, count_ = 0; ///< rows of pixels
    int64_t low_ = 0, high_ = 0;    ///< columns of samples that it may have
    double slack_ = 0.0;
    std::vector<uint16_t> begin_, end_;
    std::vector<uint8_t> doubts_;
};
