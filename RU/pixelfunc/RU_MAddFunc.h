#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Line;

/// v * mult + add, rounded after each step. One pair for all components, or a pair for each.
class RU_API RU_MAddFunc : public RU_PixelFunction
{
public:
    RU_MAddFunc(float mult, float add);
    RU_MAddFunc(const float* mult, const float* add); ///< four values each

    bool eachComponentDifferent() const override { return perComponent_; }
    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Line expression(int component) const; ///< the arithmetic for one component

    float mult_[4];
    float add_[4];
    bool perComponent_;
};
