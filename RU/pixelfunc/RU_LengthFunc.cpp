#include <RU/pixelfunc/RU_LengthFunc.h>

#include <RU/pixelfunc/ru_VectorForms.h>

RU_VECTOR_FORMS(RU_LengthFunc, ru_Length)

void RU_LengthFunc::getPixelShader(UT_String& body)
{
    body = "value = VEC4(length(value));";
}
