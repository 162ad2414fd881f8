#include <RU/pixelfunc/RU_ColorCurve.h>

#include <RU/pixelfunc/ru_CurveTable.h>

#include <algorithm>
#include <new>

namespace {

constexpr float sixth = 0.166666f;
constexpr float third = 0.33333f;

/// The slope of a handle; a vertical one has the sign of its y.
float slopeOf(UT_Vector2 handle)
{
    constexpr float vertical = 1e20f;
    if (handle.x != 0.0f)
        return handle.y / handle.x;
    return handle.y > 0.0f ? vertical : handle.y < 0.0f ? -vertical : 0.0f;
}

} // namespace

void RU_ColorCurve::addPoint(float x, float y, float weight)
{
    const auto place = std::find_if(keyX_.begin(), keyX_.end(), [x](float other) { return other > x; });
    const int64_t index = place - keyX_.begin();
    keyX_.insert(x, index);
    keyY_.insert(y, index);
    keyWeight_.insert(weight, index);
}

void RU_ColorCurve::buildHandles(UT_Vector2Array& out, UT_Vector2Array& in) const
{
    const int64_t last = keyCount() - 1;
    for (int64_t i = 1; i < last; ++i) {
        const UT_Vector2 d1 = key(i) - key(i - 1);
        const UT_Vector2 d2 = key(i + 1) - key(i);
        const float l1 = d1.length();
        const float l2 = d2.length();
        const float s = l1 == l2 ? 0.5f : l1 / (l1 + l2);
        const UT_Vector2 tangent = d1.normalized() * s + d2.normalized() * (1.0f - s);
        const float most = (l1 + l2) * sixth;
        in(i) = -tangent * std::min(l1 * 0.5f, most);
        out(i) = tangent * std::min(l2 * 0.5f, most);
    }

    if (keyX_(0) != keyX_(1)) {
        const UT_Vector2 way = key(1) - key(0);
        out(0) = (way * 2.0f + in(1)).normalized() * (way.length() * third);
        in(0) = -out(0);
    } else {
        out(0) = in(0) = {};
    }

    if (keyX_(last) != keyX_(last - 1)) {
        const UT_Vector2 way = key(last) - key(last - 1);
        out(last) = (way * 2.0f + out(last - 1)).normalized() * (way.length() * third);
        in(last) = -out(last);
    } else { // departs on purpose: the first key loses its handles, the last one has none yet
        out(0) = in(0) = {};
    }
}

void RU_ColorCurve::applyWeights(UT_Vector2Array& out, UT_Vector2Array& in) const
{
    const int64_t last = keyCount() - 1;
    for (int64_t i = 0; i <= last; ++i) {
        const float w = keyWeight_(i);
        if (w == 0.0f)
            continue;
        if (i > 0)
            in(i) = in(i) * (1.0f - w) + (key(i - 1) - key(i)) * third * w;
        if (i < last)
            out(i) = out(i) * (1.0f - w) + (key(i + 1) - key(i)) * third * w;
    }
}

void RU_ColorCurve::create(bool extend)
{
    extend_ = extend;
    table_.reset();
    controlPoints_.clear();
    builtCount_ = 0;
    try {
        build();
    } catch (const std::bad_alloc&) { // 0 everywhere
    }
}

void RU_ColorCurve::build()
{
    const int64_t count = keyCount();
    if (count < 2) {
        controlPoints_.append(count == 1 ? key(0) : UT_Vector2{});
        builtCount_ = 1;
        return;
    }
    UT_Vector2Array out, in;
    out.setSize(count);
    in.setSize(count);
    buildHandles(out, in);
    applyWeights(out, in);
    for (int64_t i = 0; i < count - 1; ++i) {
        controlPoints_.append(key(i));
        controlPoints_.append(key(i) + out(i));
        controlPoints_.append(key(i + 1) + in(i + 1));
    }
    controlPoints_.append(key(count - 1));
    if (extend_) {
        preslope_ = slopeOf(out(0));
        postslope_ = slopeOf(in(count - 1));
    }
    builtCount_ = static_cast<int>(controlPoints_.entries());
    table_ = std::make_shared<const ru_CurveTable>(controlPoints_, extend_, preslope_, postslope_);
}

float RU_ColorCurve::evaluate(float x) const
{
    return table_ != nullptr ? table_->evaluate(x) : 0.0f;
}

void RU_ColorCurve::evaluate(const float* in, float* out, int64_t count) const
{
    if (table_ != nullptr)
        table_->evaluate(in, out, count);
    else
        std::fill(out, out + count, 0.0f);
}
