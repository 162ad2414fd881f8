#include <RU/pixelfunc/RU_CeilFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_CeilFunc)

ru_Ceil RU_CeilFunc::expression(int) const
{
    return {};
}

void RU_CeilFunc::getPixelShader(UT_String& body)
{
    body = "value = ceil(value);\n";
}
