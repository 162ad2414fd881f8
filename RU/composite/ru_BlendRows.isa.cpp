#include <RU/composite/ru_BlendRows.h>

#include <RU/kernel/ru_Blocks.h>

namespace RU_ISA {
namespace {

/// Blends are linear, so that codes need no scale, only their distance from the black point.
template <class T, bool FullRange, bool Two, bool Rows>
void blendRow(T* first, const T* second, int64_t count, const ru_BlendWeights<ru_Work<T>>& weights,
              const ru_Range<T>& of)
{
    using Work = ru_Work<T>;
    const ru_Range<T> range = of;
    const ru_BlendWeights<Work> with = weights;
    const ru_Clamp<Work> white(PXL_FormatOf<T>::white);
    eachBlock<hasBlocks<T>>(count, [=](auto block, int64_t i) RU_BLOCK {
        const auto weightOf = [=](Work all, const Work* row) RU_BLOCK {
            if constexpr (Rows)
                return block.load(row + i);
            else
                return all;
        };
        auto sum = loadAbove<FullRange>(block, first + i, range) * weightOf(with.first, with.firstRow);
        if constexpr (Two)
            sum =
                sum + loadAbove<FullRange>(block, second + i, range) * weightOf(with.second, with.secondRow);
        storeAbove<FullRange>(block, first + i, sum, range, white);
    });
}

/// Halves go through floats.
template <bool Two, bool Rows>
void blendHalves(fpreal16* first, const fpreal16* second, int64_t count,
                 const ru_BlendWeights<float>& weights, const ru_Range<fpreal16>& range)
{
    const ru_RowConversion<fpreal16, true, float>& halves = ru_convertRows;
    ru_BlendWeights<float> with = weights;
    float values[ru_chunk];
    float others[ru_chunk];
    for (int64_t start = 0; start < count; start += ru_chunk) {
        const int64_t length = count - start < ru_chunk ? count - start : ru_chunk;
        halves.read(first + start, values, length, range);
        if constexpr (Two)
            halves.read(second + start, others, length, range);
        if constexpr (Rows) {
            with.firstRow = weights.firstRow + start;
            with.secondRow = weights.secondRow + start;
        }
        blendRow<float, true, Two, Rows>(values, others, length, with, {});
        halves.write(values, first + start, length, range);
    }
}

template <class Work, bool Inverted>
void weigh(const float* mask, Work* __restrict fraction, Work* __restrict rest, int64_t count, Work factor)
{
    const ru_Clamp<Work> one(1);
    for (int64_t i = 0; i < count; ++i) { // NaN stays NaN
        const Work product = (Inverted ? Work(1) - mask[i] : Work(mask[i])) * factor;
        const Work positive = product < one.low ? one.low : product;
        const Work clamped = positive > one.high ? one.high : positive;
        fraction[i] = clamped;
        rest[i] = Work(1) - clamped;
    }
}

template <class T, bool FullRange, bool Two, bool Rows>
constexpr ru_BlendKernel<T> kernelOf()
{
    constexpr bool full = FullRange || std::is_floating_point_v<T>;
    if constexpr (std::is_same_v<T, fpreal16>)
        return blendHalves<Two, Rows>;
    else
        return blendRow<T, full, Two, Rows>;
}

template <class T, bool R>
constexpr ru_BlendRow<T, R> blendRows = {{{kernelOf<T, R, false, false>(), kernelOf<T, R, false, true>()},
                                          {kernelOf<T, R, true, false>(), kernelOf<T, R, true, true>()}}};

template <class Work>
constexpr ru_BlendMask<Work> blendMask = {{weigh<Work, false>, weigh<Work, true>}};

} // namespace

extern constinit const ru_BlendKernels ru_blendRows = {
#define RU_ROWS(CODE, T, WHITE, NAME) blendRows<T, true>, blendRows<T, false>,
    PXL_FOR_EACH_FORMAT(RU_ROWS)
#undef RU_ROWS
        blendMask<float>,
    blendMask<double>,
    {RU_COMPILED_FOR}};

} // namespace RU_ISA
