#include <RU/pixelfunc/RU_TanFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>
#include <RU/pixelfunc/ru_GuardedShader.h>

RU_FUNCTION_FORMS(RU_TanFunc)

ru_Tan RU_TanFunc::expression(int) const
{
    return {scale_, useReplacement_, replacement_};
}

void RU_TanFunc::getPixelShader(UT_String& body)
{
    addConstant("scale", RE_GPU_FLOAT32, 1, &scale_, 1);
    addConstant("replacement", RE_GPU_FLOAT32, 1, &replacement_, 1);
    body = "value *= VEC4(scale);\n";
    body.append(ru_guardedShader("!=1.5708f", "tan", useReplacement_).view());
}
