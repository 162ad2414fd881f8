#pragma once

#include <RU/kernel/ru_Kernels.h>

#include <cstdint>

/// The most columns and rows that a feather reaches to each side.
inline constexpr int64_t ru_featherReach = 1024;

/// The quarter of a feather's table with x, y >= 0, row by row.
template <class Work>
struct ru_FeatherTable
{
    const Work* weights;
    const Work* tails; ///< the largest weight from there to the end of the row
    int64_t reachX, reachY;
};

/// Rows of feathers. They work block by block: rows of what spreads reach over the last whole block.
template <class Work>
struct ru_FeatherRow
{
    int64_t block; ///< pixels
    /// From `count` values: what spreads, that is what is above 0, else -infinity, filled up to `padded`; and the
    /// largest of it in reach of each block.
    void (*prepare)(const Work* values, int64_t count, Work* spreading, int64_t padded, int64_t reachX,
                    Work* largest, int64_t blocks);
    /// `count` pixels from 2 reachY + 1 rows. The one in the middle has `own` values, without the border.
    void (*spread)(const ru_FeatherTable<Work>& table, const Work* const* spreading,
                   const Work* const* largest, const Work* own, Work* out, int64_t count);
};

struct ru_FeatherKernels : ru_FeatherRow<float>, ru_FeatherRow<double>, ru_KernelTable
{
};
