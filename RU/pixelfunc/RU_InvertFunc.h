#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Invert;

/// 1 / v. Zero becomes the replacement if there is one, and stays zero otherwise; the shader divides by it.
class RU_API RU_InvertFunc : public RU_PixelFunction
{
public:
    RU_InvertFunc(bool useReplacement, float replacement)
        : useReplacement_(useReplacement), replacement_(replacement)
    {
    }

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Invert expression(int component) const; ///< the arithmetic for one component

    bool useReplacement_;
    float replacement_;
};
