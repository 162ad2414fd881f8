#pragma once

#include <RU/kernel/ru_Kernels.h>
#include <SYS/SYS_Half.h>

#include <cstdint>

/// An edge along rows of samples: it crosses the one at y in front of column y slope + bias - 1, rounded down.
struct ru_FillBoundary
{
    double slope, bias;
};

struct ru_ColumnLimits
{
    double low, high; ///< the first column, and the one behind the last
    double slack; ///< an edge so near to a sample, in columns, has to be compared with it itself; at most 0.5
};

/// The most samples of a pixel: a mask has a bit for each.
inline constexpr int ru_mostSamples = 64;
/// The most columns of a block.
inline constexpr int64_t ru_mostColumns = 32768;
/// Rows are crossed so many at a time; arrays reach up to one group less 1 over their end.
inline constexpr int64_t ru_rowGroup = 8;

/// Coverage of a block of pixels: a mask of its samples for each pixel that is touched, bit j nx + i for column i of
/// row j; and pixels that are full, where masks do not count. One more mask than `words` * 64 for each row is there.
struct ru_Coverage
{
    uint64_t* masks;
    uint64_t* touched; ///< bits, `words` for a row of pixels
    uint64_t* full;
    int64_t words;
    int nx, ny; ///< samples of a pixel
};

/// Replaces codes up to `last` by `raised`.
template <class T>
struct ru_RaiseRow
{
    void (*raise)(T* codes, int64_t count, T last, T raised);
};

struct ru_FillKernels : ru_RaiseRow<unsigned char>,
                        ru_RaiseRow<unsigned short>,
                        ru_RaiseRow<unsigned int>,
                        ru_RaiseRow<float>,
                        ru_RaiseRow<fpreal16>,
                        ru_KernelTable
{
    /// The columns in front of which an edge crosses rows at `y`, and for each group of rows a bit for each that is
    /// in doubt. The result is 0 when none is.
    int (*cross)(const ru_FillBoundary& edge, const ru_ColumnLimits& limits, const double* y, int64_t count,
                 uint16_t* columns, uint8_t* doubts);
    /// The columns of a triangle in rows at `y`, from `begin` to before `end`, between the first and third boundary
    /// and the second one, which is its end or its beginning. Else as cross().
    int (*span)(const ru_FillBoundary (&edges)[3], bool secondIsEnd, const ru_ColumnLimits& limits,
                const double* y, int64_t count, uint16_t* begin, uint16_t* end, uint8_t* doubts);
    /// Adds the columns from `begin` to before `end` of `count` * ny rows of samples, from pixel row `row` on.
    void (*cover)(const ru_Coverage& coverage, int64_t row, int64_t count, const uint16_t* begin,
                  const uint16_t* end);
};
