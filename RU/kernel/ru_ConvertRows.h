#pragma once

#include <PXL/PXL_Format.h>
#include <RU/kernel/ru_Kernels.h>

#include <cstdint>

/// The type in which pixels of element type T are computed.
template <class T>
struct ru_WorkOf
{
    using type = float;
};
template <>
struct ru_WorkOf<unsigned int>
{
    using type = double; // a float has too few digits for 32-bit codes
};
template <class T>
using ru_Work = typename ru_WorkOf<T>::type;

/// The codes of 0 and 1, as numbers to compute with; see RU_Algorithm.h. Not used for float and half.
template <class T>
struct ru_Range
{
    ru_Work<T> scale; ///< 1 / span, or 1 where that is 0
    ru_Work<T> span;  ///< white - black
    ru_Work<T> black;
};

/// Work that takes several loops over a row goes piece by piece, so that what is in between stays in the nearest
/// cache. A piece has this many values.
inline constexpr int64_t ru_chunk = 512;

/// Rows of codes to rows of values and back. Source and target do not overlap.
template <class T, bool FullRange, class Value>
struct ru_RowConversion
{
    void (*read)(const T* codes, Value* values, int64_t count, const ru_Range<T>& range);
    void (*write)(const Value* values, T* codes, int64_t count, const ru_Range<T>& range);
};

/// The conversions of every format, and those of 32-bit codes to float, in which pixel functions compute.
struct ru_ConvertKernels :
#define RU_BASES(CODE, T, WHITE, NAME)                                                                       \
    ru_RowConversion<T, true, ru_Work<T>>, ru_RowConversion<T, false, ru_Work<T>>,
    PXL_FOR_EACH_FORMAT(RU_BASES)
#undef RU_BASES
        ru_RowConversion<unsigned int, true, float>,
    ru_RowConversion<unsigned int, false, float>,
    ru_KernelTable
{
};
