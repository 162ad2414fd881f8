#include <RU/pixelfunc/RU_NegateFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_NegateFunc)

ru_Line RU_NegateFunc::expression(int) const
{
    return {.mult = -1.0f};
}

void RU_NegateFunc::getPixelShader(UT_String& body)
{
    body = "value = -value;\n";
}
