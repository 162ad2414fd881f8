#include <RU/filter/ru_ExtremeRows.h>
#include <RU/kernel/ru_Vectors.h>

#include <type_traits>

namespace RU_ISA {
namespace {

#if defined(__AVX512F__)
constexpr int64_t widest = 64;
#elif defined(__AVX2__)
constexpr int64_t widest = 32;
#else
constexpr int64_t widest = 16;
#endif

template <class Key, int64_t Bytes>
struct LanesOf
{
    typedef Key type __attribute__((vector_size(Bytes)));
};
template <class Key>
struct LanesOf<Key, sizeof(Key)>
{
    using type = Key;
};

#define RU_LANES __attribute__((always_inline))

template <class Key>
constexpr int64_t fewer(int64_t bytes)
{
    return bytes > 8 ? bytes / 2 : int64_t(sizeof(Key));
}

/// Calls body(lanes, i) for all keys from i to count, in lanes that become fewer towards the end.
template <class Key, int64_t Bytes = widest, class Body>
RU_INLINE void eachLanes(int64_t count, Body body, int64_t i = 0)
{
    constexpr int64_t lanes = Bytes / int64_t(sizeof(Key));
    for (; i + lanes <= count; i += lanes)
        body(typename LanesOf<Key, Bytes>::type(), i);
    if constexpr (lanes > 1)
        eachLanes<Key, fewer<Key>(Bytes)>(count, body, i);
}

/// Negative floats and halves run against their bits. What turns them around turns them back as well.
template <class T, class Lanes>
RU_INLINE Lanes turned(Lanes bits)
{
    if constexpr (std::is_same_v<T, ru_Key<T>>)
        return bits;
    else
        return bits ^ ((bits >> (8 * sizeof(T) - 1)) & static_cast<ru_Key<T>>(~(1u << (8 * sizeof(T) - 1))));
}

template <class T, class Lanes>
RU_INLINE Lanes keysAt(const T* pixels)
{
    return turned<T>(loadVector<Lanes>(pixels));
}

template <class T, class Lanes>
RU_INLINE void storeKeys(T* pixels, Lanes keys)
{
    storeVector(pixels, turned<T>(keys));
}

template <bool Maxima, class Lanes>
RU_INLINE Lanes extreme(Lanes a, Lanes b)
{
    if constexpr (Maxima)
        return a > b ? a : b;
    else
        return a < b ? a : b;
}

/// Stores what compute(lanes, i) gives for all keys up to count. The last lanes, which may take in some of those
/// before, are computed first: from pixels that are not yet overwritten.
template <int64_t Bytes = widest, class T, class Compute>
RU_INLINE void storeEach(T* to, int64_t count, Compute compute)
{
    using Key = ru_Key<T>;
    using Lanes = typename LanesOf<Key, Bytes>::type;
    constexpr int64_t lanes = Bytes / int64_t(sizeof(Key));
    const int64_t last = count - lanes;
    if (last >= 0) {
        const Lanes end = compute(Lanes(), last);
        for (int64_t i = 0; i < last; i += lanes)
            storeKeys(to + i, compute(Lanes(), i));
        storeKeys(to + last, end);
    } else if constexpr (lanes > 1) {
        storeEach<fewer<Key>(Bytes)>(to, count, compute);
    }
}

/// Of as many windows, `wide` apart up to the last one.
template <bool Maxima, int Count, class T>
RU_INLINE void joined(const T* from, int64_t wide, int64_t last, T* to, int64_t count)
{
    storeEach(to, count, [=]<class Lanes>(Lanes, int64_t i) RU_LANES {
        Lanes keys = keysAt<T, Lanes>(from + i + last);
        for (int64_t k = 0; k < Count - 1; ++k)
            keys = extreme<Maxima>(keys, keysAt<T, Lanes>(from + i + k * wide));
        return keys;
    });
}

template <bool Maxima, class T>
void along(const T* from, int64_t wide, int64_t last, T* to, int64_t count)
{
    if (last == 0)
        joined<Maxima, 1>(from, wide, last, to, count);
    else if (last <= wide)
        joined<Maxima, 2>(from, wide, last, to, count);
    else if (last <= 2 * wide)
        joined<Maxima, 3>(from, wide, last, to, count);
    else if (last <= 3 * wide)
        joined<Maxima, 4>(from, wide, last, to, count);
    else
        joined<Maxima, 5>(from, wide, last, to, count);
}

template <bool Maxima, class T>
void both(const T* a, const T* b, T* to, int64_t count)
{
    storeEach(to, count, [=]<class Lanes>(Lanes, int64_t i) RU_LANES {
        return extreme<Maxima>(keysAt<T, Lanes>(a + i), keysAt<T, Lanes>(b + i));
    });
}

/// When the block is full its rows become the extremes to its end, and the next begins with none.
template <bool Maxima, class T>
void down(const ru_ColumnBlocks<T>& blocks, int64_t at, ru_Rows<const T> from, ru_Rows<T> to, int64_t count)
{
    using Key = ru_Key<T>;
    const int64_t stride = blocks.stride, size = blocks.size;
    eachLanes<Key>(blocks.width, [=]<class Lanes>(Lanes, int64_t x) RU_LANES {
        Lanes beginning = loadVector<Lanes>(blocks.beginning + x);
        Key* end = blocks.ends + at * stride + x;
        for (int64_t y = 0; y < count; ++y, end += stride) {
            const Lanes row = keysAt<T, Lanes>(from.first + y * from.stride + x);
            beginning = extreme<Maxima>(beginning, row);
            storeKeys(to.first + y * to.stride + x,
                      extreme<Maxima>(beginning, loadVector<Lanes>(end + stride)));
            storeVector(end, row);
        }
        if (at + count == size) {
            Lanes toEnd = beginning = loadVector<Lanes>(blocks.none + x);
            for (int64_t y = size; y > 1; --y) {
                end -= stride;
                toEnd = extreme<Maxima>(toEnd, loadVector<Lanes>(end));
                storeVector(end, toEnd);
            }
        }
        storeVector(blocks.beginning + x, beginning);
    });
}

template <bool Maxima, class T>
constexpr ru_ExtremeRow<T> extremes = {along<Maxima, T>, both<Maxima, T>, down<Maxima, T>};

} // namespace

extern constinit const ru_ExtremeKernels ru_extremeRows = {
#define RU_EXTREMES(CODE, T, WHITE, NAME) {extremes<true, T>, extremes<false, T>},
    PXL_FOR_EACH_FORMAT(RU_EXTREMES)
#undef RU_EXTREMES
        {RU_COMPILED_FOR}};

} // namespace RU_ISA
