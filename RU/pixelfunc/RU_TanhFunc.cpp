#include <RU/pixelfunc/RU_TanhFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_TanhFunc)

ru_Tanh RU_TanhFunc::expression(int) const
{
    return {scale_};
}

void RU_TanhFunc::getPixelShader(UT_String& body)
{
    body = "value = (exp(VEC4(2.0f) * value) - VEC4(1.0f)) /\n"
           "        (exp(VEC4(2.0f) * value) + VEC4(1.0f));\n";
}
