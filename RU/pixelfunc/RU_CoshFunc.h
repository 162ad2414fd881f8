#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Cosh;

/// cosh(v * scale).
class RU_API RU_CoshFunc : public RU_PixelFunction
{
public:
    explicit RU_CoshFunc(float scale) : scale_(scale) {}

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Cosh expression(int component) const; ///< the arithmetic for one component

    float scale_;
};
