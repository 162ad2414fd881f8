#include <RU/pixelfunc/RU_QuantizeFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_QuantizeFunc)

ru_Quantize RU_QuantizeFunc::expression(int) const
{
    return {step_, offset_};
}

void RU_QuantizeFunc::getPixelShader(UT_String& body)
{
    addConstant("offset", RE_GPU_FLOAT32, 1, &offset_, 1);
    addConstant("step", RE_GPU_FLOAT32, 1, &step_, 1);
    body = "value = floor((value - VEC4(offset)) / VEC4(step)) * VEC4(step)+ VEC4(offset);";
}
