#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Where the columns and rows of samples of an image lie, as they are compared with edges. Places are sums of floats,
/// so they are a little off an even spacing, but ascend.
struct ru_FillGrid
{
    int64_t width = 0, height = 0; ///< pixels
    int nx = 1, ny = 1;            ///< samples of a pixel
    double lead = 0.0;             ///< of the first sample, in samples
    double drift = 0.0;            ///< the most that a sample is off, in samples
    std::vector<double> x, y;      ///< and a group of rows more in y

    /// nx x ny samples inside each pixel. All who need one at a time share it.
    static std::shared_ptr<const ru_FillGrid> samples(int64_t width, int64_t height, int nx, int ny);
    /// The corners of pixels: one more than pixels in each direction.
    static std::shared_ptr<const ru_FillGrid> corners(int64_t width, int64_t height);

    int64_t rows() const { return ny * height + (lead == 0.0 ? 1 : 0); }
    /// The first row that lies at `place` or behind it.
    int64_t firstRowFrom(double place) const;
};

/// A rectangle of pixels, and its samples in a grid.
struct ru_FillBlock
{
    ru_FillBlock(const ru_FillGrid& grid, int64_t left, int64_t top, int64_t w, int64_t h)
        : x(left), y(top), width(w), height(h), columns(grid.nx * w + (grid.lead == 0.0 ? 1 : 0)),
          rows(grid.ny * h + (grid.lead == 0.0 ? 1 : 0)), xs(grid.x.data() + grid.nx * left),
          ys(grid.y.data() + grid.ny * top)
    {
    }

    int64_t x, y, width, height;
    int64_t columns, rows;
    const double *xs, *ys;
};
