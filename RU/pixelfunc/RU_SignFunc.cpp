#include <RU/pixelfunc/RU_SignFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_SignFunc)

ru_Sign RU_SignFunc::expression(int) const
{
    return {};
}

void RU_SignFunc::getPixelShader(UT_String& body)
{
    body = "value = sign(value);\n";
}
