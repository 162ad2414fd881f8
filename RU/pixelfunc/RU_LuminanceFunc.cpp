#include <RU/pixelfunc/RU_LuminanceFunc.h>

#include <RU/pixelfunc/ru_VectorForms.h>

RU_VECTOR_FORMS(RU_LuminanceFunc, ru_WeightedSum)

void RU_LuminanceFunc::fill(ru_WeightedSum& expression, ru_Present) const
{
    expression.weights = ru_linearLuminance;
}

void RU_LuminanceFunc::getPixelShader(UT_String& body)
{
    usesGlobal("num_comps");
    body = "if(num_comps >= 3)\n"
           "    value=VEC4(VEC3(dot(value.rgb,VEC3(0.3086,0.6094,0.082))),\nvalue.a);";
}
