#include <RU/pixelfunc/RU_VectorFunc.h>

#include <RU/pixelfunc/ru_VectorForms.h>

RU_VECTOR_FORMS(RU_VectorFunc, ru_Transform)

void RU_VectorFunc::fill(ru_Transform& expression, ru_Present) const
{
    expression.xform = xform_;
}

void RU_VectorFunc::getPixelShader(UT_String& body)
{
    usesGlobal("num_comps");
    addConstant("xform", RE_GPU_MATRIX4, 1, xform_.m, 1);
    body = "if(num_comps < 4)\n"
           "    value = TRANSFORM_POINT(xform, VEC4(value.xyz, 1.0f));\n"
           "else\n"
           "    value = TRANSFORM_POINT(xform, value);\n";
}
