#include <RU/kernel/ru_OneNaN.h>
#include <RU/pixelfunc/ru_Expressions.h>

namespace RU_ISA {
namespace {

template <class Expression>
RU_INLINE void runAll(const Expression& expression, float* values, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        values[i] = ru_oneNaN(expression(values[i]));
}

/// Whether a stretch goes one way or the other: a value's result is the same.
template <class Expression>
RU_INLINE void runStretch(const Expression& expression, float* values, int64_t count)
{
    int others = 0;
    for (int64_t i = 0; i < count; ++i)
        others |= int(!expression.ordinary(values[i]));
    if (others != 0)
        return runAll(expression, values, count);
    for (int64_t i = 0; i < count; ++i)
        values[i] = ru_oneNaN(expression.ofOrdinary(values[i]));
}

/// A row shares no memory with what an expression points to.
template <class Expression>
void runRow(const Expression& given, float* __restrict values, int64_t count)
{
    const Expression expression = given; // a copy: nothing the loop stores can change it
    if constexpr (requires { expression.ofOrdinary(0.0f); }) {
        constexpr int64_t stretch = 256;
        for (int64_t i = 0; i < count; i += stretch)
            runStretch(expression, values + i, count - i < stretch ? count - i : stretch);
    } else {
        runAll(expression, values, count);
    }
}

} // namespace

extern constinit const ru_ExpressionKernels ru_expressionRows = {
#define RU_ROW(EXPRESSION) {runRow<EXPRESSION>},
    RU_FOR_EACH_EXPRESSION(RU_ROW)
#undef RU_ROW
        {RU_COMPILED_FOR}};

} // namespace RU_ISA
