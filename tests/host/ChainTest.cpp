#include "images.h"

#include <host/chain/Chain.h>

#include <chrono>
#include <cmath>
#include <map>

namespace {

using host::Chain;
using host::Components;

float evaluate(const Chain& chain, float value, int component)
{
    const Chain::Built built = chain.build();
    built.head->buildPixelEngine();
    return built.head->processValue(value, component);
}

TEST(Chain, ReadsPositionsNamesPresetsAndScopes)
{
    EXPECT_EQ(Chain::fromText(" gamma 2.2,add   0.1 @rg ").text(), "gamma 2.2, add 0.1 @rg");
    EXPECT_EQ(Chain::fromText("log").text(), "log 10 none");
    EXPECT_EQ(Chain::fromText("log replacement=-1 base=2").text(), "log 2 -1");
    EXPECT_EQ(Chain::fromText("limit none 1@a").text(), "limit none 1 on @a");
    EXPECT_EQ(Chain::fromText("mult 1:0.5:0.25").text(), "mult 1:0.5:0.25:1");
    EXPECT_EQ(Chain::fromText("add 1:2:3").text(), "add 1:2:3:0");
    EXPECT_TRUE(Chain::fromText(" ").isEmpty());
}

TEST(Chain, ArgumentsReachTheFunctions)
{
    EXPECT_FLOAT_EQ(evaluate(Chain::fromText("madd 2 0.5"), 3.0f, 0), 6.5f);
    EXPECT_FLOAT_EQ(evaluate(Chain::fromText("mult 1:2:3, add 0:0:10"), 1.0f, 2), 13.0f);
    EXPECT_FLOAT_EQ(evaluate(Chain::fromText("scale 2 pivot=0.5"), 1.0f, 0), 1.5f);
    EXPECT_FLOAT_EQ(evaluate(Chain::fromText("limit 0.2 clamp=off"), 0.1f, 0), 0.0f);
    EXPECT_FLOAT_EQ(evaluate(Chain::fromText("limit 0.2"), 0.1f, 0), 0.2f);
    EXPECT_FLOAT_EQ(evaluate(Chain::fromText("log 10 replacement=-1"), -3.0f, 0), -1.0f);
    EXPECT_FLOAT_EQ(evaluate(Chain::fromText("invert"), 0.0f, 0), 0.0f);
    EXPECT_FLOAT_EQ(evaluate(Chain::fromText("gamma 1:2:1"), 0.25f, 1), 0.5f);
    EXPECT_FLOAT_EQ(evaluate(Chain::fromText("sin shift=1"), 0.0f, 0), std::sin(1.0f));
}

/// Some text that an argument reads.
std::string exampleOf(const host::Argument& argument)
{
    using Type = host::Argument::Type;
    const std::map<Type, std::string> examples = {{Type::PerComponent, "0.25:0.5:1:-2e-9"},
                                                  {Type::Switch, "off"},
                                                  {Type::Choice, "b"},
                                                  {Type::Colour, "1:0.5:-0.1"},
                                                  {Type::Matrix, "0:1:0:0;0:0:1:0;1:0:0:0;0.1:0:0:1"},
                                                  {Type::OptionalCurve, "0:0.5;0.3:1:0.5"},
                                                  {Type::Curves, "0:0;1:1|0:1;1:0|0:0;0.5:0.2:1;1:1"},
                                                  {Type::File, "'\"a b\".cube'"}};
    const auto found = examples.find(argument.type);
    return found != examples.end() ? found->second : "0.25";
}

TEST(Chain, EveryFunctionSurvivesBothForms)
{
    for (const host::Function& function : host::functions()) {
        std::string text = function.name;
        for (const host::Argument& argument : function.arguments)
            text.append(" ").append(exampleOf(argument));
        const Chain chain = Chain::fromText(text + ", " + text + " @gb");
        EXPECT_EQ(Chain::fromText(chain.text()).json(), chain.json());
        EXPECT_EQ(Chain::fromJson(chain.json(), "json").text(), chain.text());
        const bool builds = function.name != "lut"; // for want of a file
        EXPECT_TRUE(!builds || chain.build().head != nullptr) << text;
    }
}

TEST(Chain, ReadsJson)
{
    const char* list = R"([{"function": "gamma", "gamma": [2, 2, 1.5]},
                           {"function": "limit", "lower": 0, "upper": null, "clamp": false, "scope": "rg"}])";
    EXPECT_EQ(Chain::fromJson(list, "f").text(), "gamma 2:2:1.5:1, limit 0 none off @rg");
    EXPECT_EQ(Chain::fromJson("{\"chain\": " + std::string(list) + "}", "f").text(),
              Chain::fromJson(list, "f").text());
}

TEST(Chain, ReadsKeysAsWordsAndAsLists)
{
    const std::pair<const char*, const char*> texts[] = {
        {"gamma 2, curve 0 0, 0.5 0.6 1, 1 1, add 1", "gamma 2, curve 0:0;0.5:0.6:1;1:1 off, add 1"},
        {"curve -1 .5,+2 1|0 0, 1 1 | 0:0, 1:1 on @rb", "curve -1:0.5;2:1|0:0;1:1|0:0;1:1 on @rb"},
        {"curve 0 0 extend=on @g, 1 1", "curve 0:0;1:1 on @g"},
        {"curve extend=on keys=0:0;1:1", "curve 0:0;1:1 on"},
        {"huecurve sat=0:0.5;0.33:0.8", "huecurve none 0:0.5;0.33:0.8 none"},
        {"huecurve sat='0 .5, 0.33 0.8', abs", "huecurve none 0:0.5;0.33:0.8 none, abs"},
        {"curve ' 0 0,.5 0.6 : 1;1:1' on", "curve 0:0;0.5:0.6:1;1:1 on"},
        {"vector 1:0:0;0:1:0;0:0:1;.5:0:1e-99", "vector 1:0:0:0:0:1:0:0:0:0:1:0:0.5:0:0:1"},
    };
    for (const auto& [text, expected] : texts)
        EXPECT_EQ(Chain::fromText(text).text(), expected);
    EXPECT_EQ(
        Chain::fromJson(R"([{"function": "curve", "keys": [[0, 0], [0.5, 0.6, 1], [1, 1]], "extend": true},
                                  {"function": "curve", "keys": [[[0, 0], [1, 1]], [[0, 0], [1, 2]],
                                                                 [[0, 0, 1], [1, 3]]]}])",
                        "f")
            .text(),
        "curve 0:0;0.5:0.6:1;1:1 on, curve 0:0;1:1|0:0;1:2|0:0:1;1:3 off");

    // straight lines, one for each colour; alpha has none
    const Chain lines = Chain::fromText("curve 0 0 1, 1 1 1 | 0 0 1, 1 2 1 | 0 0 1, 1 3 1 extend=on");
    EXPECT_EQ(lines.build().components, (Components{true, true, true, false}));
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(evaluate(lines, 2.0f, c), 2.0f * static_cast<float>(c + 1), 1e-3f);
}

TEST(Chain, ErrorsNameTheSlipAndTheNearestName)
{
    const std::pair<const char*, const char*> texts[] = {
        {"gama 2", "unknown function 'gama'; did you mean 'gamma'?"},
        {"quant 2", "did you mean 'quantize'?"},
        {"gamma", "gamma: 'gamma' is missing; usage: gamma GAMMA"},
        {"gamma 1 2", "'2' is one argument too many"},
        {"log bse=3", "unknown argument 'bse'; did you mean 'base'?"},
        {"add 1 add=2", "'add' is given twice"},
        {"add inf", "'inf' is no value for 'add'"},
        {"add 1e99", "'1e99' is no value"},
        {"add 1x", "'1x' is no value"},
        {"mult 1:2", "'1:2' is no value"},
        {"mult 1:2:3:4:5", "'1:2:3:4:5' is no value"},
        {"limit 0 1 yes", "expected on or off"},
        {"abs @rgz", "unknown component 'z'"},
        {"abs @", "a scope is empty"},
        {"abs @gg", "twice in scope"},
        {"abs @r @b", "one scope too many"},
        {"abs,", "missing beside a comma"},
        {"gamma 2,2", "gamma: '2' after a comma is no function, and 'gamma' has no list of numbers"},
        {"component x", "'x' is no value for 'component'; expected r, g, b, a"},
        {"vector 1:2:3:4", "expected 9 or 16 numbers"},
        {"vector 1:0;0:0:1:0;0:0:1", "expected 9 or 16 numbers"},
        {"vector 1:0:0:0;0:1:0:0;0:0:1:0", "or 12 in 4 rows"},
        {"abs \"", "a quote is not closed"},
        {"huecurve 0:0;1:1|0:0;1:1", "is 2 curves; expected one, as in"},
        {"replace 1:0 0:0:1", "expected red, green and blue as in 1:0.5:0"},
        {"replace 1:0:0 0:1:0 -1", "'-1' is no value for 'inner'; expected a number of at least 0"},
        {"curve", "curve: 'keys' is missing; usage: curve KEYS [EXTEND=off]"},
        {"curve 0 0, .5, 1 1", "curve: '.5' is no key of a curve; expected x and y"},
        {"curve 0 0, 1 1 1 1", "'1 1 1 1' is no key"},
        {"curve 0 0 | 0 0, 1 1", "the curve '0 0' has one key; expected two or more"},
        {"curve 0 0, 1 1 | 0 0, 1 1", "is 2 curves; expected one, or one each for red, green, blue"},
        {"curve 0 0, 1 1 keys=0:0;1:1", "'keys' is given twice"},
        {"curve 0 0, 1 1, a b", "entry 2: unknown function 'a'"},
        {"curve 0 0, 1 nan", "'1 nan' is no key"},
        {"curve 0 0, 1 -2e18", "expected x and y from -1e18 to 1e18"},
        {"curve 0 0, 1 1 1.5", "expected a weight from 0 to 1"},
        {"curve '0 0,, 1 1'", "'' is no key"},
        {"huecurve sat=0:0.5, 1:0.5", "or, in quotes, \"0 0, 0.5 0.6, 1 1\""},
        {"huecurve sat=0:0.5;1:1, 1:0.5", "keys with ';' between them, or in quotes"},
        {"curve 0 0, 1 1 maybe", "'maybe' is no value for 'extend'"},
        {"abs, curve 0 0, 1 1, gamma x", "entry 3: gamma: 'x' is no value"},
        {"Exposure 1", "unknown function 'Exposure'; use mult: an exposure of s stops is mult 2^s"},
    };
    for (const auto& [text, expected] : texts)
        EXPECT_TRUE(says(errorOf([t = text] { Chain::fromText(t); }), expected)) << text;

    const std::pair<const char*, const char*> jsons[] = {
        {"[", "parse error"},
        {"3", "expected a list"},
        {"[3]", "instead of 3"},
        {R"([{"function": "add"}])", "'add' is missing"},
        {R"([{"function": "add", "add": {"r": 1}}])", "no value"},
        {R"([{"function": "add", "add": [2]}])", "no value"},
        {R"([{"function": "add", "add": 1, "add": 2}])", "'add' is given twice"},
        {R"([{"function": "lut", "file": null}])", "lut: 'file': expected a path instead of null"},
        {R"([{"function": "lut", "file": ["a.cube"]}])", "lut: 'file': expected a path"},
        {R"([{"function": "abs", "scope": null}])", "abs: 'scope': expected letters"},
        {R"([{"function": "add", "ad": 1}])", "did you mean 'add'?"},
        {R"([{"function": "abs"}, {"function": "gamma", "gamma": "x"}])", "entry 2: gamma: 'x' is no value"},
        {R"({"note": [1, 2], "chain": [1, {"function": [{}, {"a": 1, "a": 1}]}]})",
         "entry 2: 'a' is given twice"},
    };
    for (const auto& [json, expected] : jsons) {
        const auto read = [j = json] { Chain::fromJson(j, "look.json"); };
        EXPECT_TRUE(says(errorOf(read), expected, "'look.json': ")) << json;
    }
}

TEST(Chain, WhatMakesNoSenseIsSaidWhenItIsBuilt)
{
    const std::pair<const char*, const char*> texts[] = {
        {"replace 1:0:0 0:1:0 0.3 0.2", "replace: inner is 0.3 and outer 0.2"},
        {"levels gamma=0", "levels: a gamma of 0"},
        {"levels gammas=1:0:1", "levels: a gamma of 0"},
        {"luminance @a", "luminance: it leaves alpha alone"},
        {"linear @a", "linear: it leaves alpha alone"},
        {"curve 0 0, 1 1 | 0 0, 1 1 | 0 0, 1 1 @a", "curve: it leaves alpha alone"},
        {"huecurve '0 0.5, 2 0.5'", "huecurve: a key at 2"},
    };
    for (const auto& [text, expected] : texts) {
        const Chain chain = Chain::fromText(text);
        EXPECT_TRUE(says(errorOf([&] { chain.build(); }), "", expected)) << text;
        const Chain read = Chain::fromJson(chain.json(), "look.json");
        EXPECT_TRUE(
            says(errorOf([&] { read.build(); }), "", std::string("'look.json': entry 1: ") + expected))
            << text;
    }
    EXPECT_TRUE(
        says(errorOf([] { Chain::fromText("abs, levels gamma=0").build(); }), "", "entry 2: levels:"));
}

TEST(Chain, LongChainsTakeTimeInProportionAndDeepOnesAreRefused)
{
    constexpr size_t count = 30000; // half a minute where each entry looks at all others
    std::string text = "add 1";
    for (size_t i = 1; i < count; ++i)
        text += ", add 1";
    const auto begin = std::chrono::steady_clock::now();
    const Chain chain = Chain::fromJson(Chain::fromText(text).json(), "long.json");
    EXPECT_EQ(evaluate(chain, 0.0f, 0), static_cast<float>(count));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));

    const std::string open(100000, '['), close(100000, ']');
    for (const std::string& deep :
         {open, open + close, R"([{"function": "add", "add": )" + open + close + "}]"})
        EXPECT_TRUE(says(errorOf([&] { Chain::fromJson(deep, "deep.json"); }), "deeper than 32"));
}

/// Both ways of the curve in doubles.
double ofLinear(double v)
{
    const double size = std::abs(v);
    return std::copysign(size <= 0.0031308 ? size * 12.92 : 1.055 * std::pow(size, 1 / 2.4) - 0.055, v);
}

double toLinear(double v)
{
    const double size = std::abs(v);
    return std::copysign(size <= 0.04045 ? size / 12.92 : std::pow((size + 0.055) / 1.055, 2.4), v);
}

TEST(Chain, TheCurveOfSRGBIsExact)
{
    std::vector<float> values;
    for (int code = -65535; code <= 2 * 65535; ++code)
        values.push_back(static_cast<float>(code) / 65535.0f);
    for (const float value : {1e-40f, 3e-5f, 0.00313f, 0.00314f, 0.0404f, 0.0405f, 1000.0f, 65504.0f, 1e10f})
        values.insert(values.end(), {value, -value});
    std::vector<float> row(values.size());
    const auto count = static_cast<int64_t>(row.size());
    for (const auto& [name, reference] : {std::pair{"srgb", &ofLinear}, {"linear", &toLinear}}) {
        const Chain::Built built = Chain::fromText(name).build();
        EXPECT_EQ(built.components, (Components{true, true, true, false}));
        built.head->buildPixelEngine();
        built.head->processRow(values.data(), row.data(), count, 1);
        for (size_t i = 0; i < row.size(); ++i) {
            const double expected = reference(double{values[i]});
            ASSERT_NEAR(row[i], expected, std::abs(expected) * 5e-7 + 1e-44) << name << " of " << values[i];
            ASSERT_EQ(row[i], built.head->processValue(values[i], 1)) << name << " of " << values[i];
        }
    }
}

TEST(Chain, SaysWhatBecomesOfTheColourSpace)
{
    const std::pair<const char*, std::optional<std::string>> chains[] = {
        {"", {}},          {"mult 2, hsv 30", {}},          {"gamma 2", ""},      {"gamma 2 @a", {}},
        {"srgb", "sRGB"},  {"srgb, linear", "Linear"},      {"tohsv, add 1", ""}, {"srgb @r", ""},
        {"srgb, log", ""}, {"raise 2, srgb, add 1", "sRGB"}};
    for (const auto& [text, expected] : chains)
        EXPECT_EQ(Chain::fromText(text).colourSpace(), expected) << text;
}

TEST(Chain, ACommonScopeLeavesComponentsOutInsteadOfMakingThemDiffer)
{
    const Chain::Built common = Chain::fromText("gamma 2 @rgb, add 0.1 @rgb").build();
    EXPECT_EQ(common.components, (Components{true, true, true, false}));
    EXPECT_FALSE(common.head->isComponentDependent());

    const Chain::Built mixed = Chain::fromText("gamma 2 @r, add 0.1 @rg").build();
    EXPECT_EQ(mixed.components, (Components{true, true, false, false}));
    EXPECT_TRUE(mixed.head->isComponentDependent());

    EXPECT_FALSE(Chain::fromText("mult 2:2:2:2").build().head->isComponentDependent());
}

} // namespace
