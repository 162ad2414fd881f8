#include <CL/CL_Clip.h>
#include <PXL/PXL_Lookup.h>
#include <RU/kernel/ru_Power.h>
#include <all_pixel_functions.h>
#include <reference/Functions.h>

#include <cmath>

namespace reference {

namespace {

/// A formula of v and, perhaps, the component c.
#define OF(...) [=]([[maybe_unused]] float v, [[maybe_unused]] int c) -> double { return __VA_ARGS__; }

class Catalogue
{
public:
    /// What it returns holds until the next call.
    ValueFunction& add(const char* name, RU_PixelFunction* function, double ulp,
                       std::function<double(float, int)> exact)
    {
        return all.emplace_back(
            ValueFunction{{name, std::shared_ptr<RU_PixelFunction>(function)}, std::move(exact), ulp});
    }
    void addPerComponent(const char* name, RU_PixelFunction* function, double ulp,
                         std::function<double(float, int)> exact, double least = 0.0)
    {
        ValueFunction& added = add(name, function, ulp, std::move(exact));
        added.perComponent = true;
        added.least = least;
    }

    std::vector<ValueFunction> all;
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
    list.add("Add", new RU_AddFunc(0.3f), 0, OF(v + 0.3f));
    list.add("Mult", new RU_MultFunc(-1.7f), 0, OF(v * -1.7f));
    list.add("MAdd", new RU_MAddFunc(1.1f, -0.1f), 0, OF(v * 1.1f + -0.1f));
    static constexpr float mult[] = {1.1f, 0.7f, -2.0f, 0.0f}, add[] = {0.1f, -0.3f, 1.0f, 0.5f};
    list.addPerComponent("MAdd", new RU_MAddFunc(mult, add), 0, OF(v * mult[c] + add[c]));
    list.add("Scale", new RU_ScaleFunc(1.7f, 0.435f), 0, OF((v - 0.435f) * 1.7f + 0.435f));
    for (const float step : {0.1f, -0.25f, 0.0f})
        list.add("Quantize", new RU_QuantizeFunc(step, 0.05f), 0,
                 OF(std::floor((v - 0.05f) / step) * step + 0.05f));
    list.add("Abs", new RU_AbsFunc, 0, OF(std::abs(v)));
    list.add("Negate", new RU_NegateFunc, 0, OF(-v));
    for (const bool replace : {false, true})
        list.add("Invert", new RU_InvertFunc(replace, 7.0f), 0, OF(v != 0 ? 1.0f / v : replace ? 7.0f : v));
    list.add("Sign", new RU_SignFunc, 0, OF(v < 0 ? -1.0 : v > 0 ? 1.0 : 0.0));
    list.add("Floor", new RU_FloorFunc, 0, OF(std::floor(v)));
    list.add("Ceil", new RU_CeilFunc, 0, OF(std::ceil(v)));
    list.add("Round", new RU_RoundFunc, 0, OF(std::floor(v + 0.5f)));
}

/// The upper test sees what the lower one made.
void addLimits(Catalogue& list)
{
    for (const bool clamp : {false, true})
        for (const bool lower : {false, true})
            for (const bool upper : {false, true})
                for (const auto& [low, high] : {std::pair(0.25f, 1.5f), {0.5f, -0.5f}}) {
                    const float below = clamp ? low : 0.0f, above = clamp ? high : 0.0f;
                    const auto raised = [=, low = low](float v) { return lower && v < low ? below : v; };
                    list.add("Limit", new RU_LimitFunc(lower, low, upper, high, clamp), 0,
                             [=, high = high](float v, int) {
                                 return upper && raised(v) > high ? above : raised(v);
                             });
                }
}

void addPowers(Catalogue& list)
{
    for (const float gamma : {2.2f, 0.0f, -0.5f})
        list.add(gamma == 0 ? "GammaZero" : "Gamma", new RU_GammaFunc(gamma), ru_exponentUlp,
                 OF(gammaOf(v, 1.0f / gamma)));
    static constexpr float gammas[] = {1.0f, 1.8f, 0.45f, -2.0f};
    list.addPerComponent("Gamma", new RU_GammaFunc(gammas[0], gammas[1], gammas[2], gammas[3]),
                         ru_exponentUlp, OF(gammaOf(v, 1 / gammas[c])));
    for (const float expon : {2.0f, 0.4f, -1.0f, 3.0f, 0.0f})
        list.add("Power", new RU_PowerFunc(expon), ru_exponentUlp, OF(powerOf(v, expon)));
    for (const float base : {2.0f, 0.3f, -3.0f, 1.0f, 0.0f})
        list.add(base == 0   ? "RaiseZero"
                 : base == 1 ? "RaiseOne"
                             : "Raise",
                 new RU_RaiseFunc(base), 0.55,
                 OF(base < 0 ? -std::pow(-double(base), v) : std::pow(double(base), v)));
    for (const bool replace : {false, true})
        for (const float base : {10.0f, 0.5f, -2.0f, 1.0f, 0.0f}) {
            const double scale = std::log(std::abs(double(base)));
            const double factor = scale == 0 || base == 0 ? HUGE_VAL : 1 / scale;
            const auto otherwise = OF(replace ? -1.5f : v);
            list.add("Log", new RU_LogFunc(base, replace, -1.5f), 2.0,
                     OF(v > 0 ? std::log(double(v)) * factor : otherwise(v, 0)));
        }
}

/// Results that are scaled are rounded twice.
void addTrigonometry(Catalogue& list)
{
    list.add("Sin", new RU_SinFunc(2.1f, 0.5f), 0.55, OF(std::sin(double(v * 2.1f + 0.5f))));
    list.add("Atan", new RU_AtanFunc(0.6f), 1.6, OF(std::atan(double(v)) * 0.6f));
    for (const bool replace : {false, true}) {
        const auto otherwise = OF(replace ? 9.0f : v);
        for (const float scale : {1.0f, 2.0f})
            list.add("Tan", new RU_TanFunc(scale, replace, 9.0f), 0.55,
                     OF(std::abs(v * scale) != 1.5707964f ? std::tan(double(v * scale)) : otherwise(v, 0)));
        list.add("Asin", new RU_AsinFunc(0.6f, replace, 9.0f), 1.6,
                 OF(v == v ? std::asin(double(v)) * 0.6f : otherwise(v, 0)));
        list.add("Acos", new RU_AcosFunc(0.6f, replace, 9.0f), 1.6,
                 OF(v == v ? std::acos(double(v)) * 0.6f : otherwise(v, 0)));
    }
    list.add("Sinh", new RU_SinhFunc(1.5f), 0.55, OF(std::sinh(double(v * 1.5f))));
    list.add("Cosh", new RU_CoshFunc(0.7f), 0.55, OF(std::cosh(double(v * 0.7f))));
    list.add("Tanh", new RU_TanhFunc(1.3f), 0.55, OF(std::tanh(double(v * 1.3f))));
}

void addLookups(Catalogue& list)
{
    static const std::vector<float> samples = {0.25f, -1.0f, 0.5f,   3.0f, 2.0f,
                                               0.0f,  -0.5f, 0.125f, 1.0f, 4.0f};
    static PXL_Lookup table(-0.5f, 2.0f, 2, samples);
    const auto sample = [](float v, int c) {
        const double place = v > -0.5 ? std::min((v + 0.5) * 1.6, 4.0) : 0.0; // NaN: the first
        const auto below = static_cast<size_t>(std::floor(place));
        const float* channel = samples.data() + 5 * (c % 2);
        const double fraction = place - static_cast<double>(below);
        return fraction == 0 ? channel[below]
                             : channel[below] + (double(channel[below + 1]) - channel[below]) * fraction;
    };
    list.addPerComponent("LookupTable", new RU_LookupTableFunc(&table), 0.51, sample, 0.25);

    static CL_Clip single, three;
    if (single.trackCount() == 0) {
        single.append(std::make_unique<CL_Track>(std::vector<CL_Key>{{0, 1}, {1, 3}, {2, -5}}));
        three.append(std::make_unique<CL_Track>(std::vector<CL_Key>{{0, 1}, {2, 3}, {5, 4}}));
        three.append(nullptr);
        three.append(std::make_unique<CL_Track>(-1.0f, 4.0f, std::vector<float>{7, 8, 2}));
    }
    const auto onTrack = [](const CL_Clip& clip) {
        return [&clip](float v, int c) -> double {
            const CL_Track* track = clip.track(c % clip.trackCount());
            return track ? track->evaluate(v) : 0.0f;
        };
    };
    list.add("LookupClip", new RU_LookupClipFunc(&single), 0, onTrack(single));
    list.add("LookupClip", new RU_LookupClipFunc(&three), 0, onTrack(three));
    list.add("LookupClip", new RU_LookupClipFunc(nullptr), 0, OF(0.0f));

    static RU_ColorCurve shorter, longer;
    if (longer.keyCount() == 0) {
        for (const float x : {0.0f, 1.0f, 2.0f}) {
            longer.addPoint(x, 10 + x, 1);
            if (x < 2)
                shorter.addPoint(x, 20 + x, 1);
        }
        shorter.create(false);
        longer.create(true);
    }
    static RU_ColorCurve* curves[] = {&shorter, nullptr, &longer, &shorter, &longer};
    for (const int count : {0, 1, 3, 5})
        list.add("ColorCurve", new RU_ColorCurveFunc(curves, count), 0,
                 [count](float v, int c) -> double {
                     const RU_ColorCurve* curve =
                         count > 0 ? curves[std::min(c, std::min(count, 4) - 1)] : nullptr;
                     return curve ? curve->evaluate(v) : v;
                 })
            .perComponent = count > 1;
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
    list.add("Levels", new RU_LevelsFunc(0.25f, 0.75f, 1, 0, 2, 0.125f, 0.5f, 1, 1, 0.25f, 1.5f), 0,
             OF(v * 10.0f + -4.875f));
    static constexpr float inBlacks[] = {0, 0.25f, -0.25f, 0}, inWhites[] = {1, 4, 2.25f, 0},
                           gammas[] = {1, 2, 2, 0.5f}, outBlacks[] = {0.125f, 1, 0.5f, 1},
                           outWhites[] = {0.625f, 4, -1.5f, 2};
    const auto component =
        OF(c == 3 ? (std::isfinite(v * v) ? 1.5 : double(NAN)) // 0 times infinity
                  : levelOf(v, 1 / gammas[c], inBlacks[c], inWhites[c], outBlacks[c], outWhites[c]));
    list.addPerComponent(
        "Levels", new RU_LevelsFunc(0, 2, 1, 0, 1, -0.25f, inBlacks, inWhites, gammas, outBlacks, outWhites),
        3.0, OF(component(v, c) * 0.5 - 0.25), 0.5);
    list.addPerComponent(
        "Levels", new RU_LevelsFunc(1, 2, 0.5f, 0, 3, 0, inBlacks, inWhites, gammas, outBlacks, outWhites),
        8.0, OF(levelOf(component(v, c), 2, 1, 2, 0, 3)), 1.0);
}

} // namespace

std::vector<ValueFunction> newValueFunctions()
{
    Catalogue list;
    addArithmetic(list);
    addLimits(list);
    addPowers(list);
    addTrigonometry(list);
    addLookups(list);
    addLevels(list);
    return list.all;
}

const std::vector<ValueFunction>& valueFunctions()
{
    static const std::vector<ValueFunction> all = newValueFunctions();
    return all;
}

std::vector<Function> newFunctions()
{
    const std::vector<ValueFunction> values = newValueFunctions();
    const std::vector<PixelFunction> pixels = newPixelFunctions();
    std::vector<Function> all(values.begin(), values.end());
    all.insert(all.end(), pixels.begin(), pixels.end());
    return all;
}

const std::vector<Function>& allFunctions()
{
    static const std::vector<Function> all = newFunctions();
    return all;
}

} // namespace reference
