#include <RU/pixelfunc/RU_PowerFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_PowerFunc)

ru_Power RU_PowerFunc::expression(int) const
{
    return {expon_};
}

void RU_PowerFunc::getPixelShader(UT_String& body)
{
    addConstant("expon", RE_GPU_FLOAT32, 1, &expon_, 1);
    body = "value = sign(value) * pow(abs(value), VEC4(expon));\n";
}
