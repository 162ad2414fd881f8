#include <RU/pixelfunc/RU_ColorReplace.h>

#include <RU/gpgpu/RU_ShaderSources.h>
#include <RU/pixelfunc/ru_VectorForms.h>

#include <algorithm>

RU_VECTOR_FORMS(RU_ColorReplace, ru_Replace)

RU_ColorReplace::RU_ColorReplace(const float* key, const float* replacement, float inner, float outer)
    : key_{key[0], key[1], key[2]}, inner_(inner), outer_(std::max(inner, outer))
{
    ru_hsv::fromColour(key_[0], key_[1], key_[2]);
    float to[3] = {replacement[0], replacement[1], replacement[2]};
    ru_hsv::fromColour(to[0], to[1], to[2]);
    const bool isGrey = !(key_[1] > 0.0f), isBlack = !(key_[2] > 0.0f);
    scale_[0] = isGrey ? 0.0f : 1.0f;
    shift_[0] = isGrey ? to[0] : to[0] - key_[0];
    scale_[1] = isGrey ? 0.0f : to[1] / key_[1];
    shift_[1] = isGrey ? to[1] : 0.0f;
    scale_[2] = isBlack ? 1.0f : to[2] / key_[2];
    shift_[2] = isBlack ? to[2] : 0.0f;
}

void RU_ColorReplace::fill(ru_Replace& expression, ru_Present) const
{
    expression = {{},        key_[0],   key_[1],   key_[2],   inner_,    outer_,   1.0f / (outer_ - inner_),
                  scale_[0], shift_[0], scale_[1], shift_[1], scale_[2], shift_[2]};
}

void RU_ColorReplace::getPixelShader(UT_String& body)
{
    usesGlobal("num_comps");
    addConstant("keycolor", RE_GPU_FLOAT32, 3, key_, 1);
    addConstant("inner", RE_GPU_FLOAT32, 1, &inner_, 1);
    addConstant("outer", RE_GPU_FLOAT32, 1, &outer_, 1);
    addConstant("scale", RE_GPU_FLOAT32, 3, scale_, 1);
    addConstant("shift", RE_GPU_FLOAT32, 3, shift_, 1);
    for (const char* name : {"minv", "maxv", "hue", "sat", "val", "rs", "gs", "bs", "s1", "f", "p", "q", "t"})
        addLocal(name, RE_GPU_FLOAT32, 1);
    addLocal("i", RE_GPU_INT32, 1);
    addLocal("prev", RE_GPU_FLOAT32, 4);
    UT_String shared;
    RUgetToHSVConvertGPU(shared);
    addFunction("toHSV", shared.buffer());
    RUgetFromHSVConvertGPU(shared);
    addFunction("fromHSV", shared.buffer());
    body = "if(num_comps < 3) return value;\n"
           "prev = value;\n"
           "value.rgb = toHSV(value.rgb, minv,maxv, s1,hue,sat,rs,gs,bs);\n"
           "p = abs(value.r - keycolor.x);\n"
           "p = 2.0 * min(p, 1.0 - p) * min(value.g, keycolor.y);\n"
           "p = length(VEC3(p, value.gb - keycolor.yz));\n"
           "s1 = (p <= inner) ? 1.0 : (p >= outer) ? 0.0 : smoothstep(0.0, 1.0, (outer - p) / (outer - "
           "inner));\n"
           "value.rgb = value.rgb * scale + shift;\n"
           "value.rgb = fromHSV(value.rgb, i,hue,sat,val,f,p,q,t);\n"
           "value.rgb = (s1 > 0.0) ? mix(prev.rgb, value.rgb, s1) : prev.rgb;\n";
}
