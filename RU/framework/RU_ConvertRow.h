#pragma once

#include <RU/RU_API.h>
#include <TIL/TIL_Plane.h>

#include <cstdint>

/// Converts a row of elements from the format and range of one plane to those of another one, for hosts that
/// keep images in other formats than they compute in. Codes are read and written as algorithms do it; see
/// RU_Algorithm.
///
/// Shape: `count` elements without a gap, aligned to their size, at `in` and at `out`, which do not overlap.
/// Of the planes only format and black and white points count.
/// Units: a row of the same format and range is copied, bit by bit. Values pass in double where one of the
/// two formats is uint32, otherwise in float.
/// Result: 1, or 0 for an unknown format; then nothing is written.
/// Threads: any number at once.
/// Cost: one pass over input and output.
RU_API int RUconvertRow(const TIL_Plane& from, const void* in, const TIL_Plane& to, void* out, int64_t count);
