#pragma once

#include <RU/kernel/ru_ConvertRows.h>

/// Takes the backing colour's part out of `count` codes of one component, in place; see RU_ChromaAdjust.h.
template <class T, bool FullRange>
struct ru_ChromaAdjustRow
{
    void (*adjust)(T* codes, const float* matte, int64_t count, ru_Work<T> backing, const ru_Range<T>& range);
};

struct ru_ChromaAdjustKernels :
#define RU_BASES(CODE, T, WHITE, NAME) ru_ChromaAdjustRow<T, true>, ru_ChromaAdjustRow<T, false>,
    PXL_FOR_EACH_FORMAT(RU_BASES)
#undef RU_BASES
        ru_KernelTable
{
};
