#include <RU/pixelfunc/RU_HueCurveFunc.h>

#include <RU/pixelfunc/RU_ColorCurve.h>
#include <RU/pixelfunc/ru_HSVShader.h>
#include <RU/pixelfunc/ru_VectorForms.h>

#include <string>

RU_VECTOR_FORMS(RU_HueCurveFunc, ru_HueCurve)

namespace {

constexpr float neutral = 0.5f;

/// The curve with its keys on the circle before and behind, so that all of it is as between keys.
RU_ColorCurve periodic(const RU_ColorCurve& curve)
{
    bool startsAtZero = false;
    for (int64_t i = 0; i < curve.keyCount(); ++i)
        startsAtZero = startsAtZero || curve.keyX(i) == 0.0f;
    RU_ColorCurve repeated;
    for (int64_t i = 0; i < curve.keyCount(); ++i) {
        float x = curve.keyX(i);
        if (x == 1.0f && !startsAtZero)
            x = 0.0f;
        if (x >= 0.0f && x < 1.0f)
            for (const float turn : {-1.0f, 0.0f, 1.0f})
                repeated.addPoint(x + turn, curve.keyY(i), curve.keyWeight(i));
    }
    repeated.create(false);
    return repeated;
}

/// The curve at the steps of the circle; neutral without one.
std::vector<float> samplesOf(const RU_ColorCurve* curve)
{
    constexpr int steps = ru_HueCurve::steps;
    std::vector<float> samples(steps + 1, neutral);
    if (curve == nullptr)
        return samples;
    const RU_ColorCurve circle = periodic(*curve);
    if (circle.keyCount() == 0)
        return samples;
    for (int i = 0; i < steps; ++i)
        samples[static_cast<size_t>(i)] = circle.evaluate(static_cast<float>(i) / static_cast<float>(steps));
    samples.back() = samples.front();
    return samples;
}

std::vector<float> gainsOf(const RU_ColorCurve* curve)
{
    std::vector<float> gains = samplesOf(curve);
    for (float& gain : gains)
        gain = gain > 0.0f ? gain * (1.0f / neutral) : 0.0f;
    return gains;
}

} // namespace

RU_HueCurveFunc::RU_HueCurveFunc(const RU_ColorCurve* hue, const RU_ColorCurve* saturation,
                                 const RU_ColorCurve* value)
    : turns_(samplesOf(hue)), satGains_(gainsOf(saturation)), valGains_(gainsOf(value))
{
    for (float& turn : turns_)
        turn -= neutral;
}

void RU_HueCurveFunc::fill(ru_HueCurve& expression, ru_Present) const
{
    expression.turns = turns_.data();
    expression.satGains = satGains_.data();
    expression.valGains = valGains_.data();
}

void RU_HueCurveFunc::getPixelShader(UT_String& body)
{
    usesGlobal("num_comps");
    ru_declareHSV([this](auto... local) { addLocal(local...); },
                  [this](auto... shared) { addFunction(shared...); });
    addLocal("gain", RE_GPU_FLOAT32, 3);
    addLocal("prev", RE_GPU_FLOAT32, 4);
    const std::string table = "huecurve" + std::to_string(getFunctionIndex());
    std::vector<float> samples; // the three side by side
    for (size_t i = 0; i < turns_.size(); ++i)
        samples.insert(samples.end(), {turns_[i], satGains_[i], valGains_[i]});
    addArray(table.c_str(), RE_GPU_FLOAT32, 3, static_cast<int>(turns_.size()), 1, samples.data());

    // Back by the pure hue k: (1 - (1 - k) s) v, also for s > 1.
    body = "if(num_comps < 3) return value;\n"
           "prev = value;\n";
    UT_String text("if(!(value.b > 0.0 && value.g <= 3.402823466e38)) return prev;\n"
                   "p = min(value.r, 1.0) * %n.0;\n"
                   "i = min(INT(p), %n - 1);\n"
                   "gain = mix(ABS_%t(i, 0), ABS_%t(i + 1, 0), p - FLOAT(i));\n"
                   "if(gain == VEC3(0.0, 1.0, 1.0)) return prev;\n"
                   "gain.z = value.b * (1.0 + (gain.z - 1.0) * min(value.g, 1.0));\n"
                   "gain.y *= value.g;\n"
                   "value.rgb = VEC3(value.r + gain.x, 1.0, 1.0);\n"
                   "%fvalue.rgb = (VEC3(1.0) - (VEC3(1.0) - value.rgb) * VEC3(gain.y)) * VEC3(gain.z);\n");
    text.substitute("%t", table);
    text.substitute("%n", std::to_string(ru_HueCurve::steps));
    text.substitute("%f", ru_fromHSVText);
    body.append(ru_toHSVText).append(text.view());
}
