#include <host/chain/FunctionRows.h>

#include <RU/pixelfunc/RU_AbsFunc.h>
#include <RU/pixelfunc/RU_AcosFunc.h>
#include <RU/pixelfunc/RU_AddFunc.h>
#include <RU/pixelfunc/RU_AsinFunc.h>
#include <RU/pixelfunc/RU_AtanFunc.h>
#include <RU/pixelfunc/RU_CeilFunc.h>
#include <RU/pixelfunc/RU_CoshFunc.h>
#include <RU/pixelfunc/RU_FloorFunc.h>
#include <RU/pixelfunc/RU_GammaFunc.h>
#include <RU/pixelfunc/RU_InvertFunc.h>
#include <RU/pixelfunc/RU_LimitFunc.h>
#include <RU/pixelfunc/RU_LogFunc.h>
#include <RU/pixelfunc/RU_MAddFunc.h>
#include <RU/pixelfunc/RU_MultFunc.h>
#include <RU/pixelfunc/RU_NegateFunc.h>
#include <RU/pixelfunc/RU_PowerFunc.h>
#include <RU/pixelfunc/RU_QuantizeFunc.h>
#include <RU/pixelfunc/RU_RaiseFunc.h>
#include <RU/pixelfunc/RU_RoundFunc.h>
#include <RU/pixelfunc/RU_ScaleFunc.h>
#include <RU/pixelfunc/RU_SignFunc.h>
#include <RU/pixelfunc/RU_SinFunc.h>
#include <RU/pixelfunc/RU_SinhFunc.h>
#include <RU/pixelfunc/RU_TanFunc.h>
#include <RU/pixelfunc/RU_TanhFunc.h>

namespace host {

namespace {

constexpr std::array<float, 4> ones{1.0f, 1.0f, 1.0f, 1.0f};
constexpr std::array<float, 4> zeros{};

template <class F>
Made oneNumber(const Values& v)
{
    return std::make_unique<F>(v[0]);
}

template <class F>
Made twoNumbers(const Values& v)
{
    return std::make_unique<F>(v[0], v[1]);
}

/// A function of a replacement alone.
template <class F>
Made withReplacement(const Values& v)
{
    return std::make_unique<F>(v[0].isGiven(), v[0]);
}

/// A function of a number and a replacement.
template <class F>
Made numberWithReplacement(const Values& v)
{
    return std::make_unique<F>(v[0], v[1].isGiven(), v[1]);
}

Made makeAdd(const Values& v)
{
    if (v[0].isUniform())
        return std::make_unique<RU_AddFunc>(v[0]);
    return std::make_unique<RU_MAddFunc>(ones.data(), v[0].four());
}

Made makeMult(const Values& v)
{
    if (v[0].isUniform())
        return std::make_unique<RU_MultFunc>(v[0]);
    return std::make_unique<RU_MAddFunc>(v[0].four(), zeros.data());
}

Made makeMAdd(const Values& v)
{
    if (v[0].isUniform() && v[1].isUniform())
        return std::make_unique<RU_MAddFunc>(static_cast<float>(v[0]), static_cast<float>(v[1]));
    return std::make_unique<RU_MAddFunc>(v[0].four(), v[1].four());
}

Made makeGamma(const Values& v)
{
    if (v[0].isUniform())
        return std::make_unique<RU_GammaFunc>(v[0]);
    const float* gamma = v[0].four();
    return std::make_unique<RU_GammaFunc>(gamma[0], gamma[1], gamma[2], gamma[3]);
}

Made makeLimit(const Values& v)
{
    return std::make_unique<RU_LimitFunc>(v[0].isGiven(), v[0], v[1].isGiven(), v[1], v[2].isOn());
}

} // namespace

std::vector<Function> numericFunctions()
{
    return {
        {"add", "v + add", {perComponent("add", 0)}, makeAdd, keepsSpace},
        {"mult", "v * mult", {perComponent("mult", 1)}, makeMult, keepsSpace},
        {"madd", "v * mult + add", {perComponent("mult", 1), perComponent("add", 0)}, makeMAdd, keepsSpace},
        {"scale",
         "(v - pivot) * scale + pivot: contrast about a pivot",
         {required("scale"), number("pivot", 0)},
         twoNumbers<RU_ScaleFunc>,
         keepsSpace},
        {"gamma",
         "v ^ (1 / gamma), the sign kept: above 1 brightens",
         {perComponent("gamma", 1)},
         makeGamma,
         losesSpace},
        {"power", "v ^ expon, the sign kept", {required("expon")}, oneNumber<RU_PowerFunc>, losesSpace},
        {"raise",
         "base ^ v",
         {required("base")},
         oneNumber<RU_RaiseFunc>,
         losesSpace,
         false,
         "negative powers of 0 are 0"},
        {"log",
         "log of v to a base; values not above 0 stay, or become the replacement",
         {number("base", 10), optional("replacement")},
         numberWithReplacement<RU_LogFunc>,
         losesSpace},
        {"limit",
         "values below lower or above upper become that limit, or 0 with clamp=off",
         {optional("lower"), optional("upper"), onOff("clamp", true)},
         makeLimit,
         keepsSpace},
        {"quantize",
         "down to whole steps from an offset",
         {required("step"), number("offset", 0)},
         twoNumbers<RU_QuantizeFunc>,
         keepsSpace},
        {"floor", "down to a whole number", {}, plain<RU_FloorFunc>, keepsSpace},
        {"ceil", "up to a whole number", {}, plain<RU_CeilFunc>, keepsSpace},
        {"round", "to the nearest whole number", {}, plain<RU_RoundFunc>, keepsSpace},
        {"abs", "without the sign", {}, plain<RU_AbsFunc>, keepsSpace},
        {"negate", "-v", {}, plain<RU_NegateFunc>, keepsSpace},
        {"sign", "-1, 0 or 1", {}, plain<RU_SignFunc>, losesSpace},
        {"invert",
         "1 / v; 0 stays, or becomes the replacement",
         {optional("replacement")},
         withReplacement<RU_InvertFunc>,
         losesSpace,
         false,
         "0 is divided by"},
        {"sin",
         "sin(v * scale + shift), in radians",
         {number("scale", 1), number("shift", 0)},
         twoNumbers<RU_SinFunc>,
         losesSpace},
        {"tan",
         "tan(v * scale); at its poles v stays, or becomes the replacement",
         {number("scale", 1), optional("replacement")},
         numberWithReplacement<RU_TanFunc>,
         losesSpace,
         false,
         "what stays at poles is scaled"},
        {"asin",
         "asin(v) * scale; NaN stays, or becomes the replacement",
         {number("scale", 1), optional("replacement")},
         numberWithReplacement<RU_AsinFunc>,
         losesSpace,
         false,
         "it is right to 3 digits"},
        {"acos",
         "acos(v) * scale; NaN stays, or becomes the replacement",
         {number("scale", 1), optional("replacement")},
         numberWithReplacement<RU_AcosFunc>,
         losesSpace,
         false,
         "it is right to 3 digits"},
        {"atan",
         "atan(v) * scale",
         {number("scale", 1)},
         oneNumber<RU_AtanFunc>,
         losesSpace,
         false,
         "the scale is that of v"},
        {"sinh", "sinh(v * scale)", {number("scale", 1)}, oneNumber<RU_SinhFunc>, losesSpace},
        {"cosh", "cosh(v * scale)", {number("scale", 1)}, oneNumber<RU_CoshFunc>, losesSpace},
        {"tanh",
         "tanh(v * scale)",
         {number("scale", 1)},
         oneNumber<RU_TanhFunc>,
         losesSpace,
         false,
         "v is not scaled, and NaN comes of values above 44"},
    };
}

} // namespace host
