#include <RU/pixelfunc/RU_RaiseFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_RaiseFunc)

ru_Raise RU_RaiseFunc::expression(int) const
{
    return {base_};
}

void RU_RaiseFunc::getPixelShader(UT_String& body)
{
    addConstant("base", RE_GPU_FLOAT32, 1, &base_, 1);
    body = "value = sign(VEC4(base)) * pow(abs(VEC4(base)), value);\n";
}
