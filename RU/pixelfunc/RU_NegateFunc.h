#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Negate;

/// -v.
class RU_API RU_NegateFunc : public RU_PixelFunction
{
public:
    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

    /// The arithmetic for one component.
    ru_Negate expression(int component) const;
};
