#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Power;

/// v^expon, odd about 0: -((-v)^expon) below it.
class RU_API RU_PowerFunc : public RU_PixelFunction
{
public:
    explicit RU_PowerFunc(float expon) : expon_(expon) {}

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Power expression(int component) const; ///< the arithmetic for one component

    float expon_;
};
