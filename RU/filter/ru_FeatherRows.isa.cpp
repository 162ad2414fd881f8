#include <RU/filter/ru_FeatherRows.h>
#include <RU/kernel/ru_Lanes.h>

namespace RU_ISA {
namespace {

// What is compared is never NaN, but for products of infinities and zero weights, which lose every comparison.

template <class V>
RU_INLINE V larger(V a, V b)
{
    return a > b ? a : b;
}

template <class V>
RU_INLINE V smaller(V a, V b)
{
    return a < b ? a : b;
}

/// Vectors of a block; what they gather stays in registers.
constexpr int vectors = 8;

template <class Work>
struct Lanes
{
    static constexpr int64_t count = 4 * laneCount / int64_t(sizeof(Work));
    static constexpr int64_t block = vectors * count;
    typedef Work Vector __attribute__((vector_size(4 * laneCount)));
    typedef Work Half __attribute__((vector_size(2 * laneCount)));

    RU_INLINE Work least(const Vector (&all)[vectors])
    {
        Vector low = all[0];
        for (int k = 1; k < vectors; ++k)
            low = smaller(low, all[k]);
        Half halves[2];
        __builtin_memcpy(halves, &low, sizeof low);
        const Half rest = smaller(halves[0], halves[1]);
        Work result = rest[0];
        for (int k = 1; k < int(count / 2); ++k)
            result = smaller<Work>(result, rest[k]);
        return result;
    }
};

template <class Work>
void prepare(const Work* values, int64_t count, Work* __restrict spreading, int64_t padded, int64_t reachX,
             Work* largest, int64_t blocks)
{
    constexpr int64_t block = Lanes<Work>::block;
    constexpr Work none = -static_cast<Work>(ru_math::infinity);
    for (int64_t x = 0; x < count; ++x)
        spreading[x] = values[x] > 0 ? values[x] : none;
    for (int64_t x = count; x < padded; ++x)
        spreading[x] = none;
    for (int64_t b = 0; b < blocks; ++b) {
        using Vector = typename Lanes<Work>::Vector;
        const Work* at = spreading + b * block;
        Vector high = loadVector<Vector>(at);
        for (int64_t x = Lanes<Work>::count; x < block + 2 * reachX; x += Lanes<Work>::count)
            high = larger(high, loadVector<Vector>(at + x));
        Work most = high[0];
        for (int k = 1; k < int(Lanes<Work>::count); ++k)
            most = larger<Work>(most, high[k]);
        largest[b] = most;
    }
}

/// The largest of rows at equal distances above and below, from `from` on.
template <class Work>
RU_INLINE const Work* largerOf(const Work* above, const Work* below, int64_t count, Work* __restrict pair)
{
    using Vector = typename Lanes<Work>::Vector;
    for (int64_t x = 0; x < count; x += Lanes<Work>::count)
        storeVector(pair + x, larger(loadVector<Vector>(above + x), loadVector<Vector>(below + x)));
    return pair;
}

/// The pixels of a block, from columns `first` to `last` of the window on both sides.
template <class Work>
RU_INLINE void spreadRow(typename Lanes<Work>::Vector (&most)[vectors], const Work* centre,
                         const Work* weights, int64_t first, int64_t last)
{
    using Vector = typename Lanes<Work>::Vector;
    constexpr int64_t lanes = Lanes<Work>::count;
    Vector sums[vectors];
    for (int k = 0; k < vectors; ++k)
        sums[k] = most[k];
    for (int64_t dx = first; dx < last; ++dx) {
        const Vector weight = weights[dx] - Vector{};
#pragma GCC unroll 8
        for (int k = 0; k < vectors; ++k) {
            const Work* at = centre + k * lanes;
            const Vector pair = larger(loadVector<Vector>(at - dx), loadVector<Vector>(at + dx));
            sums[k] = larger(pair * weight, sums[k]);
        }
    }
    for (int k = 0; k < vectors; ++k)
        most[k] = sums[k];
}

template <class Work>
RU_INLINE void finishBlock(const typename Lanes<Work>::Vector (&most)[vectors], const Work* own, Work* out,
                           int64_t count)
{
    using Vector = typename Lanes<Work>::Vector;
    constexpr int64_t lanes = Lanes<Work>::count;
    if (count >= Lanes<Work>::block) {
        for (int k = 0; k < vectors; ++k)
            storeVector(out + k * lanes, larger(most[k], loadVector<Vector>(own + k * lanes)));
        return;
    }
    for (int64_t x = 0; x < count; ++x)
        out[x] = larger<Work>(most[x / lanes][x % lanes], own[x]);
}

template <class Work>
void spread(const ru_FeatherTable<Work>& table, const Work* const* spreading, const Work* const* largest,
            const Work* own, Work* out, int64_t count)
{
    using Vector = typename Lanes<Work>::Vector;
    constexpr int64_t block = Lanes<Work>::block, lanes = Lanes<Work>::count;
    Work pair[block + 2 * ru_featherReach + lanes];
    const int64_t reachX = table.reachX, reachY = table.reachY;
    for (int64_t x0 = 0; x0 < count; x0 += block) {
        const int64_t left = x0 + reachX;
        Vector most[vectors];
        for (int k = 0; k < vectors; ++k)
            most[k] = loadVector<Vector>(spreading[reachY] + left + k * lanes);
        Work least = Lanes<Work>::least(most);
        for (int64_t dy = 0; dy <= reachY; ++dy) {
            const int64_t up = reachY - dy, down = reachY + dy;
            const Work high = larger(largest[up][x0 / block], largest[down][x0 / block]);
            const Work* tails = table.tails + dy * (reachX + 1);
            if (!(high > 0 && high * tails[0] > least))
                continue;
            int64_t last = 1; // beyond, no product is above the least pixel
            while (last <= reachX && high * tails[last] > least)
                ++last;
            const int64_t from = left - (last - 1);
            const Work* centre = dy == 0 ? spreading[reachY] + left
                                         : largerOf(spreading[up] + from, spreading[down] + from,
                                                    block + 2 * (last - 1), pair) +
                                               (last - 1);
            spreadRow<Work>(most, centre, table.weights + dy * (reachX + 1), dy == 0 ? 1 : 0, last);
            least = Lanes<Work>::least(most);
        }
        finishBlock<Work>(most, own + x0, out + x0, count - x0);
    }
}

template <class Work>
constexpr ru_FeatherRow<Work> featherRows = {Lanes<Work>::block, prepare<Work>, spread<Work>};

} // namespace

extern constinit const ru_FeatherKernels ru_featherRows = {
    featherRows<float>, featherRows<double>, {RU_COMPILED_FOR}};

} // namespace RU_ISA
