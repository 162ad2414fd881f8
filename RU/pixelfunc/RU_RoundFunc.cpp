#include <RU/pixelfunc/RU_RoundFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_RoundFunc)

ru_Round RU_RoundFunc::expression(int) const
{
    return {};
}

void RU_RoundFunc::getPixelShader(UT_String& body)
{
    body = "value = floor(value + VEC4(0.5f));\n";
}
