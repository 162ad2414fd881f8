#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Sin;

/// sin(v * scale + shift), in radians.
class RU_API RU_SinFunc : public RU_PixelFunction
{
public:
    RU_SinFunc(float scale, float shift) : scale_(scale), shift_(shift) {}

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Sin expression(int component) const; ///< the arithmetic for one component

    float scale_;
    float shift_;
};
