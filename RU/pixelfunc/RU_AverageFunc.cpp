#include <RU/pixelfunc/RU_AverageFunc.h>

#include <RU/pixelfunc/ru_VectorForms.h>

RU_VECTOR_FORMS(RU_AverageFunc, ru_Average)

void RU_AverageFunc::fill(ru_Average& expression, ru_Present present) const
{
    expression.count = static_cast<float>(__builtin_popcount(present));
}

void RU_AverageFunc::getPixelShader(UT_String& body)
{
    usesGlobal("num_comps");
    body = "if(num_comps == 2) value.rg = VEC2((value.r+value.g)*0.5f);\n"
           "else if(num_comps == 3)\n"
           "   value.rgb = vec3((value.r+value.g+value.b)*0.333333);\n"
           "else if(num_comps == 4)\n"
           "   value = VEC4((value.r+value.g+value.b+value.a)*0.25f);\n";
}
