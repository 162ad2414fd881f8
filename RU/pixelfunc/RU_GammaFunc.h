#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Exponent;
struct ru_Gamma;

/// v^(1 / gamma), odd about 0: -((-v)^(1 / gamma)) below it; 0 and 1 stay exactly what they are. One gamma
/// for all components, or one for each. A gamma of 0 gives an infinite exponent.
class RU_API RU_GammaFunc : public RU_PixelFunction
{
public:
    explicit RU_GammaFunc(float gamma);
    RU_GammaFunc(float red, float green, float blue, float alpha);

    /// The arithmetic on its own, for an inverted gamma.
    static float gamma(float value, float igamma);

    bool eachComponentDifferent() const override { return perComponent_; }
    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Gamma expression(int component) const; ///< the arithmetic for one component

    void set(int component, float gamma);

    float igamma_[4];
    std::shared_ptr<const ru_Exponent> exponents_[4]; ///< the same, made ready
    bool perComponent_;
};
