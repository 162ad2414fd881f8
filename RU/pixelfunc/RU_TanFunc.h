#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Tan;

/// tan(v * scale), in radians. Where v * scale is the float nearest to pi / 2 or its negative, the
/// replacement if there is one, else v as it came in. The shader compares with 1.5708 and keeps the scaled
/// value there.
class RU_API RU_TanFunc : public RU_PixelFunction
{
public:
    RU_TanFunc(float scale, bool useReplacement, float replacement)
        : scale_(scale), useReplacement_(useReplacement), replacement_(replacement)
    {
    }

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Tan expression(int component) const; ///< the arithmetic for one component

    float scale_;
    bool useReplacement_;
    float replacement_;
};
