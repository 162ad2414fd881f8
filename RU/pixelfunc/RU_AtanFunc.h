#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Atan;

/// atan(v) * scale, in radians. The shader scales the input instead of the result.
class RU_API RU_AtanFunc : public RU_PixelFunction
{
public:
    explicit RU_AtanFunc(float scale) : scale_(scale) {}

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Atan expression(int component) const; ///< the arithmetic for one component

    float scale_;
};
