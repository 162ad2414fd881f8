#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Line;

/// v + add.
class RU_API RU_AddFunc : public RU_PixelFunction
{
public:
    explicit RU_AddFunc(float add) : add_(add) {}

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Line expression(int component) const; ///< the arithmetic for one component

    float add_;
};
