#include <host/chain/FunctionRows.h>

#include <host/chain/Curves.h>
#include <host/chain/LookUpFile.h>
#include <host/chain/SRGBFunc.h>
#include <host/text/Error.h>
#include <host/text/Text.h>

#include <RU/pixelfunc/RU_AverageFunc.h>
#include <RU/pixelfunc/RU_ColorCurveFunc.h>
#include <RU/pixelfunc/RU_ColorReplace.h>
#include <RU/pixelfunc/RU_ComponentFunc.h>
#include <RU/pixelfunc/RU_HSVConvertFunc.h>
#include <RU/pixelfunc/RU_HueCurveFunc.h>
#include <RU/pixelfunc/RU_HueFunc.h>
#include <RU/pixelfunc/RU_LengthFunc.h>
#include <RU/pixelfunc/RU_LevelsFunc.h>
#include <RU/pixelfunc/RU_LookupClipFunc.h>
#include <RU/pixelfunc/RU_LookupTableFunc.h>
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

constexpr bool leavesAlpha = true;

Argument components(const char* name, float preset)
{
    return {name, Type::PerComponent, false, preset};
}

Argument notNegative(const char* name, float preset)
{
    return {.name = name, .preset = preset, .least = 0.0f};
}

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

template <RU_HSVConvertOp op>
Made convertHSV(const Values&)
{
    return std::make_unique<RU_HSVConvertFunc>(op, 0.0f, nullptr, nullptr, false);
}

Made makeHSV(const Values& v)
{
    const float saturation[] = {v[1], v[2]}, value[] = {v[3], v[4]};
    return std::make_unique<RU_HSVConvertFunc>(RU_HSV_ADJUST, v[0], saturation, value, v[5].isOn());
}

Made makeLevels(const Values& v)
{
    enum { // as in the row of levels below
        inBlack,
        inWhite,
        gamma,
        outBlack,
        outWhite,
        offset,
        inBlacks,
        inWhites,
        gammas,
        outBlacks,
        outWhites
    };
    const float* each = v[gammas].four();
    if (v[gamma] == 0.0f || std::find(each, each + 4, 0.0f) != each + 4)
        refuse("levels: a gamma of 0; expected another number");
    const auto make = [&v](auto... ofComponents) {
        return std::make_unique<RU_LevelsFunc>(v[inBlack], v[inWhite], v[gamma], v[outBlack], v[outWhite],
                                               v[offset], ofComponents...);
    };
    // Components that differ cost a table each, and 16-bit ones top out below white.
    if (std::all_of(v.begin() + inBlacks, v.end(), [](const Value& value) { return value.isUniform(); }))
        return make(float{v[inBlacks]}, float{v[inWhites]}, float{v[gammas]}, float{v[outBlacks]},
                    float{v[outWhites]});
    return make(v[inBlacks].four(), v[inWhites].four(), each, v[outBlacks].four(), v[outWhites].four());
}

Made makeCurve(const Values& v)
{
    auto curves = std::make_shared<std::vector<RU_ColorCurve>>(makeCurves(v[0].curves(), v[1].isOn()));
    std::vector<RU_ColorCurve*> pointers;
    for (RU_ColorCurve& curve : *curves)
        pointers.push_back(&curve);
    const auto count = static_cast<int>(pointers.size());
    Made made(count == 1 ? std::make_unique<RU_ColorCurveFunc>(pointers[0])
                         : std::make_unique<RU_ColorCurveFunc>(pointers.data(), count),
              curves);
    made.keepsAlpha = count == 3;
    return made;
}

Made makeHueCurve(const Values& v)
{
    std::array<std::vector<RU_ColorCurve>, 3> curves;
    std::array<const RU_ColorCurve*, 3> pointers{};
    for (size_t i = 0; i < 3; ++i)
        if (v[i].isGiven()) {
            for (const CurveKey& key : v[i].curves().front())
                if (key.x < 0.0f || key.x > 1.0f)
                    refuse("huecurve: a key at " + numberText(key.x) + "; hues go from 0 to 1");
            curves[i] = makeCurves(v[i].curves(), false);
            pointers[i] = curves[i].data();
        }
    return std::make_unique<RU_HueCurveFunc>(pointers[0], pointers[1], pointers[2]);
}

Made makeReplace(const Values& v)
{
    if (v[3] < v[2])
        refuse("replace: inner is " + numberText(v[2]) + " and outer " + numberText(v[3]) +
               "; expected an outer not below inner");
    return std::make_unique<RU_ColorReplace>(v[0].four(), v[1].four(), v[2], v[3]);
}

template <SRGBFunc::Way way>
Made makeSRGB(const Values&)
{
    Made made(std::make_unique<SRGBFunc>(way));
    made.keepsAlpha = true;
    return made;
}

Made makeLookUp(const Values& v)
{
    auto lookUp = std::make_shared<LookUp>(readLookUpFile(v[0].file()));
    Made made = lookUp->table ? Made(std::make_unique<RU_LookupTableFunc>(lookUp->table.get()), lookUp)
                              : Made(std::make_unique<RU_LookupClipFunc>(lookUp->clip.get()), lookUp);
    made.keepsAlpha = lookUp->channels > 1;
    return made;
}

} // namespace

std::vector<Function> colourFunctions()
{
    return {
        {"srgb",
         "linear light to sRGB, by its exact curve; odd about 0",
         {},
         makeSRGB<SRGBFunc::Way::FromLinear>,
         "sRGB",
         leavesAlpha},
        {"linear",
         "sRGB to linear light, back by the same curve",
         {},
         makeSRGB<SRGBFunc::Way::ToLinear>,
         "Linear",
         leavesAlpha},
        {"luminance",
         "0.3086 red + 0.6094 green + 0.082 blue, in all three",
         {},
         plain<RU_LuminanceFunc>,
         keepsSpace,
         leavesAlpha},
        {"ntsc",
         "0.299 red + 0.587 green + 0.114 blue, in all three",
         {},
         plain<RU_NTSCLuminanceFunc>,
         keepsSpace,
         leavesAlpha,
         "blue weighs 0.144"},
        {"component",
         "one component, in all",
         {{"component", Type::Choice, true, 0.0f, {"r", "g", "b", "a"}}},
         makeComponent,
         losesSpace},
        {"max", "the largest component, in all; alpha counts", {}, plain<RU_MaxFunc>, losesSpace},
        {"min", "the smallest component, in all; alpha counts", {}, plain<RU_MinFunc>, losesSpace},
        {"average",
         "the mean of the components, in all; alpha counts",
         {},
         plain<RU_AverageFunc>,
         losesSpace},
        {"length",
         "the root of the sum of squares, in all; alpha counts",
         {},
         plain<RU_LengthFunc>,
         losesSpace},
        {"normalize", "divided by that length; alpha counts", {}, plain<RU_NormalizeFunc>, losesSpace},
        {"saturation",
         "(max - min) / max of red, green and blue, in all three",
         {},
         plain<RU_SaturationFunc>,
         losesSpace,
         leavesAlpha},
        {"vector",
         "the row red, green, blue, 1 times a matrix of 3 or 4 rows",
         {required("matrix", Type::Matrix)},
         makeVector,
         losesSpace,
         leavesAlpha,
         "alpha is the fourth coordinate, and written"},
        {"hue",
         "the hue in red, green and blue: 0 red, 1/3 green, 2/3 blue",
         {},
         plain<RU_HueFunc>,
         losesSpace,
         leavesAlpha},
        {"tohsv",
         "hue, saturation and value in red, green and blue",
         {},
         convertHSV<RU_RGB_TO_HSV>,
         losesSpace,
         leavesAlpha},
        {"fromhsv",
         "back from hue, saturation and value",
         {},
         convertHSV<RU_HSV_TO_RGB>,
         losesSpace,
         leavesAlpha},
        {"hsv",
         "turns the hue by degrees; scales and shifts saturation and value",
         {number("hue", 0), number("sat", 1), number("satshift", 0), number("val", 1), number("valshift", 0),
          onOff("preserve", false)},
         makeHSV,
         keepsSpace,
         leavesAlpha},
        {"huecurve",
         "curves over the hue: added to it, factors of saturation and value; a height of 0.5 changes nothing",
         {{"hue", Type::OptionalCurve}, {"sat", Type::OptionalCurve}, {"val", Type::OptionalCurve}},
         makeHueCurve,
         keepsSpace,
         leavesAlpha},
        {"replace",
         "colours within inner of the key become like the replacement, those beyond outer stay",
         {required("key", Type::Colour), required("replacement", Type::Colour), notNegative("inner", 0.1f),
          notNegative("outer", 0.3f)},
         makeReplace,
         keepsSpace,
         leavesAlpha},
        {"levels",
         "inblack to outblack, inwhite to outwhite, gamma between; then the offset",
         {number("inblack", 0), number("inwhite", 1), number("gamma", 1), number("outblack", 0),
          number("outwhite", 1), number("offset", 0), components("inblacks", 0), components("inwhites", 1),
          components("gammas", 1), components("outblacks", 0), components("outwhites", 1)},
         makeLevels,
         losesSpace},
        {"curve",
         "a smooth curve through keys, level outside or extended",
         {required("keys", Type::Curves), onOff("extend", false)},
         makeCurve,
         losesSpace,
         false,
         "it sags between keys"},
        {"lut",
         "the values of a look-up file, .cube or .csv",
         {required("file", Type::File)},
         makeLookUp,
         losesSpace,
         false,
         "green and blue of most files change places"},
    };
}

} // namespace host
