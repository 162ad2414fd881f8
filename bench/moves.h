#pragma once

#include <RU/kernel/ru_Kernels.h>

#include <cstdint>

namespace bench {

using Word [[gnu::may_alias]] = uint64_t;

/// Combines each word of `to` with one of `from` and none or some of `third`; `count` is a multiple of 8.
using Move = void (*)(Word* to, const Word* from, const Word* third, int64_t count);

struct MoveKernels : ru_KernelTable
{
    Move with[5]; ///< by the words of `third` for each: 0, 1, 2 or 4
};

RU_KERNELS(MoveKernels, moveKernels)

} // namespace bench
