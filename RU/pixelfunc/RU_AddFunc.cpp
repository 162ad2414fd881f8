#include <RU/pixelfunc/RU_AddFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_AddFunc)

ru_Line RU_AddFunc::expression(int) const
{
    return {.add = add_};
}

void RU_AddFunc::getPixelShader(UT_String& body)
{
    addConstant("add", RE_GPU_FLOAT32, 1, &add_, 1);
    body = "value += VEC4(add);";
}
