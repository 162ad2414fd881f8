#include <RE/RE_ShaderType.h>

#include <gtest/gtest.h>
#include <reference/Functions.h>

using namespace reference;

// That programs compile and compute what the processor does is known by running them.
TEST(Shader, WhatDepartsFromTheProcessorIsAsItIs)
{
    const std::pair<std::string, std::string> texts[] = {
        {"Invert", "value = 1.0/value;"},
        {"Limit", "value *= sign(sign(VEC4(upper)-value) + VEC4(1.0f));"},
        {"Power", "value = sign(value) * pow(abs(value), VEC4(expon));"},
        {"RaiseZero", "value = sign(VEC4(base)) * pow(abs(VEC4(base)), value);"},
        {"Atan", "value = atan(value *VEC4(scale));"},
        {"Tan",
         "value *= VEC4(scale);\nvalue = VEC4(\n    (abs(value.r)!=1.5708f) ? tan(value.r) : value.r,"},
        {"Asin", "(abs(value.a)<=1.0f) ? asin(value.a) : replacement);\nvalue *= VEC4(scale);"},
        {"Tanh", "value = (exp(VEC4(2.0f) * value) - VEC4(1.0f)) /\n"
                 "        (exp(VEC4(2.0f) * value) + VEC4(1.0f));"},
        {"LookupClip", "clipTrack7(value.r, 0, 3),\n             clipTrack7(value.b, 0, 3),\n"
                       "             clipTrack7(value.g, 0, 3),"},
        {"ColorCurve", "3.0 * a*r*r * sply.z + r*r*r*r * sply.w;"},
        {"NTSCLuminance", "dot(value.rgb, VEC3(0.299,0.587,0.144))"},
        {"Vector", "VEC4(value.xyz, 1.0f));\nelse\n    value = TRANSFORM_POINT(xform, value);"},
        {"Average", "value.rgb = vec3((value.r+value.g+value.b)*0.333333);"}};
    for (const auto& [name, text] : texts) {
        bool found = false;
        for (const Function& function : allFunctions()) {
            if (function.name != name)
                continue;
            RU_PixelFunction head;
            UT_String body;
            function.object->declareShader(head, RE_OGLComputeGPU::create().get(), 7, body);
            const std::string added = head.shader().addedFunctionCode().buffer();
            found = found || (added + body.buffer()).find(text) != std::string::npos;
        }
        EXPECT_TRUE(found) << name;
    }
}

TEST(Shader, TypesHaveTheirNames)
{
    std::string names;
    for (const int size : {1, 3})
        for (int type = 0; type <= 14; ++type)
            names += REshaderType(static_cast<RE_GPUType>(type), size) + std::string(" ");
    EXPECT_EQ(names, "  INT INT INT INT INT INT FLOAT  FLOAT MATRIX2 MATRIX3 MATRIX4  "
                     "  IVEC3 IVEC3 IVEC3 IVEC3 IVEC3 IVEC3 VEC3  VEC3     ");
}
