#include <RU/pixelfunc/RU_AbsFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_AbsFunc)

ru_Abs RU_AbsFunc::expression(int) const
{
    return {};
}

void RU_AbsFunc::getPixelShader(UT_String& body)
{
    body = "value = abs(value);\n";
}
