#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Round;

/// floor(v + 0.5), the sum rounded to a float.
class RU_API RU_RoundFunc : public RU_PixelFunction
{
public:
    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Round expression(int component) const; ///< the arithmetic for one component
};
