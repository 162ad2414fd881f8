#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

/// The smallest of the components that are there, alpha included, in all of them. A later one counts only
/// where it is strictly smaller.
class RU_API RU_MinFunc : public RU_PixelFunction
{
public:
    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;
};
