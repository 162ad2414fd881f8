#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

/// Scales the vector of the components that are there, alpha included, to length 1. A zero vector stays.
class RU_API RU_NormalizeFunc : public RU_PixelFunction
{
public:
    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;
};
