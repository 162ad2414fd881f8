#include <PXL/PXL_Lookup.h>
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
#include <RU/pixelfunc/RU_LevelsFunc.h>
#include <RU/pixelfunc/RU_LimitFunc.h>
#include <RU/pixelfunc/RU_LogFunc.h>
#include <RU/pixelfunc/RU_LookupTableFunc.h>
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
#include <RU/pixelfunc/ru_FunctionForms.h>
#include <reference/Functions.h>

#include <cmath>

namespace reference {

namespace {

template <class Expression>
constexpr const char* kernelName = nullptr;
#define NAME(EXPRESSION)                                                                                     \
    template <>                                                                                              \
    constexpr const char* kernelName<EXPRESSION> = #EXPRESSION;
RU_FOR_EACH_EXPRESSION(NAME)
#undef NAME

using Exact = std::function<double(float, int)>;

/// Collects the catalogue; shader text and constants hold until the next call of shader().
class Catalogue
{
public:
    void shader(std::string text, std::vector<std::string> constants = {})
    {
        text_ = std::move(text);
        names_ = std::move(constants);
    }

    template <class F>
    void add(F* function, const std::vector<std::vector<float>>& values, double ulp, Exact exact)
    {
        using Expression = decltype(ru_Forms<F>::expression(*function, 0));
        addRun(kernelName<Expression>, function, run<F, Expression>, values, ulp, std::move(exact));
    }

    /// A function whose row form runs several kernels, that of Expression among them.
    template <class Expression>
    void addRows(RU_PixelFunction* function, const std::vector<std::vector<float>>& values, double ulp,
                 Exact exact)
    {
        const auto runRow = [](const RU_PixelFunction& f, PXL_InstructionSet, float* row, int64_t count,
                               int component) {
            f.getRowFunction()(const_cast<RU_PixelFunction*>(&f), row, count, component);
        };
        addRun(kernelName<Expression>, function, runRow, values, ulp, std::move(exact));
    }

    std::vector<Function> all;

private:
    void addRun(const char* kernel, RU_PixelFunction* function, decltype(Function::run) runKernel,
                const std::vector<std::vector<float>>& values, double ulp, Exact exact)
    {
        Function entry{kernel,
                       "",
                       std::shared_ptr<RU_PixelFunction>(function),
                       false,
                       std::move(exact),
                       ulp,
                       0.0,
                       text_,
                       {},
                       runKernel};
        for (size_t i = 0; i < names_.size(); ++i) {
            entry.constants.push_back({names_[i], values.at(i)});
            entry.parameters += " " + names_[i] + " " + std::to_string(values[i][0]);
            const std::vector<float> uniform(values[i].size(), values[i][0]);
            entry.perComponent |= values[i] != uniform;
        }
        all.push_back(std::move(entry));
    }

    template <class F, class Expression>
    static void run(const RU_PixelFunction& function, PXL_InstructionSet set, float* values, int64_t count,
                    int component)
    {
        const Expression expression = ru_Forms<F>::expression(function, component);
        const ru_RowKernel<Expression>& kernel = ru_expressionRows(set);
        kernel.run(expression, values, count);
    }

    std::string text_;
    std::vector<std::string> names_;
};

/// One line of a shader for each component, with its letter for each %.
std::string perComponent(const std::string& line, const std::string& indent)
{
    std::string text;
    for (const char c : std::string("rgba")) {
        std::string one = line;
        for (size_t at; (at = one.find('%')) != std::string::npos;)
            one.replace(at, 1, std::string("value.") + c);
        text += (c == 'r' ? "" : ",\n" + indent) + one;
    }
    return text + ");\n";
}

std::string guarded(const std::string& condition, const std::string& result, bool useReplacement,
                    const std::string& indent = "    ", const std::string& firstIndent = "\n    ")
{
    return "value = VEC4(" + firstIndent +
           perComponent("(" + condition + ") ? " + result + " : " + (useReplacement ? "replacement" : "%"),
                        indent);
}

double powerOf(double v, double exponent)
{
    return v < 0 ? -std::pow(-v, exponent) : std::pow(v, exponent);
}

double gammaOf(double v, float igamma)
{
    return v == 0 ? 0.0 : v == 1 ? 1.0 : powerOf(v, igamma);
}

std::vector<float> four(float v)
{
    return {v, v, v, v};
}

/// Each step rounds to float, and no other result will do.
void addArithmetic(Catalogue& list)
{
    list.shader("value += VEC4(add);", {"add"});
    list.add(new RU_AddFunc(0.3f), {{0.3f}}, 0, [](float v, int) { return v + 0.3f; });
    list.shader("value *= VEC4(mult);", {"mult"});
    list.add(new RU_MultFunc(-1.7f), {{-1.7f}}, 0, [](float v, int) { return v * -1.7f; });

    list.shader("value = value *VEC4(mult) + VEC4(add);", {"mult", "add"});
    list.add(new RU_MAddFunc(1.1f, -0.1f), {four(1.1f), four(-0.1f)}, 0,
             [](float v, int) { return v * 1.1f + -0.1f; });
    static const std::vector<float> mult = {1.1f, 0.7f, -2.0f, 0.0f}, add = {0.1f, -0.3f, 1.0f, 0.5f};
    list.add(new RU_MAddFunc(mult.data(), add.data()), {mult, add}, 0,
             [](float v, int c) { return v * mult[static_cast<size_t>(c)] + add[static_cast<size_t>(c)]; });

    list.shader("value = (value - VEC4(pivot)) * VEC4(scale) + VEC4(pivot);", {"scale", "pivot"});
    list.add(new RU_ScaleFunc(1.7f, 0.435f), {{1.7f}, {0.435f}}, 0,
             [](float v, int) { return (v - 0.435f) * 1.7f + 0.435f; });
    list.shader("value = floor((value - VEC4(offset)) / VEC4(step)) * VEC4(step)+ VEC4(offset);",
                {"offset", "step"});
    for (const float step : {0.1f, -0.25f, 0.0f})
        list.add(new RU_QuantizeFunc(step, 0.05f), {{0.05f}, {step}}, 0, [step](float v, int) {
            const float steps = std::floor((v - 0.05f) / step);
            return steps * step + 0.05f;
        });
}

void addRounding(Catalogue& list)
{
    list.shader("value = abs(value);\n");
    list.add(new RU_AbsFunc, {}, 0, [](float v, int) { return std::abs(v); });
    list.shader("value = -value;\n");
    list.add(new RU_NegateFunc, {}, 0, [](float v, int) { return -v; });
    list.shader("value = 1.0/value;\n");
    for (const bool replace : {false, true})
        list.add(new RU_InvertFunc(replace, 7.0f), {}, 0, [=](float v, int) {
            return v != 0 ? 1.0f / v : replace ? 7.0f : v;
        });
    list.shader("value = sign(value);\n");
    list.add(new RU_SignFunc, {}, 0, [](float v, int) { return v < 0 ? -1.0 : v > 0 ? 1.0 : 0.0; });
    list.shader("value = floor(value);\n");
    list.add(new RU_FloorFunc, {}, 0, [](float v, int) { return std::floor(v); });
    list.shader("value = ceil(value);\n");
    list.add(new RU_CeilFunc, {}, 0, [](float v, int) { return std::ceil(v); });
    list.shader("value = floor(value + VEC4(0.5f));\n");
    list.add(new RU_RoundFunc, {}, 0, [](float v, int) { return std::floor(v + 0.5f); });
}

void addLimits(Catalogue& list)
{
    const std::string lower = "value *= sign(sign(value-VEC4(lower)) + VEC4(1.0f));\n";
    const std::string upper = "value *= sign(sign(VEC4(upper)-value) + VEC4(1.0f));\n";
    const auto add = [&](bool useLower, float low, bool useUpper, float high, bool clamp) {
        std::vector<std::vector<float>> values;
        if (useLower)
            values.push_back({low});
        if (useUpper)
            values.push_back({high});
        list.add(new RU_LimitFunc(useLower, low, useUpper, high, clamp), values, 0, [=](float v, int) {
            const float raised = useLower && v < low ? (clamp ? low : 0.0f) : v;
            return useUpper && raised > high ? (clamp ? high : 0.0f) : raised;
        });
    };
    for (const bool clamp : {false, true}) {
        list.shader("");
        add(false, 0.2f, false, 0.8f, clamp);
        list.shader(clamp ? "value = max(value, VEC4(lower));" : lower, {"lower"});
        add(true, 0.2f, false, 0.1f, clamp);
        list.shader(clamp ? "value = min(value, VEC4(upper));" : upper, {"upper"});
        add(false, 0.9f, true, 0.8f, clamp);
        list.shader(clamp ? "value = clamp(value, VEC4(lower), VEC4(upper));" : lower + upper,
                    {"lower", "upper"});
        add(true, 0.25f, true, 1.5f, clamp);
        add(true, 0.5f, true, -0.5f, clamp); // the upper test sees what the lower one made
    }
}

void addPowers(Catalogue& list)
{
    list.shader("value = sign(value) * pow( abs(value), VEC4(igamma) );", {"igamma"});
    for (const float gamma : {2.2f, 0.0f, -0.5f})
        list.add(new RU_GammaFunc(gamma), {four(1.0f / gamma)}, 0.55,
                 [=](float v, int) { return gammaOf(v, 1.0f / gamma); });
    static const std::vector<float> igamma = {1 / 1.0f, 1 / 1.8f, 1 / 0.45f, 1 / -2.0f};
    list.add(new RU_GammaFunc(1.0f, 1.8f, 0.45f, -2.0f), {igamma}, 0.55,
             [](float v, int c) { return gammaOf(v, igamma[static_cast<size_t>(c)]); });

    list.shader("value = sign(value) * pow(abs(value), VEC4(expon));\n", {"expon"});
    for (const float expon : {2.0f, 0.4f, -1.0f, 3.0f, 0.0f})
        list.add(new RU_PowerFunc(expon), {{expon}}, 0.55, [=](float v, int) { return powerOf(v, expon); });
    list.shader("value = sign(VEC4(base)) * pow(abs(VEC4(base)), value);\n", {"base"});
    for (const float base : {2.0f, 0.3f, -3.0f, 1.0f, 0.0f})
        list.add(new RU_RaiseFunc(base), {{base}}, 0.55, [=](float v, int) {
            return base < 0 ? -std::pow(-double(base), v) : std::pow(double(base), v);
        });

    for (const bool replace : {false, true}) {
        const std::string indent = replace ? "   " : "             ";
        list.shader(guarded("% > 0.0f", "log(%)*base", replace, indent, replace ? "\n   " : ""),
                    {"base", "replacement"});
        for (const float base : {10.0f, 0.5f, -2.0f, 1.0f, 0.0f}) {
            const float k =
                base == 0.0f ? HUGE_VALF : static_cast<float>(1.0 / std::log(std::abs(double(base))));
            list.add(new RU_LogFunc(base, replace, -1.5f), {{k}, {-1.5f}}, 2.0, [=](float v, int) {
                const double log = std::log(double(v));
                return v > 0 ? (std::isinf(k) ? log * k : log / std::log(std::abs(double(base))))
                             : double(replace ? -1.5f : v);
            });
        }
    }
}

/// Results that are scaled are rounded twice.
void addTrigonometry(Catalogue& list)
{
    list.shader("value = sin(value * VEC4(scale) + VEC4(shift));\n", {"scale", "shift"});
    list.add(new RU_SinFunc(2.1f, 0.5f), {{2.1f}, {0.5f}}, 0.55,
             [](float v, int) { return std::sin(double(v * 2.1f + 0.5f)); });
    list.shader("value = atan(value *VEC4(scale));\n", {"scale"});
    list.add(new RU_AtanFunc(0.6f), {{0.6f}}, 1.6, [](float v, int) { return std::atan(double(v)) * 0.6f; });

    for (const bool replace : {false, true}) {
        list.shader("value *= VEC4(scale);\n" + guarded("abs(%)!=1.5708f", "tan(%)", replace),
                    {"scale", "replacement"});
        for (const float scale : {1.0f, 2.0f})
            list.add(new RU_TanFunc(scale, replace, 9.0f), {{scale}, {9.0f}}, 0.55, [=](float v, int) {
                const bool pole = std::abs(v * scale) == 1.5707964f;
                return pole ? (replace ? 9.0f : v) : std::tan(double(v * scale));
            });
        std::vector<std::string> limited = {"scale"};
        if (replace)
            limited.push_back("replacement");
        const auto replaced = [=](float v) { return double(replace ? 9.0f : v); };
        list.shader(guarded("abs(%)<=1.0f", "asin(%)", replace) + "value *= VEC4(scale);\n", limited);
        list.add(new RU_AsinFunc(0.6f, replace, 9.0f), {{0.6f}, {9.0f}}, 1.6,
                 [=](float v, int) { return std::isnan(v) ? replaced(v) : std::asin(double(v)) * 0.6f; });
        list.shader(guarded("abs(%)<=1.0f", "acos(%)", replace) + "value *= VEC4(scale);\n", limited);
        list.add(new RU_AcosFunc(0.6f, replace, 9.0f), {{0.6f}, {9.0f}}, 1.6,
                 [=](float v, int) { return std::isnan(v) ? replaced(v) : std::acos(double(v)) * 0.6f; });
    }
}

void addHyperbolics(Catalogue& list)
{
    const auto exponentials = [](const std::string& sign) {
        return "value = (exp( value*VEC4(scale)) " + sign +
               "\n              exp(-value*VEC4(scale)))*VEC4(0.5f);\n";
    };
    list.shader(exponentials("-"), {"scale"});
    list.add(new RU_SinhFunc(1.5f), {{1.5f}}, 0.55, [](float v, int) { return std::sinh(double(v * 1.5f)); });
    list.shader(exponentials("+"), {"scale"});
    list.add(new RU_CoshFunc(0.7f), {{0.7f}}, 0.55, [](float v, int) { return std::cosh(double(v * 0.7f)); });
    list.shader("value = (exp(VEC4(2.0f) * value) - VEC4(1.0f)) /\n"
                "        (exp(VEC4(2.0f) * value) + VEC4(1.0f));\n");
    list.add(new RU_TanhFunc(1.3f), {}, 0.55, [](float v, int) { return std::tanh(double(v * 1.3f)); });
}

void addLookups(Catalogue& list)
{
    std::string text = "VEC4 place = clamp((value - VEC4(start)) * VEC4(scale), VEC4(0.0f), VEC4(last));\n"
                       "VEC4 below = floor(place);\n"
                       "VEC4 above = min(below + VEC4(1.0f), VEC4(last));\n";
    const std::string rows = "0101";
    for (size_t c = 0; c < 4; ++c) {
        std::string line = "value.% = mix(ABS_lookup7(INT(below.%), #), ABS_lookup7(INT(above.%), #), "
                           "place.% - below.%);\n";
        for (char& letter : line)
            letter = letter == '%' ? "rgba"[c] : letter == '#' ? rows[c] : letter;
        text += line;
    }
    list.shader(text, {"start", "scale", "last"});
    static const std::vector<float> samples = {0.25f, -1.0f, 0.5f,   3.0f, 2.0f,
                                               0.0f,  -0.5f, 0.125f, 1.0f, 4.0f};
    static PXL_Lookup table(-0.5f, 2.0f, 2, samples);
    list.add(new RU_LookupTableFunc(&table), {{-0.5f}, {1.6f}, {4.0f}}, 0.51, [](float v, int c) {
        const double place = v > -0.5 ? std::min((v + 0.5) * 1.6, 4.0) : 0.0; // NaN: the first
        const auto below = static_cast<size_t>(std::floor(place));
        const float* channel = samples.data() + 5 * (c % 2);
        const double fraction = place - static_cast<double>(below);
        return fraction == 0 ? channel[below]
                             : channel[below] + (double(channel[below + 1]) - channel[below]) * fraction;
    });
    list.all.back().perComponent = true;
    list.all.back().least = 0.25;
}

/// Gamma, then the line through two points.
double levelOf(double v, float igamma, double inBlack, double inWhite, double outBlack, double outWhite)
{
    const double black = gammaOf(inBlack, igamma), white = gammaOf(inWhite, igamma);
    const double slope = (outWhite - outBlack) / (white - black);
    return slope * gammaOf(v, igamma) + (outBlack - slope * black);
}

void addLevels(Catalogue& list)
{
    const std::vector<std::string> constants = {"igamma",  "factor",  "addend",
                                                "gigamma", "gfactor", "gaddend"};
    const std::string componentLine = "value = value * VEC4(factor) + VEC4(addend);\n";
    const std::string line = "value = value * VEC4(gfactor) + VEC4(gaddend);\n";
    const std::string componentGamma = "value = sign(value) * pow(abs(value), VEC4(igamma));\n";
    const std::string gamma = "value = sign(value) * pow(abs(value), VEC4(gigamma));\n";

    list.shader(componentLine + line, constants);
    list.addRows<ru_MAdd>(new RU_LevelsFunc(0.25f, 0.75f, 1, 0, 2, 0.125f, 0.5f, 1, 1, 0.25f, 1.5f),
                          {four(1), four(2.5f), four(-1), {1}, {4}, {-0.875f}}, 0,
                          [](float v, int) { return v * 10.0f + -4.875f; });

    static const float inBlacks[] = {0, 0.25f, -0.25f, 0}, inWhites[] = {1, 4, 2.25f, 0},
                       gammas[] = {1, 2, 2, 0.5f}, outBlacks[] = {0.125f, 1, 0.5f, 1},
                       outWhites[] = {0.625f, 4, -1.5f, 2};
    static const std::vector<float> igammas = {1, 0.5f, 0.5f, 2};
    const std::vector<float> factors = {0.5f, 2, -1, 0}, addends = {0.125f, 0, 0, 1.5f};
    static const auto component = [](float v, int i) {
        const auto c = static_cast<size_t>(i);
        return c == 3 ? (std::isfinite(v * v) ? 1.5 : double(NAN)) // 0 times infinity
                      : levelOf(v, igammas[c], inBlacks[c], inWhites[c], outBlacks[c], outWhites[c]);
    };
    list.shader(componentGamma + componentLine + line, constants);
    list.addRows<ru_GammaLine>(
        new RU_LevelsFunc(0, 2, 1, 0, 1, -0.25f, inBlacks, inWhites, gammas, outBlacks, outWhites),
        {igammas, factors, addends, {1}, {0.5f}, {-0.25f}}, 3.0,
        [](float v, int c) { return component(v, c) * 0.5 - 0.25; });
    list.all.back().least = 0.5;
    list.shader(componentGamma + componentLine + gamma + line, constants);
    list.addRows<ru_GammaLine>(
        new RU_LevelsFunc(1, 2, 0.5f, 0, 3, 0, inBlacks, inWhites, gammas, outBlacks, outWhites),
        {igammas, factors, addends, {2}, {1}, {-1}}, 8.0,
        [](float v, int c) { return levelOf(component(v, c), 2, 1, 2, 0, 3); });
    list.all.back().least = 1.0;
}

} // namespace

const std::vector<Function>& functions()
{
    static const std::vector<Function> all = [] {
        Catalogue list;
        addArithmetic(list);
        addRounding(list);
        addLimits(list);
        addPowers(list);
        addTrigonometry(list);
        addHyperbolics(list);
        addLookups(list);
        addLevels(list);
        return list.all;
    }();
    return all;
}

} // namespace reference
