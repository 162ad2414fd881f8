#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Tanh;

/// tanh(v * scale). The shader leaves the scale out.
class RU_API RU_TanhFunc : public RU_PixelFunction
{
public:
    explicit RU_TanhFunc(float scale) : scale_(scale) {}

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Tanh expression(int component) const; ///< the arithmetic for one component

    float scale_;
};
