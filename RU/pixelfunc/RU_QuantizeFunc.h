#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Quantize;

/// floor((v - offset) / step) * step + offset: steps of equal height.
class RU_API RU_QuantizeFunc : public RU_PixelFunction
{
public:
    RU_QuantizeFunc(float step, float offset) : step_(step), offset_(offset) {}

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Quantize expression(int component) const; ///< the arithmetic for one component

    float step_;
    float offset_;
};
