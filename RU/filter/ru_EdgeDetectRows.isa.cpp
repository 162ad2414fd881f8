#include <RU/filter/ru_EdgeDetectRows.h>
#include <RU/kernel/ru_OneNaN.h>

namespace RU_ISA {
namespace {

RU_INLINE float magnitude(float v)
{
    return __builtin_fabsf(v);
}

RU_INLINE double magnitude(double v)
{
    return __builtin_fabs(v);
}

// What is stored. Doubles become codes, whatever NaN they are.

RU_INLINE float sumOf(float a, float b)
{
    return ru_oneNaNOfMagnitudes(magnitude(a) + magnitude(b));
}

RU_INLINE double sumOf(double a, double b)
{
    return magnitude(a) + magnitude(b);
}

RU_INLINE float scaled(float sum, float norm)
{
    return ru_oneNaN(sum * norm);
}

RU_INLINE double scaled(double sum, double norm)
{
    return sum * norm;
}

// Both differences share those along the diagonals, I - A and G - C. The rows are not __restrict: clang
// would carry loads from one pixel to the next and could not vectorise.

template <class Work, bool Sobel>
void edgeRow(const Work* top, const Work* middle, const Work* bottom, Work* out, int64_t count)
{
    constexpr Work w = Sobel ? 2 : 1;
    for (int64_t x = 0; x < count; ++x) {
        const Work falling = bottom[x + 2] - top[x];
        const Work rising = bottom[x] - top[x + 2];
        const Work gx = (falling - rising) + w * (middle[x + 2] - middle[x]);
        const Work gy = (falling + rising) + w * (bottom[x + 1] - top[x + 1]);
        out[x] = sumOf(gx, gy);
    }
}

template <class Work>
void generalEdgeRow(const Work* top, const Work* middle, const Work* bottom, Work* out, int64_t count,
                    const ru_EdgeWeights<Work>& weights)
{
    const Work a = weights.gain;
    const Work b = weights.corner;
    const Work m = weights.middle;
    const Work n = weights.norm;
    for (int64_t x = 0; x < count; ++x) {
        const Work falling = bottom[x + 2] - top[x];
        const Work rising = bottom[x] - top[x + 2];
        const Work gx = a * (b * (falling - rising) + m * (middle[x + 2] - middle[x]));
        const Work gy = a * (b * (falling + rising) + m * (bottom[x + 1] - top[x + 1]));
        out[x] = scaled(magnitude(gx) + magnitude(gy), n);
    }
}

template <class Work>
constexpr ru_EdgeRow<Work> edgeRows = {edgeRow<Work, true>, edgeRow<Work, false>, generalEdgeRow<Work>};

} // namespace

extern constinit const ru_EdgeDetectKernels ru_edgeDetectRows = {
    edgeRows<float>, edgeRows<double>, {RU_COMPILED_FOR}};

} // namespace RU_ISA
