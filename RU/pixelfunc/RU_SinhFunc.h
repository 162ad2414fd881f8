#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Sinh;

/// sinh(v * scale).
class RU_API RU_SinhFunc : public RU_PixelFunction
{
public:
    explicit RU_SinhFunc(float scale) : scale_(scale) {}

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Sinh expression(int component) const; ///< the arithmetic for one component

    float scale_;
};
