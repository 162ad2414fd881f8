#include <RU/pixelfunc/ru_Expressions.h>

namespace RU_ISA {

template <class Expression>
void runRow(const Expression& given, float* values, int64_t count)
{
    const Expression expression = given; // a copy: nothing the loop stores can change it
    for (int64_t i = 0; i < count; ++i)
        values[i] = expression(values[i]);
}

extern constinit const ru_ExpressionKernels ru_expressionRows = {
#define RU_ROW(EXPRESSION) {runRow<EXPRESSION>},
    RU_FOR_EACH_EXPRESSION(RU_ROW)
#undef RU_ROW
        {RU_COMPILED_FOR}};

} // namespace RU_ISA
