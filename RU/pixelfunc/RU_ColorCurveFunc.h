#pragma once

#include <RU/pixelfunc/RU_ColorCurve.h>
#include <RU/pixelfunc/RU_PixelFunction.h>

/// y of a colour curve at x = v: one curve for all components, or one for each. Of `count` curves, components
/// beyond the last use that one; a component without a curve keeps its value.
///
/// In the shader curve k has the constants numsplinesk (its control points), extendk, preslopek and
/// postslopek. The control points are the array pointsN, N being the function's index, read as
/// ABS_pointsN(column, row): their x in row 2c and their y in row 2c + 1, for each component c. There roots
/// are good to some 0.0005, and the last weight of a segment is the fourth power of its parameter, not the
/// third.
/// Ownership: curves are borrowed; they must be created before the function is used, and outlive it.
class RU_API RU_ColorCurveFunc : public RU_PixelFunction
{
public:
    explicit RU_ColorCurveFunc(RU_ColorCurve* curve);
    /// Keeps the first four; null pointers are components without a curve.
    RU_ColorCurveFunc(RU_ColorCurve** curves, int count);

    /// The scalar form.
    static float curve(RU_PixelFunction* function, float value, int component);

    bool eachComponentDifferent() const override { return count_ > 1; }
    RU_ScalarForm getPixelFunction() const override { return curve; }
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    int curveIndex(int component) const; ///< -1: there is none
    const RU_ColorCurve* curveOf(int component) const;
    void declareConstants(const RU_ColorCurve& curve, int index);
    void declarePoints();

    RU_ColorCurve* curves_[4] = {};
    int count_;
};
