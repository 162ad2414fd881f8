#include <RU/pixelfunc/RU_MultFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_MultFunc)

ru_Line RU_MultFunc::expression(int) const
{
    return {.mult = mult_};
}

void RU_MultFunc::getPixelShader(UT_String& body)
{
    addConstant("mult", RE_GPU_FLOAT32, 1, &mult_, 1);
    body = "value *= VEC4(mult);";
}
