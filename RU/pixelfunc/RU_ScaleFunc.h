#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Scale;

/// (v - pivot) * scale + pivot: contrast about a pivot.
class RU_API RU_ScaleFunc : public RU_PixelFunction
{
public:
    RU_ScaleFunc(float scale, float pivot) : scale_(scale), pivot_(pivot) {}

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Scale expression(int component) const; ///< the arithmetic for one component

    float scale_;
    float pivot_;
};
