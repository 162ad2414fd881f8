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

/// Collects the catalogue. What add() answers holds until the next call.
class Catalogue
{
public:
    template <class F>
    Function& add(F* function, double ulp, Exact exact)
    {
        using Expression = decltype(ru_Forms<F>::expression(*function, 0));
        return addRun(kernelName<Expression>, function, run<F, Expression>, ulp, std::move(exact));
    }

    /// A function whose row form runs several kernels, that of Expression among them.
    template <class Expression>
    Function& addRows(RU_PixelFunction* function, double ulp, Exact exact)
    {
        const auto runRow = [](const RU_PixelFunction& f, PXL_InstructionSet, float* row, int64_t count,
                               int component) {
            f.getRowFunction()(const_cast<RU_PixelFunction*>(&f), row, count, component);
        };
        return addRun(kernelName<Expression>, function, runRow, ulp, std::move(exact));
    }

    std::vector<Function> all;

private:
    Function& addRun(const char* kernel, RU_PixelFunction* function, decltype(Function::run) runKernel,
                     double ulp, Exact exact)
    {
        return all.emplace_back(
            Function{kernel, std::shared_ptr<RU_PixelFunction>(function), std::move(exact), ulp, runKernel});
    }

    template <class F, class Expression>
    static void run(const RU_PixelFunction& function, PXL_InstructionSet set, float* values, int64_t count,
                    int component)
    {
        const Expression expression = ru_Forms<F>::expression(function, component);
        const ru_RowKernel<Expression>& kernel = ru_expressionRows(set);
        kernel.run(expression, values, count);
    }
};

double powerOf(double v, double exponent)
{
    return v < 0 ? -std::pow(-v, exponent) : std::pow(v, exponent);
}

double gammaOf(double v, float igamma)
{
    return v == 0 ? 0.0 : v == 1 ? 1.0 : powerOf(v, igamma);
}

/// Each step rounds to float, and no other result will do.
void addArithmetic(Catalogue& list)
{
    list.add(new RU_AddFunc(0.3f), 0, [](float v, int) { return v + 0.3f; });
    list.add(new RU_MultFunc(-1.7f), 0, [](float v, int) { return v * -1.7f; });

    list.add(new RU_MAddFunc(1.1f, -0.1f), 0, [](float v, int) { return v * 1.1f + -0.1f; });
    static const std::vector<float> mult = {1.1f, 0.7f, -2.0f, 0.0f}, add = {0.1f, -0.3f, 1.0f, 0.5f};
    list.add(new RU_MAddFunc(mult.data(), add.data()), 0,
             [](float v, int c) { return v * mult[static_cast<size_t>(c)] + add[static_cast<size_t>(c)]; })
        .perComponent = true;

    list.add(new RU_ScaleFunc(1.7f, 0.435f), 0, [](float v, int) { return (v - 0.435f) * 1.7f + 0.435f; });
    for (const float step : {0.1f, -0.25f, 0.0f})
        list.add(new RU_QuantizeFunc(step, 0.05f), 0, [step](float v, int) {
            const float steps = std::floor((v - 0.05f) / step);
            return steps * step + 0.05f;
        });
}

void addRounding(Catalogue& list)
{
    list.add(new RU_AbsFunc, 0, [](float v, int) { return std::abs(v); });
    list.add(new RU_NegateFunc, 0, [](float v, int) { return -v; });
    for (const bool replace : {false, true})
        list.add(new RU_InvertFunc(replace, 7.0f), 0, [=](float v, int) {
            return v != 0 ? 1.0f / v : replace ? 7.0f : v;
        });
    list.add(new RU_SignFunc, 0, [](float v, int) { return v < 0 ? -1.0 : v > 0 ? 1.0 : 0.0; });
    list.add(new RU_FloorFunc, 0, [](float v, int) { return std::floor(v); });
    list.add(new RU_CeilFunc, 0, [](float v, int) { return std::ceil(v); });
    list.add(new RU_RoundFunc, 0, [](float v, int) { return std::floor(v + 0.5f); });
}

void addLimits(Catalogue& list)
{
    const auto add = [&](bool useLower, float low, bool useUpper, float high, bool clamp) {
        list.add(new RU_LimitFunc(useLower, low, useUpper, high, clamp), 0, [=](float v, int) {
            const float raised = useLower && v < low ? (clamp ? low : 0.0f) : v;
            return useUpper && raised > high ? (clamp ? high : 0.0f) : raised;
        });
    };
    for (const bool clamp : {false, true}) {
        add(false, 0.2f, false, 0.8f, clamp);
        add(true, 0.2f, false, 0.1f, clamp);
        add(false, 0.9f, true, 0.8f, clamp);
        add(true, 0.25f, true, 1.5f, clamp);
        add(true, 0.5f, true, -0.5f, clamp); // the upper test sees what the lower one made
    }
}

void addPowers(Catalogue& list)
{
    for (const float gamma : {2.2f, 0.0f, -0.5f})
        list.add(new RU_GammaFunc(gamma), 0.55, [=](float v, int) { return gammaOf(v, 1.0f / gamma); });
    static const std::vector<float> igamma = {1 / 1.0f, 1 / 1.8f, 1 / 0.45f, 1 / -2.0f};
    list.add(new RU_GammaFunc(1.0f, 1.8f, 0.45f, -2.0f), 0.55,
             [](float v, int c) { return gammaOf(v, igamma[static_cast<size_t>(c)]); })
        .perComponent = true;

    for (const float expon : {2.0f, 0.4f, -1.0f, 3.0f, 0.0f})
        list.add(new RU_PowerFunc(expon), 0.55, [=](float v, int) { return powerOf(v, expon); });
    for (const float base : {2.0f, 0.3f, -3.0f, 1.0f, 0.0f})
        list.add(new RU_RaiseFunc(base), 0.55, [=](float v, int) {
            return base < 0 ? -std::pow(-double(base), v) : std::pow(double(base), v);
        });

    for (const bool replace : {false, true}) {
        for (const float base : {10.0f, 0.5f, -2.0f, 1.0f, 0.0f}) {
            const double scale = std::log(std::abs(double(base)));
            list.add(new RU_LogFunc(base, replace, -1.5f), 2.0, [=](float v, int) {
                const double log = std::log(double(v));
                return v > 0 ? log * (scale == 0 || base == 0 ? HUGE_VAL : 1 / scale)
                             : double(replace ? -1.5f : v);
            });
        }
    }
}

/// Results that are scaled are rounded twice.
void addTrigonometry(Catalogue& list)
{
    list.add(new RU_SinFunc(2.1f, 0.5f), 0.55,
             [](float v, int) { return std::sin(double(v * 2.1f + 0.5f)); });
    list.add(new RU_AtanFunc(0.6f), 1.6, [](float v, int) { return std::atan(double(v)) * 0.6f; });

    for (const bool replace : {false, true}) {
        for (const float scale : {1.0f, 2.0f})
            list.add(new RU_TanFunc(scale, replace, 9.0f), 0.55, [=](float v, int) {
                const bool pole = std::abs(v * scale) == 1.5707964f;
                return pole ? (replace ? 9.0f : v) : std::tan(double(v * scale));
            });
        const auto replaced = [=](float v) { return double(replace ? 9.0f : v); };
        list.add(new RU_AsinFunc(0.6f, replace, 9.0f), 1.6,
                 [=](float v, int) { return std::isnan(v) ? replaced(v) : std::asin(double(v)) * 0.6f; });
        list.add(new RU_AcosFunc(0.6f, replace, 9.0f), 1.6,
                 [=](float v, int) { return std::isnan(v) ? replaced(v) : std::acos(double(v)) * 0.6f; });
    }
}

void addHyperbolics(Catalogue& list)
{
    list.add(new RU_SinhFunc(1.5f), 0.55, [](float v, int) { return std::sinh(double(v * 1.5f)); });
    list.add(new RU_CoshFunc(0.7f), 0.55, [](float v, int) { return std::cosh(double(v * 0.7f)); });
    list.add(new RU_TanhFunc(1.3f), 0.55, [](float v, int) { return std::tanh(double(v * 1.3f)); });
}

void addLookups(Catalogue& list)
{
    static const std::vector<float> samples = {0.25f, -1.0f, 0.5f,   3.0f, 2.0f,
                                               0.0f,  -0.5f, 0.125f, 1.0f, 4.0f};
    static PXL_Lookup table(-0.5f, 2.0f, 2, samples);
    list.add(new RU_LookupTableFunc(&table), 0.51, [](float v, int c) {
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
    list.addRows<ru_MAdd>(new RU_LevelsFunc(0.25f, 0.75f, 1, 0, 2, 0.125f, 0.5f, 1, 1, 0.25f, 1.5f), 0,
                          [](float v, int) { return v * 10.0f + -4.875f; });

    static const float inBlacks[] = {0, 0.25f, -0.25f, 0}, inWhites[] = {1, 4, 2.25f, 0},
                       gammas[] = {1, 2, 2, 0.5f}, outBlacks[] = {0.125f, 1, 0.5f, 1},
                       outWhites[] = {0.625f, 4, -1.5f, 2};
    static const float igammas[] = {1, 0.5f, 0.5f, 2};
    static const auto component = [](float v, int i) {
        const auto c = static_cast<size_t>(i);
        return c == 3 ? (std::isfinite(v * v) ? 1.5 : double(NAN)) // 0 times infinity
                      : levelOf(v, igammas[c], inBlacks[c], inWhites[c], outBlacks[c], outWhites[c]);
    };
    list.addRows<ru_GammaLine>(
        new RU_LevelsFunc(0, 2, 1, 0, 1, -0.25f, inBlacks, inWhites, gammas, outBlacks, outWhites), 3.0,
        [](float v, int c) { return component(v, c) * 0.5 - 0.25; });
    list.all.back().perComponent = true;
    list.all.back().least = 0.5;
    list.addRows<ru_GammaLine>(
        new RU_LevelsFunc(1, 2, 0.5f, 0, 3, 0, inBlacks, inWhites, gammas, outBlacks, outWhites), 8.0,
        [](float v, int c) { return levelOf(component(v, c), 2, 1, 2, 0, 3); });
    list.all.back().perComponent = true;
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
