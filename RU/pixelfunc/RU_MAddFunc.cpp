#include <RU/pixelfunc/RU_MAddFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_MAddFunc)

RU_MAddFunc::RU_MAddFunc(float mult, float add)
    : mult_{mult, mult, mult, mult}, add_{add, add, add, add}, perComponent_(false)
{
}

RU_MAddFunc::RU_MAddFunc(const float* mult, const float* add)
    : mult_{mult[0], mult[1], mult[2], mult[3]}, add_{add[0], add[1], add[2], add[3]}, perComponent_(true)
{
}

ru_Line RU_MAddFunc::expression(int component) const
{
    return {.mult = mult_[component], .add = add_[component]};
}

void RU_MAddFunc::getPixelShader(UT_String& body)
{
    addConstant("mult", RE_GPU_FLOAT32, 4, mult_, 1);
    addConstant("add", RE_GPU_FLOAT32, 4, add_, 1);
    body = "value = value *VEC4(mult) + VEC4(add);";
}
