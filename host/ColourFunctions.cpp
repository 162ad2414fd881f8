#include <host/FunctionRows.h>

#include <RU/pixelfunc/RU_AverageFunc.h>
#include <RU/pixelfunc/RU_ComponentFunc.h>
#include <RU/pixelfunc/RU_HueFunc.h>
#include <RU/pixelfunc/RU_LengthFunc.h>
#include <RU/pixelfunc/RU_LuminanceFunc.h>
#include <RU/pixelfunc/RU_MaxFunc.h>
#include <RU/pixelfunc/RU_MinFunc.h>
#include <RU/pixelfunc/RU_NTSCLuminanceFunc.h>
#include <RU/pixelfunc/RU_NormalizeFunc.h>
#include <RU/pixelfunc/RU_SaturationFunc.h>
#include <RU/pixelfunc/RU_VectorFunc.h>

#include <UT/UT_Matrix4.h>

#include <algorithm>

namespace host {

namespace {

using Type = Argument::Type;

Made makeComponent(const Values& v)
{
    return std::make_unique<RU_ComponentFunc>(static_cast<int>(v[0].choice()));
}

Made makeVector(const Values& v)
{
    UT_Matrix4 matrix;
    std::copy_n(v[0].matrix().data(), 16, &matrix.m[0][0]);
    return std::make_unique<RU_VectorFunc>(matrix);
}

} // namespace

std::vector<Function> colourFunctions()
{
    return {
        {"luminance", "0.3086 red + 0.6094 green + 0.082 blue, in all three", {}, plain<RU_LuminanceFunc>},
        {"ntsc", "0.299 red + 0.587 green + 0.114 blue, in all three", {}, plain<RU_NTSCLuminanceFunc>},
        {"component",
         "one component, in all",
         {{"component", Type::Choice, true, 0.0f, {"r", "g", "b", "a"}}},
         makeComponent},
        {"max", "the largest component, in all; alpha counts", {}, plain<RU_MaxFunc>},
        {"min", "the smallest component, in all; alpha counts", {}, plain<RU_MinFunc>},
        {"average", "the mean of the components, in all; alpha counts", {}, plain<RU_AverageFunc>},
        {"length", "the root of the sum of squares, in all; alpha counts", {}, plain<RU_LengthFunc>},
        {"normalize", "divided by that length; alpha counts", {}, plain<RU_NormalizeFunc>},
        {"saturation",
         "(max - min) / max of red, green and blue, in all three",
         {},
         plain<RU_SaturationFunc>},
        {"vector",
         "the row red, green, blue, 1 times a matrix of 3 or 4 rows",
         {required("matrix", Type::Matrix)},
         makeVector},
        {"hue", "the hue in red, green and blue: 0 red, 1/3 green, 2/3 blue", {}, plain<RU_HueFunc>},
    };
}

} // namespace host
