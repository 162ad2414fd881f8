#include <host/chain/FunctionRows.h>
#include <host/chain/Values.h>

#include <host/text/Error.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cctype>

namespace host {

namespace {

/// What to use instead of names that people try.
struct Advice
{
    const char* names;
    const char* use;
};

constexpr Advice advices[] = {
    {"exposure expose stops", "mult: an exposure of s stops is mult 2^s, so that one stop is mult 2"},
    {"brightness brighten darken gain", "mult, or add for the same amount everywhere"},
    {"multiply mul times", "mult"},
    {"divide div", "mult: half is mult 0.5"},
    {"offset plus", "add"},
    {"subtract sub minus", "add: 0.1 less is add -0.1"},
    {"lift pedestal", "levels outblack=, or add"},
    {"blackpoint whitepoint", "levels inblack= inwhite="},
    {"contrast", "scale about a pivot, as in scale 1.2 0.18"},
    {"clamp clip", "limit, as in limit 0 1"},
    {"threshold", "limit, as in limit 0.5 clamp=off"},
    {"posterize posterise", "quantize, as in quantize 0.25"},
    {"negative complement inverse invertcolor invertcolour", "madd -1 1, which is 1 - v"},
    {"reciprocal", "invert"},
    {"saturate desaturate vibrance", "hsv: half the saturation is hsv sat=0.5"},
    {"grey gray greyscale grayscale monochrome bw luma", "luminance"},
    {"hueshift huerotate rotatehue", "hsv, with degrees, as in hsv 30"},
    {"whitebalance temperature tint balance colorbalance colourbalance", "mult, as in mult 1.1:1:0.9"},
    {"matrix colormatrix colourmatrix ccmatrix", "vector"},
    {"swap shuffle swizzle", "vector: red and blue change places with vector 0:0:1;0:1:0;1:0:0"},
    {"pow square", "power"},
    {"sqrt root", "power 0.5"},
    {"exp", "raise 2.7182818"},
    {"log2", "log 2"},
    {"log10", "log 10"},
    {"ln loge", "log 2.7182818"},
    {"rgb2hsv rgbtohsv", "tohsv"},
    {"hsv2rgb hsvtorgb", "fromhsv"},
    {"lookup cube lut1d", "lut"},
    {"tosrgb linear2srgb lineartosrgb encode", "srgb"},
    {"tolinear srgb2linear srgbtolinear linearize linearise decode degamma", "linear"},
};

} // namespace

const std::vector<Function>& functions()
{
    static const std::vector<Function> rows = [] {
        std::vector<Function> all;
        for (auto* topic : {numericFunctions, colourFunctions})
            for (Function& function : topic())
                all.push_back(std::move(function));
        return all;
    }();
    return rows;
}

const Function& functionOfName(const std::string& name)
{
    for (const Function& function : functions())
        if (function.name == name)
            return function;
    std::string lower = name;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const Advice& advice : advices)
        for (const std::string& known : wordsOf(advice.names))
            if (known == lower)
                refuse("unknown function '" + name + "'; use " + advice.use);
    std::vector<std::string> known;
    for (const Function& function : functions())
        known.push_back(function.name);
    refuseName("unknown function", name, known);
}

std::string Function::usage() const
{
    std::string text = name;
    for (const Argument& argument : arguments) {
        std::string upper = argument.name;
        std::transform(upper.begin(), upper.end(), upper.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        if (!argument.choices.empty())
            upper = joined(argument.choices, "|");
        text += argument.required ? " " + upper
                                  : " [" + upper + "=" + valueText(argument, presetOf(argument)) + "]";
    }
    return text;
}

const Argument* Function::find(const std::string& argument) const
{
    const auto found = std::find_if(arguments.begin(), arguments.end(),
                                    [&](const Argument& candidate) { return candidate.name == argument; });
    return found != arguments.end() ? &*found : nullptr;
}

bool Function::takesKeys() const
{
    return !arguments.empty() && arguments.front().type == Argument::Type::Curves;
}

} // namespace host
