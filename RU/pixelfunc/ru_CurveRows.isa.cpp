#include <RU/pixelfunc/ru_CurveRows.h>

namespace RU_ISA {
namespace {

// The number of starts that are not above each value; NaN has none.

/// By comparing with all of them.
RU_INLINE void countStarts(const ru_CurveView& curve, const float* __restrict in,
                           int32_t* __restrict segments, int64_t count)
{
    for (int64_t k = 0; k < curve.startCount; k += ru_curveStarts) {
        const float s0 = curve.starts[k], s1 = curve.starts[k + 1];
        const float s2 = curve.starts[k + 2], s3 = curve.starts[k + 3];
        for (int64_t i = 0; i < count; ++i)
            segments[i] += (int(in[i] >= s0) + int(in[i] >= s1)) + (int(in[i] >= s2) + int(in[i] >= s3));
    }
}

/// By halving, for many. At least the last start is NaN.
RU_INLINE void bisectStarts(const ru_CurveView& curve, const float* __restrict in,
                            int32_t* __restrict segments, int64_t count)
{
    const float* __restrict starts = curve.starts;
    for (auto step = static_cast<int32_t>(curve.startCount / 2); step > 0; step /= 2)
        for (int64_t i = 0; i < count; ++i)
            segments[i] += in[i] >= starts[segments[i] + step - 1] ? step : 0;
}

template <bool Extend>
RU_INLINE bool runRow(const ru_CurveView& given, const float* __restrict in, float* __restrict out,
                      int64_t count)
{
    const ru_CurveView curve = given;
    int32_t segments[ru_curveRow];
    __builtin_memset(segments, 0, sizeof segments);
    if (curve.startCount > ru_curveCounted)
        bisectStarts(curve, in, segments, count);
    else
        countStarts(curve, in, segments, count);
    for (int64_t i = 0; i < count; ++i)
        out[i] = ru_curveInside(curve, segments[i], in[i]);
    int undefined = 0;
    for (int64_t i = 0; i < count; ++i) { // apart: compilers would make the loads above depend on v
        const float y = ru_curveValue<Extend>(curve, in[i], out[i]);
        out[i] = y;
        undefined |= int(y != y);
    }
    return undefined != 0;
}

bool run(const ru_CurveView& curve, const float* in, float* out, int64_t count)
{
    return curve.extend ? runRow<true>(curve, in, out, count) : runRow<false>(curve, in, out, count);
}

} // namespace

extern constinit const ru_CurveKernels ru_curveRows = {{RU_COMPILED_FOR}, run};

} // namespace RU_ISA
