#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Exponent;
struct ru_Power;

/// v^expon, odd about 0: -((-v)^expon) below it.
class RU_API RU_PowerFunc : public RU_PixelFunction
{
public:
    explicit RU_PowerFunc(float expon);

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Power expression(int component) const; ///< the arithmetic for one component

    float expon_;
    std::shared_ptr<const ru_Exponent> exponent_; ///< the same, made ready
};
