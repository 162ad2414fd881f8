#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Raise;

/// base^v; -((-base)^v) for a base below 0.
class RU_API RU_RaiseFunc : public RU_PixelFunction
{
public:
    explicit RU_RaiseFunc(float base) : base_(base) {}

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Raise expression(int component) const; ///< the arithmetic for one component

    float base_;
};
