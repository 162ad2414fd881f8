#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

/// The hue in red, green and blue, in turns: red 0, yellow 1/6, green 1/3, blue 2/3; 0 for greys. Nothing
/// unless all three are there; alpha stays. The sector is multiplied by 0.1666667, so that reds whose green
/// and blue are equal, which are sector 6, come to 1.0000002 instead of 0.
class RU_API RU_HueFunc : public RU_PixelFunction
{
public:
    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;
};
