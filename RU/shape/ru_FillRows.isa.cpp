#include <RU/kernel/ru_Vectors.h>
#include <RU/shape/ru_FillRows.h>

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace RU_ISA {
namespace {

// Crossings.

/// Values of a group of rows.
#if defined(__AVX2__)
struct Rows
{
    __m256d v, w;

    RU_INLINE Rows at(const double* y) { return {_mm256_loadu_pd(y), _mm256_loadu_pd(y + 4)}; }
    RU_INLINE Rows of(double x) { return {_mm256_set1_pd(x), _mm256_set1_pd(x)}; }
    RU_INLINE Rows crossing(const Rows& y, const ru_FillBoundary& edge)
    {
        const __m256d slope = _mm256_set1_pd(edge.slope), bias = _mm256_set1_pd(edge.bias);
        return {y.v * slope + bias, y.w * slope + bias};
    }
    RU_INLINE Rows most(const Rows& a, const Rows& b)
    {
        return {_mm256_max_pd(a.v, b.v), _mm256_max_pd(a.w, b.w)};
    }
    RU_INLINE Rows least(const Rows& a, const Rows& b)
    {
        return {_mm256_min_pd(a.v, b.v), _mm256_min_pd(a.w, b.w)};
    }
    RU_INLINE int nearWhole(__m256d x, double sure)
    {
        const __m256d off = x - _mm256_floor_pd(x) - _mm256_set1_pd(0.5);
        return _mm256_movemask_pd(
            _mm256_cmp_pd(_mm256_andnot_pd(_mm256_set1_pd(-0.0), off), _mm256_set1_pd(sure), _CMP_GE_OQ));
    }
    RU_INLINE int nearWhole(const Rows& x, double sure)
    {
        return nearWhole(x.v, sure) | nearWhole(x.w, sure) << 4;
    }
    RU_INLINE void storeColumns(const Rows& x, uint16_t* to)
    {
        const __m128i one = _mm_set1_epi32(1);
        const __m128i low = _mm_sub_epi32(_mm256_cvttpd_epi32(x.v), one);
        const __m128i high = _mm_sub_epi32(_mm256_cvttpd_epi32(x.w), one);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_packus_epi32(low, high));
    }
};
#else
struct Rows
{
    double v[ru_rowGroup];

    RU_INLINE Rows at(const double* y)
    {
        Rows rows;
        __builtin_memcpy(rows.v, y, sizeof rows.v);
        return rows;
    }
    template <class Value>
    RU_INLINE Rows each(Value value)
    {
        Rows rows;
        for (int k = 0; k < ru_rowGroup; ++k)
            rows.v[k] = value(k);
        return rows;
    }
    RU_INLINE Rows of(double x)
    {
        return each([=](int) { return x; });
    }
    RU_INLINE Rows crossing(const Rows& y, const ru_FillBoundary& edge)
    {
        return each([&](int k) { return y.v[k] * edge.slope + edge.bias; });
    }
    RU_INLINE Rows most(const Rows& a, const Rows& b)
    {
        return each([&](int k) { return a.v[k] > b.v[k] ? a.v[k] : b.v[k]; });
    }
    RU_INLINE Rows least(const Rows& a, const Rows& b)
    {
        return each([&](int k) { return a.v[k] < b.v[k] ? a.v[k] : b.v[k]; });
    }
    RU_INLINE int nearWhole(const Rows& x, double sure)
    {
        int near = 0;
        for (int k = 0; k < ru_rowGroup; ++k) {
            const double off = x.v[k] - static_cast<double>(static_cast<int>(x.v[k])) - 0.5;
            near |= ((off < 0 ? -off : off) >= sure ? 1 : 0) << k;
        }
        return near;
    }
    RU_INLINE void storeColumns(const Rows& x, uint16_t* to)
    {
        for (int k = 0; k < ru_rowGroup; ++k)
            to[k] = static_cast<uint16_t>(static_cast<int>(x.v[k]) - 1);
    }
};
#endif

/// Within the columns; the comparisons put limits in the place of NaN.
RU_INLINE Rows limited(const Rows& x, const ru_ColumnLimits& limits)
{
    return Rows::least(Rows::most(x, Rows::of(limits.low + 1.5)), Rows::of(limits.high + 1.5));
}

int cross(const ru_FillBoundary& edge, const ru_ColumnLimits& limits, const double* y, int64_t count,
          uint16_t* columns, uint8_t* doubts)
{
    const double sure = 0.5 - limits.slack;
    int any = 0;
    for (int64_t k = 0; k < count; k += ru_rowGroup) {
        const Rows x = limited(Rows::crossing(Rows::at(y + k), edge), limits);
        Rows::storeColumns(x, columns + k);
        const int near = Rows::nearWhole(x, sure);
        doubts[k / ru_rowGroup] = static_cast<uint8_t>(near);
        any |= near;
    }
    return any;
}

int span(const ru_FillBoundary (&edges)[3], bool secondIsEnd, const ru_ColumnLimits& limits, const double* y,
         int64_t count, uint16_t* begin, uint16_t* end, uint8_t* doubts)
{
    const double sure = 0.5 - limits.slack;
    int any = 0;
    for (int64_t k = 0; k < count; k += ru_rowGroup) {
        const Rows at = Rows::at(y + k);
        const Rows first = Rows::crossing(at, edges[0]), third = Rows::crossing(at, edges[2]);
        const Rows alone = limited(Rows::crossing(at, edges[1]), limits);
        const Rows pair = limited(secondIsEnd ? Rows::most(first, third) : Rows::least(first, third), limits);
        Rows::storeColumns(secondIsEnd ? pair : alone, begin + k);
        Rows::storeColumns(secondIsEnd ? alone : pair, end + k);
        const int near = Rows::nearWhole(alone, sure) | Rows::nearWhole(pair, sure);
        doubts[k / ru_rowGroup] = static_cast<uint8_t>(near);
        any |= near;
    }
    return any;
}

// Coverage.

RU_INLINE void setBits(uint64_t* words, int64_t from, int64_t to)
{
    for (int64_t w = from >> 6; w <= (to - 1) >> 6; ++w) {
        const uint64_t head = from > 64 * w ? ~uint64_t{0} << (from & 63) : ~uint64_t{0};
        const uint64_t tail = to < 64 * w + 64 ? ~(~uint64_t{0} << (to & 63)) : ~uint64_t{0};
        words[w] |= head & tail;
    }
}

/// Pixels of one row: those with any column inside, and those with all columns of all rows inside.
struct Extent
{
    int64_t from, inner, outer, to;
};

/// Eight by eight samples: the ends of eight rows are a vector.
#if defined(__AVX2__)
struct EightByEight
{
    __m128i begin, end;

    RU_INLINE int least(__m128i v) { return _mm_cvtsi128_si32(_mm_minpos_epu16(v)) & 65535; }

    EightByEight(const ru_Coverage&, const uint16_t* l, const uint16_t* r)
    {
        const __m128i from = _mm_loadu_si128(reinterpret_cast<const __m128i*>(l));
        const __m128i to = _mm_loadu_si128(reinterpret_cast<const __m128i*>(r));
        const __m128i none = _mm_cmpeq_epi16(_mm_max_epu16(from, to), from);
        begin = _mm_or_si128(from, none);
        end = _mm_andnot_si128(none, to);
    }
    [[gnu::always_inline]] Extent extent() const
    {
        const __m128i ones = _mm_set1_epi16(-1);
        return {least(begin) >> 3, (65535 - least(_mm_xor_si128(begin, ones)) + 7) >> 3, least(end) >> 3,
                (65535 - least(_mm_xor_si128(end, ones)) + 7) >> 3};
    }
    /// Two pixels at a time; the one at `to` is given nothing.
    [[gnu::always_inline]] void add(uint64_t* masks, const uint64_t* touched, int64_t from, int64_t to) const
    {
        const __m256i heads =
            _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 3, 7, 15, 31, 63, 127, -1, 0, 0, 0, 0, 0, 0, 0));
        const __m256i eight = _mm256_set1_epi16(8), sixteen = _mm256_set1_epi16(16);
        __m256i ends =
            _mm256_subs_epu16(_mm256_set_m128i(end, begin), _mm256_set1_epi16(static_cast<short>(8 * from)));
        for (int64_t c = from; c < to; c += 2) {
            const __m256i two = _mm256_packus_epi16(_mm256_min_epu16(ends, eight),
                                                    _mm256_min_epu16(_mm256_subs_epu16(ends, eight), eight));
            const __m256i bits = _mm256_shuffle_epi8(heads, two);
            const uint64_t seen = touched[c >> 6] >> (c & 63);
            const uint64_t next = touched[(c + 1) >> 6] >> ((c + 1) & 63);
            const __m128i kept =
                _mm_set_epi64x(-static_cast<int64_t>(next & 1), -static_cast<int64_t>(seen & 1));
            auto* at = reinterpret_cast<__m128i*>(masks + c);
            const __m128i found =
                _mm_andnot_si128(_mm256_castsi256_si128(bits), _mm256_extracti128_si256(bits, 1));
            _mm_storeu_si128(at, _mm_or_si128(_mm_and_si128(_mm_loadu_si128(at), kept), found));
            ends = _mm256_subs_epu16(ends, sixteen);
        }
    }
};
#endif

/// Any pattern, or one that the compiler knows.
template <int NX, int NY>
struct Pattern
{
    int nx, ny;
    const uint16_t *begin, *end;

    Pattern(const ru_Coverage& coverage, const uint16_t* l, const uint16_t* r)
        : nx(NX > 0 ? NX : coverage.nx), ny(NY > 0 ? NY : coverage.ny), begin(l), end(r)
    {
    }
    [[gnu::always_inline]] Extent extent() const
    {
        int first = 65535, last = 0, latestBegin = 0, earliestEnd = 65535;
        for (int j = 0; j < ny; ++j) {
            const bool none = begin[j] >= end[j];
            const int l = none ? 65535 : begin[j], r = none ? 0 : end[j];
            first = l < first ? l : first;
            latestBegin = l > latestBegin ? l : latestBegin;
            earliestEnd = r < earliestEnd ? r : earliestEnd;
            last = r > last ? r : last;
        }
        return {first / nx, (latestBegin + nx - 1) / nx, earliestEnd / nx, (last + nx - 1) / nx};
    }
    [[gnu::always_inline]] uint64_t head(int64_t columns) const
    {
        const int64_t inside = columns < 0 ? 0 : columns;
        return inside < nx ? ~(~uint64_t{0} << inside) : ~uint64_t{0} >> (64 - nx);
    }
    [[gnu::always_inline]] void add(uint64_t* masks, const uint64_t* touched, int64_t from, int64_t to) const
    {
        for (int64_t c = from; c < to; ++c) {
            uint64_t mask = 0;
            for (int j = 0; j < ny; ++j)
                mask |= (head(end[j] - c * nx) & ~head(begin[j] - c * nx)) << (j * nx);
            const bool seen = (touched[c >> 6] >> (c & 63) & 1) != 0;
            masks[c] = seen ? masks[c] | mask : mask;
        }
    }
};

template <class Samples>
void coverRows(const ru_Coverage& coverage, int64_t row, int64_t count, const uint16_t* begin,
               const uint16_t* end)
{
    const int64_t words = coverage.words;
    for (int64_t k = 0; k < count; ++k) {
        const Samples samples(coverage, begin + k * coverage.ny, end + k * coverage.ny);
        const Extent extent = samples.extent();
        uint64_t* const masks = coverage.masks + (row + k) * words * 64;
        uint64_t* const touched = coverage.touched + (row + k) * words;
        const bool anyFull = extent.inner < extent.outer;
        const int64_t stop = anyFull ? extent.inner : extent.to;
        if (extent.from < stop) {
            samples.add(masks, touched, extent.from, stop);
            setBits(touched, extent.from, stop);
        }
        if (!anyFull)
            continue;
        setBits(coverage.full + (row + k) * words, extent.inner, extent.outer);
        if (extent.outer < extent.to) {
            samples.add(masks, touched, extent.outer, extent.to);
            setBits(touched, extent.outer, extent.to);
        }
    }
}

void cover(const ru_Coverage& coverage, int64_t row, int64_t count, const uint16_t* begin,
           const uint16_t* end)
{
    if (coverage.nx == 8 && coverage.ny == 8)
#if defined(__AVX2__)
        coverRows<EightByEight>(coverage, row, count, begin, end);
#else
        coverRows<Pattern<8, 8>>(coverage, row, count, begin, end);
#endif
    else if (coverage.nx == 4 && coverage.ny == 4)
        coverRows<Pattern<4, 4>>(coverage, row, count, begin, end);
    else
        coverRows<Pattern<0, 0>>(coverage, row, count, begin, end);
}

// Codes.

template <class T>
void raise(T* codes, int64_t count, T last, T raised)
{
    for (int64_t i = 0; i < count; ++i)
        codes[i] = codes[i] <= last ? raised : codes[i];
}

/// Halves in the order of their values are in that of these numbers; NaN lie beyond the infinities.
RU_INLINE int16_t rankOf(uint16_t bits)
{
    return static_cast<int16_t>(bits ^ (static_cast<int16_t>(bits) < 0 ? 0x7FFF : 0));
}

template <>
void raise(fpreal16* codes, int64_t count, fpreal16 last, fpreal16 raised)
{
    auto* bits = reinterpret_cast<uint16_t*>(codes);
    const int16_t highest = rankOf(last.bits()), lowest = rankOf(0xFC00);
    const uint16_t replacement = raised.bits();
    for (int64_t i = 0; i < count; ++i) {
        const int16_t rank = rankOf(bits[i]);
        bits[i] = rank <= highest && rank >= lowest ? replacement : bits[i];
    }
}

} // namespace

extern constinit const ru_FillKernels ru_fillRows = {{raise<unsigned char>},
                                                     {raise<unsigned short>},
                                                     {raise<unsigned int>},
                                                     {raise<float>},
                                                     {raise<fpreal16>},
                                                     {RU_COMPILED_FOR},
                                                     cross,
                                                     span,
                                                     cover};

} // namespace RU_ISA
