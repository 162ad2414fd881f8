#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Floor;

/// The largest whole number not above v.
class RU_API RU_FloorFunc : public RU_PixelFunction
{
public:
    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Floor expression(int component) const; ///< the arithmetic for one component
};
