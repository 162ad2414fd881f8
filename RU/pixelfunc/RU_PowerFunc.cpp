#include <RU/pixelfunc/RU_PowerFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_PowerFunc)

RU_PowerFunc::RU_PowerFunc(float expon) : expon_(expon), exponent_(std::make_shared<ru_Exponent>(expon)) {}

ru_Power RU_PowerFunc::expression(int) const
{
    return {exponent_.get()};
}

void RU_PowerFunc::getPixelShader(UT_String& body)
{
    addConstant("expon", RE_GPU_FLOAT32, 1, &expon_, 1);
    body = "value = sign(value) * pow(abs(value), VEC4(expon));\n";
}
