#pragma once

#include <PXL/PXL_Format.h>
#include <RU/kernel/ru_Kernels.h>
#include <SYS/SYS_Half.h>

#include <cstdint>

/// What pixels are compared as: integers in the order of the values. Codes are their own keys; floats and
/// halves are ordered down to the bit, -0 below 0 and NaN beyond the infinity of its sign, so that an extreme
/// is the same in whichever order one looks for it.
template <class T>
struct ru_KeyOf
{
    using type = T;
};
template <>
struct ru_KeyOf<float>
{
    using type = int32_t;
};
template <>
struct ru_KeyOf<fpreal16>
{
    using type = int16_t;
};
template <class T>
using ru_Key = typename ru_KeyOf<T>::type;

/// Rows of one width that lie one after the other.
template <class T>
struct ru_Rows
{
    T* first;
    int64_t stride;
};

/// What a window of `size` rows down the columns remembers; see ru_ColumnWindow.
template <class T>
struct ru_ColumnBlocks
{
    ru_Key<T>* beginning; ///< extremes of the rows of this block
    ru_Key<T>* ends; ///< `size` rows: of this block as they come, then of the one before, extremes to its end
    ru_Key<T>* none; ///< what no extreme is less extreme than; lies behind `ends`
    int64_t size;
    int64_t width;
    int64_t stride; ///< of all these
};

/// Extremes of one kind, maxima or minima. Rows that are written may be those that are read.
template <class T>
struct ru_ExtremeRow
{
    /// to[i]: of from[i], from[i + wide] and so on up to from[i + last], which is at most the fourth of them.
    void (*along)(const T* from, int64_t wide, int64_t last, T* to, int64_t count);
    /// to[i]: of a[i] and b[i].
    void (*both)(const T* a, const T* b, T* to, int64_t count);
    /// Takes rows as rows `at` to `at + count - 1` of a block, and gives the extremes of the window that ends
    /// with each.
    void (*down)(const ru_ColumnBlocks<T>& blocks, int64_t at, ru_Rows<const T> from, ru_Rows<T> to,
                 int64_t count);
};

template <class T>
struct ru_ExtremesOf
{
    ru_ExtremeRow<T> maxima, minima;
};

struct ru_ExtremeKernels :
#define RU_BASES(CODE, T, WHITE, NAME) ru_ExtremesOf<T>,
    PXL_FOR_EACH_FORMAT(RU_BASES)
#undef RU_BASES
        ru_KernelTable
{
};
