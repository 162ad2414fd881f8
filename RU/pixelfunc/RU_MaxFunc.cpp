#include <RU/pixelfunc/RU_MaxFunc.h>

#include <RU/pixelfunc/ru_VectorForms.h>

RU_VECTOR_FORMS(RU_MaxFunc, ru_Max)

void RU_MaxFunc::getPixelShader(UT_String& body)
{
    usesGlobal("num_comps");
    body = "if(num_comps == 2) value.rg = VEC2(max(value.r,value.g));\n"
           "else if(num_comps == 3)\n"
           "   value.rgb = VEC3(max(max(value.r,value.g), value.b));\n"
           "else if(num_comps == 4)\n"
           "   value.rgba=VEC4(max(max(value.r,value.g),max(value.b,value.a)));\n";
}
