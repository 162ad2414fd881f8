#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Acos;

/// acos(v) * scale, in radians. NaN becomes the replacement if there is one, and stays otherwise; numbers
/// outside [-1, 1] give what acos gives. The shader replaces those numbers as well.
class RU_API RU_AcosFunc : public RU_PixelFunction
{
public:
    RU_AcosFunc(float scale, bool useReplacement, float replacement)
        : scale_(scale), useReplacement_(useReplacement), replacement_(replacement)
    {
    }

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Acos expression(int component) const; ///< the arithmetic for one component

    float scale_;
    bool useReplacement_;
    float replacement_;
};
