#pragma once

#include <RU/pixelfunc/RU_PowerFunc.h>

namespace host {

/// The curve of sRGB, from linear light or back to it: 12.92 v up to 0.0031308, 1.055 v^(1 / 2.4) - 0.055 above,
/// also above 1; odd about 0.
class SRGBFunc : public RU_PixelFunction
{
public:
    enum class Way { FromLinear, ToLinear };
    explicit SRGBFunc(Way way);

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <Way way>
    static float one(RU_PixelFunction* function, float value, int component);
    template <Way way>
    static void row(RU_PixelFunction* function, const float* in, float* out, int64_t count, int component);

    Way way_;
    RU_PowerFunc power_;
};

} // namespace host
