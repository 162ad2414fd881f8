#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Round;

/// floor(v + 0.5): to the nearest whole number, halves upwards.
class RU_API RU_RoundFunc : public RU_PixelFunction
{
public:
    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

    /// The arithmetic for one component.
    ru_Round expression(int component) const;
};
