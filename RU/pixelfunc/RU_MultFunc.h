#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Line;

/// v * mult.
class RU_API RU_MultFunc : public RU_PixelFunction
{
public:
    explicit RU_MultFunc(float mult) : mult_(mult) {}

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Line expression(int component) const; ///< the arithmetic for one component

    float mult_;
};
