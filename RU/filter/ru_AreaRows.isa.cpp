#include <RU/filter/ru_AreaRows.h>
#include <RU/kernel/ru_Lanes.h>

namespace RU_ISA {
namespace {

RU_INLINE Ints wholes(Floats v)
{
    return __builtin_convertvector(v, Ints);
}

RU_INLINE Floats floats(Ints v)
{
    return __builtin_convertvector(v, Floats);
}

RU_INLINE Floats smaller(Floats a, Floats b)
{
    return a < b ? a : b;
}

RU_INLINE Floats magnitude(Floats v)
{
    return (Floats)((Ints)v & 0x7FFFFFFF);
}

RU_INLINE int32_t largest(Ints v)
{
    int32_t most = v[0];
    for (int64_t k = 1; k < laneCount; ++k)
        most = v[k] > most ? v[k] : most;
    return most;
}

RU_INLINE bool sameBits(Floats a, Floats b)
{
    return !anyLane((Ints)a ^ (Ints)b);
}

RU_INLINE void storeUpTo(float* to, Floats v, int64_t live)
{
    if (live == laneCount)
        storeVector(to, v);
    else
        __builtin_memcpy(to, &v, sizeof(float) * static_cast<uint64_t>(live));
}

/// The lanes that are not live get `others`.
RU_INLINE Floats loadUpTo(const float* from, int64_t live, float others = 0.0f)
{
    if (live == laneCount)
        return loadVector<Floats>(from);
    Floats v = splat(others);
    __builtin_memcpy(&v, from, sizeof(float) * static_cast<uint64_t>(live));
    return v;
}

// --- Four rows of four in each 128 bits, transposed

typedef float Four __attribute__((vector_size(16)));

constexpr int pieceStart(int k)
{
    return k / 4 * 4;
}

template <int... K>
struct Indexes
{
    RU_INLINE Floats low(Floats a, Floats b) // a0 b0 a1 b1
    {
        return __builtin_shufflevector(a, b,
                                       (pieceStart(K) + K % 4 / 2 + K % 2 * static_cast<int>(laneCount))...);
    }
    RU_INLINE Floats high(Floats a, Floats b) // a2 b2 a3 b3
    {
        return __builtin_shufflevector(
            a, b, (pieceStart(K) + 2 + K % 4 / 2 + K % 2 * static_cast<int>(laneCount))...);
    }
    RU_INLINE Floats first(Floats a, Floats b) // a0 a1 b0 b1
    {
        return __builtin_shufflevector(a, b,
                                       (pieceStart(K) + K % 2 + K % 4 / 2 * static_cast<int>(laneCount))...);
    }
    RU_INLINE Floats last(Floats a, Floats b) // a2 a3 b2 b3
    {
        return __builtin_shufflevector(
            a, b, (pieceStart(K) + 2 + K % 2 + K % 4 / 2 * static_cast<int>(laneCount))...);
    }
};

#if defined(__AVX512F__)
using Lane = Indexes<0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15>;
#elif defined(__AVX2__)
using Lane = Indexes<0, 1, 2, 3, 4, 5, 6, 7>;
#else
using Lane = Indexes<0, 1, 2, 3>;
#endif

struct FourVectors
{
    Floats at[4];
};

RU_INLINE FourVectors transposed(const FourVectors& v)
{
    const Floats a = Lane::low(v.at[0], v.at[1]);
    const Floats b = Lane::high(v.at[0], v.at[1]);
    const Floats c = Lane::low(v.at[2], v.at[3]);
    const Floats d = Lane::high(v.at[2], v.at[3]);
    // a = v00 v10 v01 v11, c = v20 v30 v21 v31
    return {{Lane::first(a, c), Lane::last(a, c), Lane::first(b, d), Lane::last(b, d)}};
}

/// In each 128 bits four values of a lane: those of lanes k, k + 4, k + 8 ...
template <class At>
RU_INLINE Floats quads(At at, int64_t k)
{
#if defined(__AVX512F__)
    __m512 all = _mm512_castps128_ps512(loadVector<__m128>(at(k)));
    all = _mm512_insertf32x4(all, loadVector<__m128>(at(k + 4)), 1);
    all = _mm512_insertf32x4(all, loadVector<__m128>(at(k + 8)), 2);
    return (Floats)_mm512_insertf32x4(all, loadVector<__m128>(at(k + 12)), 3);
#elif defined(__AVX2__)
    return (Floats)_mm256_insertf128_ps(_mm256_castps128_ps256(loadVector<__m128>(at(k))),
                                        loadVector<__m128>(at(k + 4)), 1);
#else
    return loadVector<Floats>(at(k));
#endif
}

/// at[i] = the values i, 0 .. 3, behind the addresses of all lanes
template <class At>
RU_INLINE FourVectors loadFour(At at)
{
    FourVectors rows;
    for (int64_t k = 0; k < 4; ++k)
        rows.at[k] = quads(at, k);
    return transposed(rows);
}

/// The other way.
template <class At>
RU_INLINE void storeFour(At at, const FourVectors& v)
{
    const FourVectors rows = transposed(v);
    for (int64_t k = 0; k < 4; ++k)
        for (int64_t part = 0; part < laneCount / 4; ++part)
            __builtin_memcpy(at(k + 4 * part), reinterpret_cast<const char*>(&rows.at[k]) + 16 * part, 16);
}

// --- Bounds

void bounds(const float* u, const float* du, int64_t count, float half, float support, float& low,
            float& high)
{
    Floats lowest = splat(low), highest = splat(high);
    for (int64_t k = 0; k < count; k += laneCount) {
        const int64_t live = count - k < laneCount ? count - k : laneCount;
        const Floats at = loadUpTo(u + k, live, u[k]), extent = loadUpTo(du + k, live, du[k]);
        Floats reach = magnitude(extent * half);
        reach = (reach < 0.5f ? splat(0.5f) : reach) * magnitude(splat(support));
        const Floats centre = at + extent * 0.5f;
        lowest = smaller(centre - reach, lowest);
        const Floats end = centre + reach;
        highest = end > highest ? end : highest;
    }
    for (int64_t k = 0; k < laneCount; ++k) {
        low = lowest[k] < low ? lowest[k] : low;
        high = highest[k] > high ? highest[k] : high;
    }
}

// --- Windows

/// The box: t itself.
struct BoxWeights
{
    [[gnu::always_inline]] explicit BoxWeights(const ru_AreaAxis&) {}
    [[gnu::always_inline]] Floats between(Floats t0, Floats t1) { return t1 - t0; }
};

/// UT_FilterPieces in lanes.
class Pieces
{
public:
    [[gnu::always_inline]] explicit Pieces(const UT_FilterPieces& pieces)
        : reach_(pieces.reach),
          scale_(pieces.scale), terms_{Eight(pieces.term[0]), Eight(pieces.term[1]), Eight(pieces.term[2]),
                                       Eight(pieces.term[3]), Eight(pieces.term[4]), Eight(pieces.term[5]),
                                       Eight(pieces.term[6])}
    {
    }

    [[gnu::always_inline]] float reach() const { return reach_; }

    /// f(|t|) of a size |t|
    [[gnu::always_inline]] Floats at(Floats size) const
    {
        const Floats x = (size < reach_ ? size : splat(reach_)) * scale_;
        Ints piece = wholes(x);
        piece = piece < UT_FilterPieces::pieces - 1 ? piece : Ints{} + (UT_FilterPieces::pieces - 1);
        const Floats y = x - floats(piece);
        Floats value = terms_[UT_FilterPieces::terms - 1][piece];
        for (int k = UT_FilterPieces::terms - 2; k >= 0; --k)
            value = value * y + terms_[k][piece];
        return value;
    }

private:
    const float reach_, scale_;
    const Eight terms_[UT_FilterPieces::terms];
};

/// Differences of the running integral; t0 is the last t1.
class AreaWeights
{
public:
    [[gnu::always_inline]] explicit AreaWeights(const ru_AreaAxis& axis)
        : pieces_(*axis.pieces), before_(running(splat(-0.5f)))
    {
    }

    [[gnu::always_inline]] Floats between(Floats, Floats t1)
    {
        const Floats now = running(t1);
        const Floats weight = now - before_;
        before_ = now;
        return weight;
    }

private:
    [[gnu::always_inline]] Floats running(Floats t) const
    {
        const Ints value = (Ints)magnitude(pieces_.at(magnitude(t)));
        return (Floats)(value | ((Ints)t & static_cast<int32_t>(0x80000000u)));
    }

    Pieces pieces_;
    Floats before_;
};

/// The kernel in the middle of a tap, by its width.
class PointWeights
{
public:
    [[gnu::always_inline]] explicit PointWeights(const ru_AreaAxis& axis) : pieces_(*axis.pieces) {}

    [[gnu::always_inline]] Floats between(Floats t0, Floats t1) const
    {
        const Floats size = magnitude((t0 + t1) * 0.5f);
        return (size < pieces_.reach() ? pieces_.at(size) : Floats{}) * (t1 - t0);
    }

private:
    Pieces pieces_;
};

/// Taps are marched through in all lanes at once, as many as the widest window can have: that number varies
/// slowly, and a branch that goes wrong would wait for all of the arithmetic before it. Behind t = 0.5 the weights
/// are 0.
template <class Weights>
void windowsWith(const ru_AreaAxis& axis, Floats u0, Floats u1, ru_AreaWindows& out)
{
    const Floats one = splat(1.0f), zero = Floats{};
    const Floats c = (u0 + u1) * 0.5f;
    Floats h = (u1 - u0) * axis.half;
    h = (h < 0.5f ? splat(0.5f) : h) * axis.support;
    const Floats from = c - h, to = c + h;
    const auto start = static_cast<float>(axis.first > 0 ? axis.first : 0);
    const int32_t behind = axis.last + 1 < axis.resolution ? axis.last + 1 : axis.resolution;
    Ints plain = (from >= start) & (to < static_cast<float>(behind)) & (to - from < 990.0f);
    const Ints lo = wholes(plain ? from : zero), hi = wholes(plain ? to : zero);
    const int32_t taps = largest(wholes(plain ? h + h : zero)) + 2;
    const Floats s = 0.5f / h;
    Weights weights(axis);
    Floats edge = floats(lo) + one, t = splat(-0.5f), sum = zero;
    Ints before = Ints{};
    for (int32_t j = 0; j < taps; ++j) {
        const Floats end = (edge - c) * s;
        const Floats next = smaller(end, splat(0.5f));
        const Floats weight = weights.between(t, next);
        before -= end < 0.5f;
        storeVector(out.weight + j * laneCount, weight);
        sum += weight;
        t = next;
        edge += one;
    }
    // The march ends at t = 0.5; where a rounding lets it end before, or at hi, it does not end here.
    plain &= (lo + before <= hi) & (before < taps);
    const Floats scale = one / (sum == 0.0f ? one : sum);
    for (int32_t j = 0; j < taps; ++j)
        storeVector(out.weight + j * laneCount, loadVector<Floats>(out.weight + j * laneCount) * scale);
    for (int32_t j = taps; j % 4 != 0; ++j)
        storeVector(out.weight + j * laneCount, zero);
    storeVector(out.first, lo - axis.first);
    storeVector(out.count, before + 1);
    storeVector(out.plain, plain);
    out.most = taps;
}

void windowsOf(const ru_AreaAxis& axis, Floats u0, Floats u1, ru_AreaWindows& out)
{
    if (axis.box)
        windowsWith<BoxWeights>(axis, u0, u1, out);
    else if (axis.pieces->sampled)
        windowsWith<PointWeights>(axis, u0, u1, out);
    else
        windowsWith<AreaWeights>(axis, u0, u1, out);
}

void windows(const ru_AreaAxis& axis, const float* low, const float* high, ru_AreaWindows& out)
{
    windowsOf(axis, loadVector<Floats>(low), loadVector<Floats>(high), out);
}

// --- Sums of samples with windows of their own

/// Where the windows of all lanes start, and which pixels count.
struct Place
{
    int32_t offset[laneCount]; ///< in a plane
    Ints columns, rows;        ///< taps of each lane
};

/// Adds taps `from` .. from + Count - 1 of one row of all lanes.
template <int Count, bool Masked>
RU_INLINE void addTaps(const float* in, const Place& place, const float* weight, int32_t from, Floats& row)
{
    const FourVectors pixels = loadFour([&](int64_t lane) { return in + place.offset[lane] + from; });
    for (int32_t i = 0; i < Count; ++i) {
        const Floats pixel = Masked ? (place.columns > from + i ? pixels.at[i] : Floats{}) : pixels.at[i];
        row += loadVector<Floats>(weight + (from + i) * laneCount) * pixel;
    }
}

/// Most = 0: any number of taps. Without masks a lane's taps beyond its own add 0 times a pixel: nothing, or a NaN.
template <int Most, bool Masked>
Floats sumOf(const float* in, int64_t stride, const Place& place, const ru_AreaWindows& x,
             const ru_AreaWindows& y)
{
    Floats out = Floats{};
    for (int32_t j = 0; j < y.most; ++j, in += stride) {
        Floats row = Floats{};
        if constexpr (Most > 4) {
            addTaps<4, Masked>(in, place, x.weight, 0, row);
            addTaps<Most - 4, Masked>(in, place, x.weight, 4, row);
        } else if constexpr (Most > 0) {
            addTaps<Most, Masked>(in, place, x.weight, 0, row);
        } else {
            for (int32_t i = 0; i < x.most; i += 4)
                addTaps<4, Masked>(in, place, x.weight, i, row);
        }
        if (Masked)
            row = place.rows > j ? row : Floats{};
        out += row * loadVector<Floats>(y.weight + j * laneCount);
    }
    return out;
}

RU_INLINE Floats sumOfAny(const float* in, int64_t stride, const Place& place, const ru_AreaWindows& x,
                          const ru_AreaWindows& y)
{
    using Sum = Floats (*)(const float*, int64_t, const Place&, const ru_AreaWindows&, const ru_AreaWindows&);
    static constexpr Sum sums[] = {sumOf<0, false>, sumOf<1, false>, sumOf<2, false>,
                                   sumOf<3, false>, sumOf<4, false>, sumOf<5, false>,
                                   sumOf<6, false>, sumOf<7, false>, sumOf<8, false>};
    constexpr int32_t infinity = 0x7F800000; // beyond it is NaN
    const Floats out = sums[x.most <= 8 ? x.most : 0](in, stride, place, x, y);
    return anyLane((Ints)magnitude(out) > infinity) ? sumOf<0, true>(in, stride, place, x, y) : out;
}

/// The places and extents of the samples of one group.
struct Group
{
    Floats u, du, v, dv;
};

RU_INLINE void windowsBetween(const ru_AreaAxis& axis, Floats a, Floats extent, ru_AreaWindows& out)
{
    const Floats b = a + extent;
    windowsOf(axis, b < a ? b : a, a < b ? b : a, out);
}

/// Lanes whose windows, read in whole fours, end inside the planes; the others are moved to the first pixel.
RU_INLINE Ints placed(const ru_AreaPlanes& planes, const ru_AreaWindows& x, const ru_AreaWindows& y,
                      Place& place)
{
    const auto stride = static_cast<int32_t>(planes.stride);
    const int32_t columns = (x.most + 3) / 4 * 4;
    const Ints firstX = loadVector<Ints>(x.first), firstY = loadVector<Ints>(y.first);
    Ints good = loadVector<Ints>(x.plain) & loadVector<Ints>(y.plain);
    good &= (firstY + (y.most - 1)) * stride + firstX + columns <= static_cast<int32_t>(planes.size);
    if ((y.most - 1) * planes.stride + columns > planes.size)
        good = Ints{};
    storeVector(place.offset, good ? firstY * stride + firstX : Ints{});
    place.columns = good ? loadVector<Ints>(x.count) : Ints{};
    place.rows = good ? loadVector<Ints>(y.count) : Ints{};
    return good;
}

void samples(const ru_AreaGrid& grid, const ru_AreaAxis& x, const ru_AreaAxis& y, const ru_AreaPlanes& planes,
             ru_AreaWindows* work, unsigned char* left)
{
    const int64_t total = grid.rows * grid.columns;
    ru_AreaWindows &alongX = work[0], &alongY = work[1];
    Floats lastV = splat(__builtin_nanf("")), lastDv = lastV; // rows share them often
    for (int64_t k = 0; k < total; k += laneCount) {
        const int64_t live = total - k < laneCount ? total - k : laneCount;
        const Group group = {loadUpTo(grid.u + k, live), loadUpTo(grid.du + k, live),
                             loadUpTo(grid.v + k, live), loadUpTo(grid.dv + k, live)};
        windowsBetween(x, group.u, group.du, alongX);
        if (!sameBits(lastV, group.v) || !sameBits(lastDv, group.dv)) {
            windowsBetween(y, group.v, group.dv, alongY);
            lastV = group.v;
            lastDv = group.dv;
        }
        Place place;
        const Ints good = placed(planes, alongX, alongY, place);
        if (anyLane(good))
            for (int p = 0; p < planes.count; ++p) {
                const Floats sum = sumOfAny(planes.in[p], planes.stride, place, alongX, alongY);
                storeUpTo(planes.out[p] + k, sum, live);
            }
        for (int64_t lane = 0; lane < live; ++lane)
            left[k + lane] = good[lane] == 0;
    }
}

// --- Sums along rows and columns where samples share windows

void turn(const float* const* from, int64_t count, float* out)
{
    int64_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const FourVectors values = loadFour([&](int64_t lane) { return from[lane] + i; });
        for (int64_t k = 0; k < 4; ++k)
            storeVector(out + (i + k) * laneCount, values.at[k]);
    }
    for (; i < count; ++i)
        for (int64_t lane = 0; lane < laneCount; ++lane)
            out[i * laneCount + lane] = from[lane][i];
}

void rowSums(const float* weight, const int32_t* tap, const int64_t* start, int64_t columns,
             const float* turned, int32_t origin, float* out, int64_t width)
{
    for (int64_t k = 0; k < columns; k += 4) {
        FourVectors sums = {};
        for (int64_t c = 0; c < 4 && k + c < columns; ++c) {
            Floats sum = Floats{};
            for (int64_t i = start[k + c]; i < start[k + c + 1]; ++i)
                sum += loadVector<Floats>(turned + (tap[i] - origin) * laneCount) * weight[i];
            sums.at[c] = sum;
        }
        storeFour([&](int64_t lane) { return out + lane * width + k; }, sums);
    }
}

void columnSums(const float* weight, const int32_t* tap, int64_t taps, const float* rows, int32_t origin,
                int64_t width, float* out, int64_t count)
{
    for (int64_t k = 0; k < count; k += laneCount) {
        Floats sum = Floats{};
        for (int64_t j = 0; j < taps; ++j)
            sum += loadVector<Floats>(rows + (tap[j] - origin) * width + k) * weight[j];
        storeUpTo(out + k, sum, count - k < laneCount ? count - k : laneCount);
    }
}

} // namespace

extern constinit const ru_AreaKernels ru_areaRows = {{RU_COMPILED_FOR}, laneCount, bounds,  windows,
                                                     samples,           turn,      rowSums, columnSums};

} // namespace RU_ISA
