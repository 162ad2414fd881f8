#include <RU/pixelfunc/RU_SinFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_SinFunc)

ru_Sin RU_SinFunc::expression(int) const
{
    return {scale_, shift_};
}

void RU_SinFunc::getPixelShader(UT_String& body)
{
    addConstant("scale", RE_GPU_FLOAT32, 1, &scale_, 1);
    addConstant("shift", RE_GPU_FLOAT32, 1, &shift_, 1);
    body = "value = sin(value * VEC4(scale) + VEC4(shift));\n";
}
