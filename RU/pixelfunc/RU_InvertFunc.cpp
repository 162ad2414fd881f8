#include <RU/pixelfunc/RU_InvertFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_InvertFunc)

ru_Invert RU_InvertFunc::expression(int) const
{
    return {useReplacement_, replacement_};
}

void RU_InvertFunc::getPixelShader(UT_String& body)
{
    body = "value = 1.0/value;\n";
}
