#include <RU/pixelfunc/RU_ScaleFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_ScaleFunc)

ru_Scale RU_ScaleFunc::expression(int) const
{
    return {scale_, pivot_};
}

void RU_ScaleFunc::getPixelShader(UT_String& body)
{
    addConstant("scale", RE_GPU_FLOAT32, 1, &scale_, 1);
    addConstant("pivot", RE_GPU_FLOAT32, 1, &pivot_, 1);
    body = "value = (value - VEC4(pivot)) * VEC4(scale) + VEC4(pivot);";
}
