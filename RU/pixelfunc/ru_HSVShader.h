#pragma once

#include <RU/gpgpu/RU_ShaderSources.h>
#include <RU/pixelfunc/RU_PixelFunction.h>

// How shader texts convert between red, green, blue and hue, saturation, value.
inline constexpr const char* ru_toHSVText = "value.rgb = toHSV(value.rgb, minv,maxv, s1,hue,sat,rs,gs,bs);\n";
inline constexpr const char* ru_fromHSVText = "value.rgb = fromHSV(value.rgb, i,hue,sat,val,f,p,q,t);\n";

/// Declares what a text needs that converts there and back. The arguments call what functions inherit for
/// that: addLocal(name, type, vectorSize) and addFunction(name, code).
template <class AddLocal, class AddFunction>
void ru_declareHSV(AddLocal addLocal, AddFunction addFunction)
{
    for (const char* name : {"minv", "maxv", "hue", "sat", "val", "rs", "gs", "bs", "s1", "f", "p", "q", "t"})
        addLocal(name, RE_GPU_FLOAT32, 1);
    addLocal("i", RE_GPU_INT32, 1);
    UT_String shared;
    RUgetToHSVConvertGPU(shared);
    addFunction("toHSV", shared.buffer());
    RUgetFromHSVConvertGPU(shared);
    addFunction("fromHSV", shared.buffer());
}
