#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Line;

/// Keeps v between limits, each used or not. What lies beyond becomes the limit with `clamp`, else 0; a
/// value equal to a limit stays. The upper test sees what the lower one made of the value.
class RU_API RU_LimitFunc : public RU_PixelFunction
{
public:
    RU_LimitFunc(bool useLower, float lower, bool useUpper, float upper, bool clamp);

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Line expression(int component) const; ///< the arithmetic for one component

    enum Flag : unsigned char { useLowerFlag = 1, useUpperFlag = 2, clampFlag = 4 };
    bool has(Flag flag) const { return (flags_ & flag) != 0; }

    unsigned char flags_;
    float lower_;
    float upper_;
};
