#include <RU/pixelfunc/RU_MinFunc.h>

#include <RU/pixelfunc/ru_VectorForms.h>

RU_VECTOR_FORMS(RU_MinFunc, ru_Min)

void RU_MinFunc::getPixelShader(UT_String& body)
{
    usesGlobal("num_comps");
    body = "if(num_comps == 2) value.rg = VEC2(min(value.r,value.g));\n"
           "else if(num_comps == 3)\n"
           "   value.rgb = VEC3(min(min(value.r,value.g), value.b));\n"
           "else if(num_comps == 4)\n"
           "   value.rgba=VEC4(min(min(value.r,value.g),min(value.b,value.a)));\n";
}
