#include <RU/kernel/ru_OneNaN.h>
#include <RU/pixelfunc/ru_Expressions.h>

namespace RU_ISA {
namespace {

template <class Expression>
RU_INLINE void runAll(const Expression& expression, const float* in, float* out, int64_t count)
{
    RU_EACH_ALONE
    for (int64_t i = 0; i < count; ++i)
        out[i] = ru_oneNaN(expression(in[i]));
}

/// Whether a segment goes one way or the other: a value's result is the same.
template <class Expression>
RU_INLINE void runSegment(const Expression& expression, const float* in, float* out, int64_t count)
{
    int others = 0;
    for (int64_t i = 0; i < count; ++i)
        others |= int(!expression.ordinary(in[i]));
    if (others != 0)
        return runAll(expression, in, out, count);
    RU_EACH_ALONE
    for (int64_t i = 0; i < count; ++i)
        out[i] = ru_oneNaN(expression.ofOrdinary(in[i]));
}

/// Rows share no memory with what an expression points to.
template <class Expression>
void runRow(const Expression& given, const float* in, float* out, int64_t count)
{
    const Expression expression = given; // a copy: nothing the loop stores can change it
    if constexpr (requires { expression.ofOrdinary(0.0f); }) {
        constexpr int64_t segment = 256;
        for (int64_t i = 0; i < count; i += segment)
            runSegment(expression, in + i, out + i, count - i < segment ? count - i : segment);
    } else {
        runAll(expression, in, out, count);
    }
}

} // namespace

extern constinit const ru_ExpressionKernels ru_expressionRows = {
#define RU_ROW(EXPRESSION) {runRow<EXPRESSION>},
    RU_FOR_EACH_EXPRESSION(RU_ROW)
#undef RU_ROW
        {RU_COMPILED_FOR}};

} // namespace RU_ISA
