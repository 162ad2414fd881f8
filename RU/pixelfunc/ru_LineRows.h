#pragma once

#include <RU/kernel/ru_Power.h>
#include <RU/pixelfunc/ru_Expressions.h>

/// Lines and limits, one after the other, as one pass over a row; they may follow a power.
struct ru_Lines
{
    const ru_Line* first = nullptr;
    int64_t count = 0;
};

template <class Power>
struct ru_LinesAfter
{
    Power power;
    ru_Lines lines;
};

using ru_LinesAfterGamma = ru_LinesAfter<ru_Gamma>;
using ru_LinesAfterPower = ru_LinesAfter<ru_Power>;

/// The list that the kernels are made from.
#define RU_FOR_EACH_LINE_ROW(X)                                                                              \
    X(ru_Lines)                                                                                              \
    X(ru_LinesAfterGamma)                                                                                    \
    X(ru_LinesAfterPower)

struct ru_LineKernels :
#define RU_BASE(ROW) ru_RowKernel<ROW>,
    RU_FOR_EACH_LINE_ROW(RU_BASE)
#undef RU_BASE
        ru_KernelTable
{
};
