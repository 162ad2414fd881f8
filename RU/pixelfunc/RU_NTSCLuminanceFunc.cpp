#include <RU/pixelfunc/RU_NTSCLuminanceFunc.h>

#include <RU/pixelfunc/ru_VectorForms.h>

RU_VECTOR_FORMS(RU_NTSCLuminanceFunc, ru_WeightedSum)

void RU_NTSCLuminanceFunc::fill(ru_WeightedSum& expression, ru_Present) const
{
    expression.weights = {0.299f, 0.587f, 0.114f};
}

void RU_NTSCLuminanceFunc::getPixelShader(UT_String& body)
{
    usesGlobal("num_comps");
    body = "if(num_comps >= 3)\n"
           "    value = VEC4(VEC3(dot(value.rgb, VEC3(0.299,0.587,0.144))),                 value.a);";
}
