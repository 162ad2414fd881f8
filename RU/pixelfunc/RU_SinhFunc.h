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

    /// The arithmetic for one component.
    ru_Sinh expression(int component) const;

private:
    float scale_;
};
