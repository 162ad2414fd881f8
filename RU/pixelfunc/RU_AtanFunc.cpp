#include <RU/pixelfunc/RU_AtanFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_AtanFunc)

ru_Atan RU_AtanFunc::expression(int) const
{
    return {scale_};
}

void RU_AtanFunc::getPixelShader(UT_String& body)
{
    addConstant("scale", RE_GPU_FLOAT32, 1, &scale_, 1);
    body = "value = atan(value *VEC4(scale));\n";
}
