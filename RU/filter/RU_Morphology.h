#pragma once

#include <PXL/PXL_Format.h>
#include <RU/RU_API.h>

/// Grey-scale dilation and erosion of a plane: the largest or smallest value of a rectangle around each pixel,
/// first along rows, then along columns.
///
/// An even size counts as the next one away from 0 (2 as 3, -2 as -3), and 0 as 1. With k the size without
/// its sign, h = k / 2 and a line of n pixels, a pass writes
///
///     out[x] = extreme of in[x - h] to in[x + h]    for h <= x < h + m k, m = (n - 2 h) / k
///
/// with m rounded down: whole segments of k pixels. Everything else keeps what stood there, so a caller that
/// wants every pixel has a border of h pixels, and a segment more at the end.
///
/// Where `ysize` is 1, one pass goes along the rows, from `src` to `dst`. Else where `xsize` is 1, one goes
/// along the columns. Otherwise both do, through `tmp`: the second one reads there what the first one wrote,
/// and around it what stood there. In dilateErode() the sign of a size chooses: positive dilates, negative
/// erodes; a size of -1 still has its pass, which copies.
///
/// Shape: `xres` x `yres` pixels each, x fastest, rows without a gap. `tmp` is used by two passes alone. The
/// planes do not overlap, but `tmp` may be `dst`, and `src` may be `dst` unless the only pass goes along rows.
/// Units: pixels are compared, never converted. Floats and halves are ordered by value, -0 below 0, NaN beyond
/// the infinity of its sign: a NaN without sign is the largest of all, which dilates and does not survive an
/// erosion.
/// Result: nothing is written without `src` or `dst`, or without memory.
/// Threads: any number at once, on planes of their own.
/// Cost: independent of the size down columns, up to its logarithm to base 4 along rows. Memory for
/// |ysize| + 2 rows. With `dst` as `tmp`, planes that do not fit a cache take half the time.
class RU_API RU_Morphology
{
public:
#define RU_MORPHOLOGY(CODE, T, WHITE, NAME)                                                                  \
    static void dilate(const T* src, T* dst, T* tmp, int xres, int yres, int xsize, int ysize);              \
    static void erode(const T* src, T* dst, T* tmp, int xres, int yres, int xsize, int ysize);               \
    static void dilateErode(const T* src, T* dst, T* tmp, int xres, int yres, int xsize, int ysize);
    PXL_FOR_EACH_FORMAT(RU_MORPHOLOGY)
#undef RU_MORPHOLOGY
};
