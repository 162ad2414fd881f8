#include <RU/pixelfunc/RU_AsinFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>
#include <RU/pixelfunc/ru_GuardedShader.h>

RU_FUNCTION_FORMS(RU_AsinFunc)

ru_Asin RU_AsinFunc::expression(int) const
{
    return {scale_, useReplacement_, replacement_};
}

void RU_AsinFunc::getPixelShader(UT_String& body)
{
    addConstant("scale", RE_GPU_FLOAT32, 1, &scale_, 1);
    addConstant("replacement", RE_GPU_FLOAT32, 1, &replacement_, 1);
    body = ru_guardedShader("<=1.0f", "asin", useReplacement_);
    body.append("value *= VEC4(scale);\n");
}
