#include <RU/pixelfunc/RU_GammaFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

RU_FUNCTION_FORMS(RU_GammaFunc)

RU_GammaFunc::RU_GammaFunc(float gamma) : perComponent_(false)
{
    set(0, gamma);
    for (int c = 1; c < 4; ++c) {
        igamma_[c] = igamma_[0];
        exponents_[c] = exponents_[0];
    }
}

RU_GammaFunc::RU_GammaFunc(float red, float green, float blue, float alpha) : perComponent_(true)
{
    set(0, red);
    set(1, green);
    set(2, blue);
    set(3, alpha);
}

void RU_GammaFunc::set(int component, float gamma)
{
    igamma_[component] = 1.0f / gamma;
    exponents_[component] = std::make_shared<ru_Exponent>(igamma_[component]);
}

float RU_GammaFunc::gamma(float value, float igamma)
{
    const ru_Exponent exponent(igamma);
    return ru_oneNaN(ru_Gamma{&exponent}(value));
}

ru_Gamma RU_GammaFunc::expression(int component) const
{
    return {exponents_[component].get()};
}

void RU_GammaFunc::getPixelShader(UT_String& body)
{
    addConstant("igamma", RE_GPU_FLOAT32, 4, igamma_, 1);
    body = "value = sign(value) * pow( abs(value), VEC4(igamma) );";
}
