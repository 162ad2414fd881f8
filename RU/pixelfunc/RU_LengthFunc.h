#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

/// The length of the vector of the components that are there, alpha included, in all of them: the square root
/// of the sum of their squares.
class RU_API RU_LengthFunc : public RU_PixelFunction
{
public:
    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;
};
