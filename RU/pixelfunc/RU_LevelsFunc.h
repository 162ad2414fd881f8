#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Exponent;
struct ru_Line;

/// Levels: moves black and white, and bends what lies between them. First for each component, then for all:
///
///     w      = gamma_c(v) * factor_c + addend_c      the line through (gamma_c(inBlack_c), outBlack_c)
///                                                    and (gamma_c(inWhite_c), outWhite_c)
///     result = gamma(w) * factor + addend + offset   the same with the values for all components
///
/// gamma(v) is v^(1 / gamma), odd about 0, as RU_GammaFunc has it; one of exactly 1 is left out. So in-black
/// lands on out-black and in-white on out-white whatever the gamma is. Other levels map to 0..1 first, bend
/// there and map out again; here the gamma bends about 0 and 1 of the value as it comes in, and the line then
/// pins the ends.
///
/// Null/constant: where two in-values coincide the result is the mean of the two out-values.
class RU_API RU_LevelsFunc : public RU_PixelFunction
{
public:
    /// The arrays have four values each, for red, green, blue and alpha.
    RU_LevelsFunc(float inBlack, float inWhite, float gamma, float outBlack, float outWhite, float offset,
                  const float* inBlacks, const float* inWhites, const float* gammas, const float* outBlacks,
                  const float* outWhites);
    /// One component level for all four, which are then treated alike.
    RU_LevelsFunc(float inBlack, float inWhite, float gamma, float outBlack, float outWhite, float offset,
                  float componentInBlack, float componentInWhite, float componentGamma,
                  float componentOutBlack, float componentOutWhite);

    /// The line v * factor + addend through (x0, y0) and (x1, y1); level at the mean of y0 and y1 where x0
    /// equals x1.
    static void colourMap(float x0, float x1, float y0, float y1, float& factor, float& addend);

    bool eachComponentDifferent() const override { return perComponent_; }
    /// fastLevels where every gamma is 1, else safeLevels.
    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    /// Gamma, then a line.
    struct Step
    {
        Step() = default;
        Step(float inBlack, float inWhite, float gamma, float outBlack, float outWhite);
        bool bends() const { return igamma != 1.0f; }
        float bent(float v) const;
        ru_Line line() const;
        float operator()(float v) const;
        void addSteps(ru_RowSteps& steps) const;

        float igamma = 1.0f;
        std::shared_ptr<const ru_Exponent> exponent; ///< the same, made ready; null for 1
        float factor = 1.0f;
        float addend = 0.0f;
    };

    /// The two lines of a component as one.
    static float fastLevels(RU_PixelFunction* function, float value, int component);
    /// Step by step.
    static float safeLevels(RU_PixelFunction* function, float value, int component);
    static void addSteps(const RU_PixelFunction& function, int component, ru_RowSteps& steps);
    static void row(RU_PixelFunction* function, const float* in, float* out, int64_t count, int component);
    void set(int component, const Step& step);
    bool bendsComponents() const;
    bool isFast() const;

    Step components_[4];
    Step global_;
    Step fast_[4]; ///< both in one, where no gamma bends
    bool perComponent_;
};
