#include <RU/composite/ru_BlendRows.h>

#include <RU/composite/ru_CodeMix.h>
#include <RU/kernel/ru_Blocks.h>
#include <RU/kernel/ru_Vectors.h>

namespace RU_ISA {
namespace {

/// Asks the second-level cache for what lies `count` values behind: the next row or piece of the same array.
/// Under a mask all components have their turn before it is read, and the processor sees no stream in pieces
/// that short. Without a mask it does, and this would be in its way.
template <class T>
RU_INLINE void prefetchNext(const T* values, int64_t count)
{
    constexpr int forReading = 0, intoSecondLevel = 2;
    __builtin_prefetch(values + count, forReading, intoSecondLevel);
}

/// The values of a cache line.
template <class T>
constexpr int64_t line = 64 / sizeof(T);

/// eachBlock() that prefetches the next row of both images meanwhile; `second` may be null.
template <class T, class Body>
RU_INLINE void eachPrefetching(const T* first, const T* second, int64_t count, Body body)
{
    constexpr int64_t segment = 64;
    int64_t start = 0;
    for (; start + segment <= count; start += segment) {
        for (int64_t i = start; i < start + segment; i += line<T>) {
            prefetchNext(first + i, count);
            if (second != nullptr)
                prefetchNext(second + i, count);
        }
        eachBlock<hasBlocks<T>>(segment, [=](auto block, int64_t i) RU_BLOCK { body(block, start + i); });
    }
    eachBlock<hasBlocks<T>>(count - start, [=](auto block, int64_t i) RU_BLOCK { body(block, start + i); });
}

/// Blends are linear, so that codes need no scale, only their distance from the black point.
template <class T, bool FullRange, bool Two, bool Rows>
void blendRow(T* first, const T* second, int64_t count, const ru_BlendWeights<ru_Work<T>>& weights,
              const ru_Range<T>& of)
{
    using Work = ru_Work<T>;
    const ru_Range<T> range = of;
    const ru_BlendWeights<Work> with = weights;
    const ru_Clamp<Work> white(PXL_FormatOf<T>::white);
    const auto blend = [=](auto block, int64_t i) RU_BLOCK {
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
    };
    if constexpr (Rows)
        eachPrefetching(first, Two ? second : nullptr, count, blend);
    else
        eachBlock<hasBlocks<T>>(count, blend);
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
        for (int64_t i = start; Rows && i < start + length; i += line<fpreal16>) {
            prefetchNext(first + i, count);
            if constexpr (Two)
                prefetchNext(second + i, count);
        }
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

#if defined(RU_VECTOR)

/// Unpacking and packing keep within the 128-bit lanes of a register: codes that are to stay in their order
/// have their 64-bit parts moved before the one and after the other.
RU_INLINE Register beforeUnpacking(Register codes)
{
#if defined(__AVX512BW__)
    return __builtin_shufflevector(codes, codes, 0, 4, 1, 5, 2, 6, 3, 7);
#elif defined(__AVX2__)
    return __builtin_shufflevector(codes, codes, 0, 2, 1, 3);
#else
    return codes;
#endif
}

RU_INLINE Register afterPacking(Register codes)
{
#if defined(__AVX512BW__)
    return __builtin_shufflevector(codes, codes, 0, 2, 4, 6, 1, 3, 5, 7);
#elif defined(__AVX2__)
    return __builtin_shufflevector(codes, codes, 0, 2, 1, 3);
#else
    return codes;
#endif
}

#endif

/// The weights of a mix: the same for all codes, or rows of them.
template <class T, bool Rows>
class MixWeights
{
public:
    using Mix = CodeMix<T>;
    using Digit = typename Mix::Digit;

    [[gnu::always_inline]] explicit MixWeights(const typename ru_MixRow<T>::Weights& weights)
        : rows_(weights), high_(*weights.high), low_(*weights.low)
    {
    }

    [[gnu::always_inline]] T mix(T a, T b, int64_t i) const
    {
        return Mix::of(a, b, Rows ? rows_.high[i] : high_, Rows ? rows_.low[i] : low_);
    }

private:
    typename ru_MixRow<T>::Weights rows_;
    Digit high_, low_;

#if defined(RU_VECTOR)
public:
    static constexpr int64_t step = sizeof(Register) / sizeof(T);

    /// The codes from `i` on that fill a register.
    [[gnu::always_inline]] Register mixVector(const T* a, const T* b, int64_t i) const
    {
        const Register x = ordered(loadVector<Register>(a + i)), y = ordered(loadVector<Register>(b + i));
        const auto low = mixPairs(Mix::unpackLow(x, y), i);
        const auto high = mixPairs(Mix::unpackHigh(x, y), i + step / 2);
        const Register mixed = Mix::pack(low, high);
        return Rows ? afterPacking(mixed) : mixed;
    }

private:
    using Digits = typename Mix::Digits;
    using Lane = typename Mix::Lane;

    [[gnu::always_inline]] static Register ordered(Register codes)
    {
        return Rows ? beforeUnpacking(codes) : codes;
    }
    [[gnu::always_inline]] Digits mixPairs(Register pairs, int64_t i) const
    {
        if constexpr (Rows)
            return Mix::ofPairs(pairs, loadVector<Digits>(rows_.high + i), loadVector<Digits>(rows_.low + i));
        else
            return Mix::ofPairs(pairs, Digits{} + static_cast<Lane>(high_),
                                Digits{} + static_cast<Lane>(low_));
    }
#endif
};

template <class T, bool Rows>
void mixRow(T* codes, const T* a, const T* b, int64_t count, const typename ru_MixRow<T>::Weights& of)
{
    const MixWeights<T, Rows> weights(of);
#if defined(RU_VECTOR)
    constexpr int64_t step = MixWeights<T, Rows>::step;
    if (count >= step) {
        int64_t i = 0;
        for (; i + 2 * step <= count; i += step) {
            if constexpr (Rows) {
                prefetchNext(a + i, count);
                prefetchNext(b + i, count);
            }
            storeVector(codes + i, weights.mixVector(a, b, i));
        }
        // The last two registers may share codes: both are mixed before one is stored.
        const Register rest = weights.mixVector(a, b, i), last = weights.mixVector(a, b, count - step);
        storeVector(codes + i, rest);
        storeVector(codes + count - step, last);
        return;
    }
#endif
    RU_EACH_ALONE
    for (int64_t i = 0; i < count; ++i)
        codes[i] = weights.mix(a[i], b[i], i);
}

template <class T, bool Inverted>
bool weighMix(const float* mask, const typename ru_MixRow<T>::Weights& weights, int64_t count, float factor)
{
    using Mix = CodeMix<T>;
    using Digit = typename Mix::Digit;
    constexpr int64_t lines = 4 * line<float>; // together, so that the loop over them is vectorised
    Digit* __restrict high = weights.high;
    Digit* __restrict low = weights.low;
    const ru_Clamp<float> one(1);
    int someNaN = 0;
    const auto weigh = [&](int64_t i) RU_BLOCK {
        const float product = (Inverted ? 1.0f - mask[i] : mask[i]) * factor;
        const int isNaN = product != product ? -1 : 0;
        const float positive = product > one.low ? product : one.low;
        const float clamped = positive < one.high ? positive : one.high;
        const int weight = static_cast<int>(clamped * Mix::one);
        high[i] = static_cast<Digit>(Mix::high(weight) | isNaN);
        low[i] = Mix::low(weight);
        someNaN |= isNaN;
    };
    int64_t i = 0;
    for (; i + lines <= count; i += lines) {
        for (int64_t k = 0; k < lines; k += line<float>)
            prefetchNext(mask + i + k, count);
        for (int64_t k = 0; k < lines; ++k)
            weigh(i + k);
    }
    for (; i < count; ++i)
        weigh(i);
    return someNaN != 0;
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

template <class T>
constexpr ru_MixRow<T> mixRows = {{mixRow<T, false>, mixRow<T, true>},
                                  {weighMix<T, false>, weighMix<T, true>}};

} // namespace

extern constinit const ru_BlendKernels ru_blendRows = {
#define RU_ROWS(CODE, T, WHITE, NAME) blendRows<T, true>, blendRows<T, false>,
    PXL_FOR_EACH_FORMAT(RU_ROWS)
#undef RU_ROWS
        blendMask<float>,
    blendMask<double>,
    mixRows<unsigned char>,
    mixRows<unsigned short>,
    {RU_COMPILED_FOR}};

} // namespace RU_ISA
