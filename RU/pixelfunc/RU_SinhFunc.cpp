#include <RU/pixelfunc/RU_SinhFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_SinhFunc)

ru_Sinh RU_SinhFunc::expression(int) const
{
    return {scale_};
}

void RU_SinhFunc::getPixelShader(UT_String& body)
{
    addConstant("scale", RE_GPU_FLOAT32, 1, &scale_, 1);
    body = "value = (exp( value*VEC4(scale)) -\n"
           "              exp(-value*VEC4(scale)))*VEC4(0.5f);\n";
}
