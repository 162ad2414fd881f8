#include <RU/pixelfunc/RU_FloorFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_FloorFunc)

ru_Floor RU_FloorFunc::expression(int) const
{
    return {};
}

void RU_FloorFunc::getPixelShader(UT_String& body)
{
    body = "value = floor(value);\n";
}
