#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Ceil;

/// The smallest whole number not below v.
class RU_API RU_CeilFunc : public RU_PixelFunction
{
public:
    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Ceil expression(int component) const; ///< the arithmetic for one component
};
