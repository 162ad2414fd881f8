#include <RU/pixelfunc/RU_GammaFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_GammaFunc)

RU_GammaFunc::RU_GammaFunc(float gamma)
    : igamma_{1.0f / gamma, 1.0f / gamma, 1.0f / gamma, 1.0f / gamma}, perComponent_(false)
{
}

RU_GammaFunc::RU_GammaFunc(float red, float green, float blue, float alpha)
    : igamma_{1.0f / red, 1.0f / green, 1.0f / blue, 1.0f / alpha}, perComponent_(true)
{
}

float RU_GammaFunc::gamma(float value, float igamma)
{
    return ru_oneNaN(ru_Gamma{igamma}(value));
}

ru_Gamma RU_GammaFunc::expression(int component) const
{
    return {igamma_[component]};
}

void RU_GammaFunc::getPixelShader(UT_String& body)
{
    addConstant("igamma", RE_GPU_FLOAT32, 4, igamma_, 1);
    body = "value = sign(value) * pow( abs(value), VEC4(igamma) );";
}
