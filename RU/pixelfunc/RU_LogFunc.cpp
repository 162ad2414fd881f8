#include <RU/pixelfunc/RU_LogFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

#include <cmath>
#include <limits>

RU_FUNCTION_FORMS(RU_LogFunc)

namespace {

/// In double, so that base 10 takes 100 to exactly 2.
float factorOf(float base)
{
    const double magnitude = std::fabs(static_cast<double>(base));
    if (magnitude > 0.0)
        return static_cast<float>(1.0 / std::log(magnitude));
    return std::numeric_limits<float>::infinity();
}

} // namespace

RU_LogFunc::RU_LogFunc(float base, bool useReplacement, float replacement)
    : factor_(factorOf(base)), useReplacement_(useReplacement), replacement_(replacement)
{
}

ru_Log RU_LogFunc::expression(int) const
{
    return {factor_, useReplacement_, replacement_};
}

void RU_LogFunc::getPixelShader(UT_String& body)
{
    addConstant("base", RE_GPU_FLOAT32, 1, &factor_, 1);
    addConstant("replacement", RE_GPU_FLOAT32, 1, &replacement_, 1);
    if (useReplacement_)
        body = "value = VEC4(\n"
               "   (value.r > 0.0f) ? log(value.r)*base : replacement,\n"
               "   (value.g > 0.0f) ? log(value.g)*base : replacement,\n"
               "   (value.b > 0.0f) ? log(value.b)*base : replacement,\n"
               "   (value.a > 0.0f) ? log(value.a)*base : replacement);\n";
    else
        body = "value = VEC4((value.r > 0.0f) ? log(value.r)*base : value.r,\n"
               "             (value.g > 0.0f) ? log(value.g)*base : value.g,\n"
               "             (value.b > 0.0f) ? log(value.b)*base : value.b,\n"
               "             (value.a > 0.0f) ? log(value.a)*base : value.a);\n";
}
