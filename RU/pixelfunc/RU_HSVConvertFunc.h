#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_AdjustHSV;
struct ru_AdjustHSVKeepingLuminance;
struct ru_VectorFormPair;

enum RU_HSVConvertOp : int {
    RU_RGB_TO_HSV = 0,
    RU_HSV_TO_RGB = 1,
    RU_HSV_ADJUST = 2 ///< and every other value
};

/// Converts red, green, blue to hue, saturation, value and back, or adjusts colours in these terms.
///
/// Hue is in turns, as RU_HueFunc gives it; s = (M - m) / M, 0 unless M > 0; v = M, with M and m the largest
/// and smallest of red, green and blue. On the way back any hue is taken, s counts as at most 1, and s <= 0
/// gives the grey v.
///
/// Adjusting: h + hueShift / 360, turned back to one turn; s * satScale + satShift, limited to [0, 1]; v *
/// valScale + valShift, without a limit. With preserveLuminance the result is then scaled to the luminance l
/// * valScale + valShift, where l = 0.3086 r + 0.6094 g + 0.082 b of the input.
///
/// Absent components: the conversions do nothing unless red, green and blue are all there. Adjusting counts
/// absent ones as 0; a pixel without green and blue is a grey, of which only the value is adjusted, with or
/// without alpha. Alpha stays.
class RU_API RU_HSVConvertFunc : public RU_PixelFunction
{
public:
    /// hueShift is in degrees; sat and val are {scale, shift}, null for {1, 0}. The conversions ignore all of
    /// them.
    RU_HSVConvertFunc(RU_HSVConvertOp op, float hueShift, const float* sat, const float* val,
                      bool preserveLuminance);

    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class, class>
    friend struct ru_VectorForms;
    void fill(ru_AdjustHSV& expression, unsigned present) const;
    void fill(ru_AdjustHSVKeepingLuminance& expression, unsigned present) const;

    ru_VectorFormPair forms() const;

    void adjustmentShader(UT_String& body);

    RU_HSVConvertOp op_;
    float hueShift_;
    float satScale_, satShift_;
    float valScale_, valShift_;
    bool preserveLuminance_;
};
