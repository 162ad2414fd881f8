#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

/// The saturation in red, green and blue: (M - m) / M of their largest M and smallest m, 0 unless M > 0.
/// Nothing unless all three are there; alpha stays.
class RU_API RU_SaturationFunc : public RU_PixelFunction
{
public:
    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;
};
