#include <RU/pixelfunc/RU_ComponentFunc.h>

#include <RU/pixelfunc/ru_VectorForms.h>

RU_VECTOR_FORMS(RU_ComponentFunc, ru_OneComponent)

void RU_ComponentFunc::fill(ru_OneComponent& expression, ru_Present) const
{
    expression.component = component_;
}

void RU_ComponentFunc::getPixelShader(UT_String& body)
{
    static constexpr const char* bodies[] = {"value = VEC4(value.r);", "value = VEC4(value.g);",
                                             "value = VEC4(value.b);", "value = VEC4(value.a);"};
    body = component_ >= 0 && component_ < 4 ? bodies[component_] : "";
}
