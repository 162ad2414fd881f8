#include <RU/pixelfunc/RU_NormalizeFunc.h>

#include <RU/pixelfunc/ru_VectorForms.h>

RU_VECTOR_FORMS(RU_NormalizeFunc, ru_Normalize)

void RU_NormalizeFunc::getPixelShader(UT_String& body)
{
    body = "value = (length(value) > 0.0) ? normalize(value) : value;";
}
