#include <RU/pixelfunc/RU_ColorReplace.h>

#include <RU/pixelfunc/ru_HSVShader.h>
#include <RU/pixelfunc/ru_VectorForms.h>

#include <algorithm>

RU_VECTOR_FORMS(RU_ColorReplace, ru_Replace)

namespace {

/// Below this saturation of the key the hues around it mean less and less.
constexpr float greyish = 0.125f;

/// The most by which saturation and value are multiplied.
constexpr float mostGain = 4.0f;

/// Far beyond all colours, and still a number to calculate with.
constexpr float mostTolerance = 1e9f;

} // namespace

RU_ColorReplace::RU_ColorReplace(const float* key, const float* replacement, float inner, float outer)
    : key_{key[0], key[1], key[2]}, inner_(std::min(inner, mostTolerance)),
      outer_(std::min(std::max(inner, outer), mostTolerance))
{
    ru_hsv::fromColour(key_[0], key_[1], key_[2]);
    float to[3] = {replacement[0], replacement[1], replacement[2]};
    ru_hsv::fromColour(to[0], to[1], to[2]);
    scale_[0] = std::min(key_[1] / greyish, 1.0f);
    shift_[0] = to[0];
    for (int i = 1; i < 3; ++i) {
        scale_[i] = to[i] < mostGain * key_[i] ? to[i] / key_[i] : mostGain;
        shift_[i] = to[i] - scale_[i] * key_[i];
    }
}

void RU_ColorReplace::fill(ru_Replace& expression, ru_Present) const
{
    expression.keyHue = key_[0];
    expression.keySat = key_[1];
    expression.keyVal = key_[2];
    expression.inner = inner_;
    expression.outer = outer_;
    expression.slope = 1.0f / (outer_ - inner_);
    expression.toHue = shift_[0];
    expression.hueScale = scale_[0];
    expression.satScale = scale_[1];
    expression.satShift = shift_[1];
    expression.valScale = scale_[2];
    expression.valShift = shift_[2];
}

void RU_ColorReplace::getPixelShader(UT_String& body)
{
    usesGlobal("num_comps");
    addConstant("keycolor", RE_GPU_FLOAT32, 3, key_, 1);
    addConstant("inner", RE_GPU_FLOAT32, 1, &inner_, 1);
    addConstant("outer", RE_GPU_FLOAT32, 1, &outer_, 1);
    addConstant("scale", RE_GPU_FLOAT32, 3, scale_, 1);
    addConstant("shift", RE_GPU_FLOAT32, 3, shift_, 1);
    ru_declareHSV([this](auto... local) { addLocal(local...); },
                  [this](auto... shared) { addFunction(shared...); });
    addLocal("prev", RE_GPU_FLOAT32, 4);
    body = "if(num_comps < 3) return value;\n"
           "prev = value;\n";
    body.append(ru_toHSVText);
    body.append("value.r -= keycolor.x;\n"
                "value.r -= (abs(value.r) > 0.5) ? sign(value.r) : 0.0;\n"
                "p = 2.0 * value.r * min(value.g, keycolor.y);\n"
                "p = length(VEC3(p, value.gb - keycolor.yz));\n"
                "s1 = (p <= inner) ? 1.0 : (p >= outer) ? 0.0 : smoothstep(0.0, 1.0, (outer - p) / (outer - "
                "inner));\n"
                "value.rgb = value.rgb * scale + shift;\n");
    body.append(ru_fromHSVText);
    body.append("value.rgb = (s1 > 0.0) ? mix(prev.rgb, value.rgb, s1) : prev.rgb;\n");
}
