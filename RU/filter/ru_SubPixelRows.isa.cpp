#include <RU/filter/ru_SubPixelRows.h>
#include <RU/kernel/ru_OneNaN.h>

namespace RU_ISA {
namespace {

// What is stored. Doubles become codes, whatever NaN they are.

RU_INLINE float stored(float sum)
{
    return ru_oneNaN(sum);
}

RU_INLINE double stored(double sum)
{
    return sum;
}

/// The rows are not __restrict: clang would carry loads from one pixel to the next and could not vectorise.
template <int Read, class Work>
void sumRow(const Work* row, const Work* next, Work* out, int64_t count,
            const ru_SubPixelWeights<Work>& weights)
{
    const Work w00 = weights.w00, w10 = weights.w10, w01 = weights.w01, w11 = weights.w11;
    for (int64_t x = 0; x < count; ++x) {
        Work sum = Read == 0 ? Work(0) : -Work(0); // to which a product adds as it is
        if constexpr ((Read & 8) != 0)
            sum += w11 * next[x + 1];
        if constexpr ((Read & 4) != 0)
            sum += w01 * next[x];
        if constexpr ((Read & 2) != 0)
            sum += w10 * row[x + 1];
        if constexpr ((Read & 1) != 0)
            sum += w00 * row[x];
        out[x] = stored(sum);
    }
}

#define RU_FOUR(READ, WORK)                                                                                  \
    sumRow<READ, WORK>, sumRow<READ + 1, WORK>, sumRow<READ + 2, WORK>, sumRow<READ + 3, WORK>
template <class Work>
constexpr ru_SubPixelRow<Work> sumRows = {
    {RU_FOUR(0, Work), RU_FOUR(4, Work), RU_FOUR(8, Work), RU_FOUR(12, Work)}};
#undef RU_FOUR

} // namespace

extern constinit const ru_SubPixelKernels ru_subPixelRows = {
    sumRows<float>, sumRows<double>, {RU_COMPILED_FOR}};

} // namespace RU_ISA
