#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_WeightedSum;

/// The luminance of linear light in red, green and blue: 0.3086 r + 0.6094 g + 0.082 b. Nothing unless all
/// three are there; alpha stays.
class RU_API RU_LuminanceFunc : public RU_PixelFunction
{
public:
    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class, class>
    friend struct ru_VectorForms;
    void fill(ru_WeightedSum& expression, unsigned present) const;
};
