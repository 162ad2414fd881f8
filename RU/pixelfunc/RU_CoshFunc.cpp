#include <RU/pixelfunc/RU_CoshFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_CoshFunc)

ru_Cosh RU_CoshFunc::expression(int) const
{
    return {scale_};
}

void RU_CoshFunc::getPixelShader(UT_String& body)
{
    addConstant("scale", RE_GPU_FLOAT32, 1, &scale_, 1);
    body = "value = (exp( value*VEC4(scale)) +\n"
           "              exp(-value*VEC4(scale)))*VEC4(0.5f);\n";
}
