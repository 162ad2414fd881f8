#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

#include <vector>

class RU_ColorCurve;
struct ru_HueCurve;

/// Changes colours by their hue, with up to three curves over hue from 0 to 1 (red 0, green 1/3, blue 2/3):
///
///     hue          + curve - 0.5, in turns
///     saturation   * 2 curve
///     value        * 1 + (2 curve - 1) min(saturation, 1), a curve below 0 counting as 0 in both
///
/// so that 0.5 leaves a colour exactly as it is and 1 turns hue by half a circle or doubles the other two.
/// Greys, whose hue means nothing, keep their value, and what is nearly grey nearly does.
///
/// Hue, saturation and value are those of RU_HSVConvertFunc, but a saturation above 1, which stands for
/// components below 0, is kept. Colours without a component above 0, or too small for the saturation to be a
/// number, stay as they are; NaN and infinities give NaN.
///
/// Hue is a circle, so the keys of a curve are repeated before 0 and behind 1 and it runs smoothly through
/// red. A key at 1 is one at 0, and is ignored where that has a key of its own, as keys outside [0, 1] are.
/// A single key gives a flat curve.
///
/// Components: nothing happens unless red, green and blue are all there; alpha stays.
/// Ownership: keys and weights of the curves are read by the constructor; the curves need not have been
/// created and may go afterwards. Null, or without a key, for none.
/// Cost: the curves are sampled at 2048 hues, linear in between; the shader reads the same samples.
class RU_API RU_HueCurveFunc : public RU_PixelFunction
{
public:
    RU_HueCurveFunc(const RU_ColorCurve* hue, const RU_ColorCurve* saturation, const RU_ColorCurve* value);

    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class, class>
    friend struct ru_VectorForms;
    void fill(ru_HueCurve& expression, unsigned present) const;

    std::vector<float> turns_, satGains_, valGains_;
};
