#include <all_pixel_functions.h>
#include <reference/Functions.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace reference {

namespace {

struct Colour
{
    float r, g, b;
};

float orZero(double v)
{
    return v == v ? static_cast<float>(v) : 0.0f;
}

/// For what does nothing unless red, green and blue are all there.
template <class F>
auto onColours(F formula)
{
    return [formula](Pixel p) {
        if (std::isnan(p[0] + p[1] + p[2]))
            return p;
        const Colour c = formula(Colour{orZero(p[0]), orZero(p[1]), orZero(p[2])});
        return Pixel{c.r, c.g, c.b, p[3]};
    };
}

Colour grey(float v)
{
    return {v, v, v};
}

/// For results made of the components that are there: of the list of them, and of the value that gets it.
template <class F>
auto onPresent(F formula)
{
    return [formula](Pixel p) {
        std::vector<float> there;
        for (const double v : p)
            if (v == v)
                there.push_back(static_cast<float>(v));
        for (double& v : p)
            v = v == v ? formula(there, static_cast<float>(v)) : NAN;
        return p;
    };
}

float luminance(Colour c)
{
    return 0.3086f * c.r + 0.6094f * c.g + 0.082f * c.b;
}

Colour toHSV(Colour c)
{
    const float most = std::max({c.r, c.g, c.b}), least = std::min({c.r, c.g, c.b}), span = most - least;
    const float s = most > 0 ? span / most : 0.0f;
    if (span == 0)
        return {0.0f, s, most};
    const float rs = (most - c.r) / span, gs = (most - c.g) / span, bs = (most - c.b) / span;
    const float sector = most == c.r   ? (least == c.g ? 5.0f + bs : 1.0f - gs)
                         : most == c.g ? (least == c.b ? 1.0f + rs : 3.0f - bs)
                                       : (least == c.r ? 3.0f + gs : 5.0f - rs);
    const float h = sector * 0.1666667f;
    return {h == 1.0f ? 0.0f : h, s, most};
}

/// With a saturation above 1 some components are below 0.
Colour fromWideHSV(Colour c)
{
    const float v = c.b, s = c.g;
    if (!(s > 0))
        return grey(v);
    float h6 = std::fmod(c.r * 6.0f, 6.0f);
    h6 += h6 < 0 ? 6.0f : 0.0f;
    const float i = std::floor(h6), f = h6 - i;
    const float p = (1.0f - s) * v, q = (1.0f - s * f) * v, t = (1.0f - (1.0f - f) * s) * v;
    const Colour sectors[] = {{v, t, p}, {q, v, p}, {p, v, t}, {p, q, v}, {t, p, v}, {v, p, q}};
    return sectors[i < 6 ? static_cast<int>(i) : 0];
}

Colour fromHSV(Colour c)
{
    return fromWideHSV({c.r, std::min(c.g, 1.0f), c.b});
}

struct Adjustment
{
    float degrees, satScale, satShift, valScale, valShift;
    bool keepLuminance;

    Pixel operator()(Pixel pixel) const
    {
        const auto [r, g, b, a] = pixel;
        const bool redAlone = r == r && g != g && b != b;
        const Colour in{orZero(r), orZero(g), orZero(b)};
        const float lum = redAlone ? in.r : luminance(in);
        auto [h, s, v] = toHSV(redAlone ? grey(in.r) : in);
        if (!redAlone) {
            h = std::fmod(h + degrees * 0.002777778f, 1.0f);
            h += h < 0 ? 1.0f : 0.0f;
            s = std::clamp(s * satScale + satShift, 0.0f, 1.0f);
        }
        const Colour out = fromHSV({h, s, v * valScale + valShift});
        const float lum2 = luminance(out);
        const float k = keepLuminance && lum2 != 0 ? (lum * valScale + valShift) / lum2 : 1.0f;
        return {r == r ? out.r * k : NAN, g == g ? out.g * k : NAN, b == b ? out.b * k : NAN, a};
    }
};

// Formulas of a colour c, and of the values that are there and the one that gets the result.
#define OF_COLOUR(...) onColours([=](Colour c) -> Colour { return __VA_ARGS__; })
#define OF_PRESENT(...)                                                                                      \
    onPresent([=](const std::vector<float>& all, [[maybe_unused]] float v) -> float { return __VA_ARGS__; })

float sum(const std::vector<float>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0f);
}

float squares(const std::vector<float>& values)
{
    return std::inner_product(values.begin(), values.end(), values.begin(), 0.0f);
}

using PixelCatalogue = std::vector<PixelFunction>;

void add(PixelCatalogue& list, const std::string& name, RU_PixelFunction* function,
         std::function<Pixel(Pixel)> exact, double tolerance = 0.0)
{
    list.push_back({{name, std::shared_ptr<RU_PixelFunction>(function)}, std::move(exact), tolerance});
}

void addSums(PixelCatalogue& list)
{
    add(list, "NTSCLuminance", new RU_NTSCLuminanceFunc,
        OF_COLOUR(grey(0.299f * c.r + 0.587f * c.g + 0.114f * c.b)));
    add(list, "Luminance", new RU_LuminanceFunc, OF_COLOUR(grey(luminance(c))));
    static const UT_Matrix4 xform = {
        {{0.5f, 0.3f, -0.2f, 9}, {1.1f, -0.7f, 0.1f, 9}, {0, 0.4f, 2, 9}, {0.2f, -3, 0, 9}}};
    add(list, "Vector", new RU_VectorFunc(xform), [](Pixel p) {
        const float r = orZero(p[0]), g = orZero(p[1]), b = orZero(p[2]);
        for (size_t c = 0; c < 3; ++c)
            p[c] = p[c] == p[c] ? r * xform.m[0][c] + g * xform.m[1][c] + b * xform.m[2][c] + xform.m[3][c]
                                : NAN;
        return p;
    });
    add(list, "Length", new RU_LengthFunc, OF_PRESENT(std::sqrt(squares(all))));
    add(list, "Normalize", new RU_NormalizeFunc,
        OF_PRESENT(squares(all) > 0 ? v * (1.0f / std::sqrt(squares(all))) : v));
    for (const int index : {0, 1, 2, 3, 4, -1})
        add(list, "Component" + std::to_string(index + 1), new RU_ComponentFunc(index), [=](Pixel p) {
            const float value = index >= 0 && index < 4 ? orZero(p[static_cast<size_t>(index)]) : 0.0f;
            return onPresent([=](const auto&, float) { return value; })(p);
        });
    add(list, "Max", new RU_MaxFunc, OF_PRESENT(*std::max_element(all.begin(), all.end())));
    add(list, "Min", new RU_MinFunc, OF_PRESENT(*std::min_element(all.begin(), all.end())));
    add(list, "Average", new RU_AverageFunc, OF_PRESENT(sum(all) / static_cast<float>(all.size())));
}

void addConversions(PixelCatalogue& list)
{
    add(list, "Saturation", new RU_SaturationFunc, OF_COLOUR(grey(toHSV(c).g)));
    add(list, "Hue", new RU_HueFunc, OF_COLOUR(grey(toHSV(c).r)));
    const float ignored[] = {7, 7};
    add(list, "ToHSV", new RU_HSVConvertFunc(RU_RGB_TO_HSV, 90, ignored, ignored, true), onColours(toHSV));
    add(list, "FromHSV", new RU_HSVConvertFunc(RU_HSV_TO_RGB, 90, ignored, ignored, true),
        onColours(fromHSV));
    const float sat[] = {1.7f, -0.2f}, val[] = {0.8f, 0.15f}, dark[] = {-1.5f, 0.25f};
    for (const bool keep : {false, true}) {
        const auto adjust = [&](int op, float degrees, const float* s, const float* v) {
            const Adjustment a{degrees, s ? s[0] : 1, s ? s[1] : 0, v ? v[0] : 1, v ? v[1] : 0, keep};
            add(list, "Adjust" + std::to_string(list.size()),
                new RU_HSVConvertFunc(static_cast<RU_HSVConvertOp>(op), degrees, s, v, keep), a);
        };
        adjust(2, 0, nullptr, nullptr);
        adjust(2, 75.3f, sat, val);
        adjust(3, -200, nullptr, val);
        adjust(-1, 1234.5f, sat, dark);
    }
}

/// Keys, x and y by turns, on some circles before and behind.
RU_ColorCurve curveOf(const std::vector<float>& keys, int circles)
{
    RU_ColorCurve curve;
    for (size_t i = 0; i < keys.size(); i += 2)
        for (int turn = -circles; turn <= circles; ++turn)
            curve.addPoint(keys[i] + static_cast<float>(turn), keys[i + 1], 0.25f);
    curve.create(false);
    return curve;
}

void addHueCurves(PixelCatalogue& list)
{
    struct Keys
    {
        std::vector<float> given, meant;
    };
    const Keys none = {{}, {0, 0.5f}}, single = {{0.3f, 0.8f}, {0, 0.8f}}, outside = {{1.5f, 2}, {0, 0.5f}};
    const Keys two = {{0.1f, 0.45f, 0.6f, 0.75f}, {0.1f, 0.45f, 0.6f, 0.75f}};
    const Keys atOne = {{1, 0.3f, 0.5f, 0.7f, -0.2f, 9, 1.3f, 9}, {0, 0.3f, 0.5f, 0.7f}};
    const Keys atBoth = {{0, 0.6f, 1, 0.2f, 0.4f, -0.3f}, {0, 0.6f, 0.4f, -0.3f}};
    for (const auto& keys : {std::array{none, none, none}, {two, atOne, atBoth}, {outside, single, two}}) {
        RU_ColorCurve given[3], circle[3];
        for (size_t c = 0; c < 3; ++c) {
            given[c] = curveOf(keys[c].given, 0);
            circle[c] = curveOf(keys[c].meant, 2);
        }
        const auto formula = [h = circle[0], s = circle[1], v = circle[2]](Colour c) {
            const Colour hsv = toHSV(c);
            const float satGain = std::max(2 * s.evaluate(hsv.r), 0.0f);
            const float valGain = 1 + (std::max(2 * v.evaluate(hsv.r), 0.0f) - 1) * std::min(hsv.g, 1.0f);
            const Colour to = {hsv.r + h.evaluate(hsv.r) - 0.5f, hsv.g * satGain, hsv.b * valGain};
            return hsv.b > 0 && std::isfinite(hsv.g) ? fromWideHSV(to) : c;
        };
        add(list, "HueCurve" + std::to_string(list.size()),
            new RU_HueCurveFunc(keys[0].given.empty() ? nullptr : given, given + 1, given + 2),
            onColours(formula), 2e-4); // the curves are sampled
    }
}

void addReplacements(PixelCatalogue& list)
{
    const auto replace = [&](Colour key, Colour by, float inner, float outer) {
        const auto formula = [=](Colour c) {
            const auto [h, s, v] = toHSV(c);
            const auto [hk, sk, vk] = toHSV(key);
            const auto [hr, sr, vr] = toHSV(by);
            const double way = h - hk, apart = way > 0.5 ? way - 1 : way < -0.5 ? way + 1 : way;
            const double turn = 2 * apart * std::min(s, sk);
            const double distance = std::hypot(turn, s - sk, v - vk);
            const double t = std::clamp((outer - distance) / (outer - inner), 0.0, 1.0);
            const auto weight = static_cast<float>(distance <= inner ? 1
                                                   : outer <= inner  ? 0
                                                                     : t * t * (3 - 2 * t));
            const auto scaled = [](double x, double from, double end) {
                const double gain = from > 0 ? std::min(end / from, 4.0) : 4.0;
                return static_cast<float>(end + gain * (x - from));
            };
            const auto turned = static_cast<float>(hr + std::min(sk * 8.0, 1.0) * apart);
            const Colour to = fromHSV({turned, std::min(scaled(s, sk, sr), 1.0f), scaled(v, vk, vr)});
            const auto mixed = [&](float from, float end) {
                return weight == 0 ? from : (1 - weight) * from + weight * end;
            };
            return Colour{mixed(c.r, to.r), mixed(c.g, to.g), mixed(c.b, to.b)};
        };
        const float from[] = {key.r, key.g, key.b}, to[] = {by.r, by.g, by.b};
        add(list, "Replace" + std::to_string(list.size()), new RU_ColorReplace(from, to, inner, outer),
            onColours(formula), 3e-6);
    };
    replace({0.9f, 0.2f, 0.1f}, {0.1f, 0.3f, 0.8f}, 0.13f, 0.97f); // across red
    replace({0.2f, 0.7f, 0.6f}, {0.9f, 0.9f, 0.9f}, 0.37f, 0.21f); // an outer tolerance that counts as 0.37
    replace(grey(0.4f), {0.3f, 0.6f, 0.1f}, 0.0f, 1.43f);
    replace({0.01f, 0.01f, 0.0101f}, {0.6f, 0.1f, 0.3f}, 0.31f, 0.83f); // nearly black and grey
}

} // namespace

std::vector<PixelFunction> newPixelFunctions()
{
    PixelCatalogue list;
    addSums(list);
    addConversions(list);
    addHueCurves(list);
    addReplacements(list);
    return list;
}

const std::vector<PixelFunction>& pixelFunctions()
{
    static const std::vector<PixelFunction> all = newPixelFunctions();
    return all;
}

} // namespace reference
