#include <host/chain/SRGBFunc.h>

#include <algorithm>
#include <cmath>

namespace host {

namespace {

using Way = SRGBFunc::Way;

constexpr float slope = 12.92f, factor = 1.055f, shift = 0.055f;
constexpr float lineEnd = 0.0031308f, codedLineEnd = 0.04045f; ///< of the straight part, in light and coded

// As a float 2.4 is farther from itself than 0.4, and what is far above white would show it.
constexpr float exponentOf(Way way)
{
    return way == Way::FromLinear ? 1.0f / 2.4f : 0.4f;
}

/// What the power is taken of, and what is made of it. For values and rows alike, so that both agree.
template <Way way>
float base(float v)
{
    return way == Way::FromLinear ? v : (std::abs(v) + shift) / factor;
}

template <Way way>
float result(float v, float power)
{
    if constexpr (way == Way::FromLinear) {
        const float curve = power * factor - std::copysign(shift, v);
        return std::abs(v) <= lineEnd ? v * slope : curve;
    } else {
        const float coded = base<way>(v);
        return std::abs(v) <= codedLineEnd ? v / slope : std::copysign(coded * coded * power, v);
    }
}

} // namespace

SRGBFunc::SRGBFunc(Way way) : way_(way), power_(exponentOf(way)) {}

template <Way way>
float SRGBFunc::one(RU_PixelFunction* function, float value, int component)
{
    RU_PowerFunc& power = static_cast<SRGBFunc*>(function)->power_;
    return result<way>(value, power.getPixelFunction()(&power, base<way>(value), component));
}

template <Way way>
void SRGBFunc::row(RU_PixelFunction* function, const float* in, float* out, int64_t count, int component)
{
    RU_PowerFunc& power = static_cast<SRGBFunc*>(function)->power_;
    const RU_RowForm form = power.getRowFunction();
    constexpr int64_t most = 1024;
    float powers[most];
    for (int64_t begin = 0; begin < count; begin += most) {
        const int64_t piece = std::min(most, count - begin);
        const float* from = in + begin;
        float* to = out + begin;
        for (int64_t i = 0; i < piece; ++i)
            powers[i] = base<way>(from[i]);
        form.run(&power, powers, powers, piece, component);
        for (int64_t i = 0; i < piece; ++i)
            to[i] = result<way>(from[i], powers[i]);
    }
}

RU_ScalarForm SRGBFunc::getPixelFunction() const
{
    return way_ == Way::FromLinear ? one<Way::FromLinear> : one<Way::ToLinear>;
}

RU_RowForm SRGBFunc::getRowFunction() const
{
    return {way_ == Way::FromLinear ? row<Way::FromLinear> : row<Way::ToLinear>};
}

void SRGBFunc::getPixelShader(UT_String& body)
{
    body = way_ == Way::FromLinear
               ? "VEC4 size = abs(value);\n"
                 "value = sign(value) * mix(pow(size, VEC4(1.0f / 2.4f)) * 1.055f - 0.055f,\n"
                 "                          size * 12.92f, step(size, VEC4(0.0031308f)));\n"
               : "VEC4 size = abs(value);\n"
                 "value = sign(value) * mix(pow((size + 0.055f) / 1.055f, VEC4(2.4f)),\n"
                 "                          size / 12.92f, step(size, VEC4(0.04045f)));\n";
}

} // namespace host
