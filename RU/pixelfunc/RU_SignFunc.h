#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Sign;

/// -1, 0 or 1: the sign of v; 0 for NaN.
class RU_API RU_SignFunc : public RU_PixelFunction
{
public:
    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Sign expression(int component) const; ///< the arithmetic for one component
};
