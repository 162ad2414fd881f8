#include <RU/kernel/ru_Lanes.h>
#include <RU/kernel/ru_OneNaN.h>
#include <RU/pixelfunc/ru_LineRows.h>

namespace RU_ISA {
namespace {

/// Vectors that are computed side by side, so that one's operations run while another's are under way.
constexpr int64_t groupLanes = 4;
constexpr int64_t groupSize = groupLanes * laneCount;

struct Group
{
    Floats lanes[groupLanes];
};

RU_INLINE Group load(const float* values)
{
    Group group;
    for (int64_t k = 0; k < groupLanes; ++k)
        group.lanes[k] = loadVector<Floats>(values + k * laneCount);
    return group;
}

RU_INLINE void store(float* values, const Group& group)
{
    for (int64_t k = 0; k < groupLanes; ++k)
        storeVector(values + k * laneCount, group.lanes[k]);
}

/// Stores compute(group) of every group of values. The last one is filled up with ones.
template <class Compute>
RU_INLINE void eachGroup(const float* in, float* out, int64_t count, Compute compute)
{
    int64_t i = 0;
    for (; i + groupSize <= count; i += groupSize)
        store(out + i, compute(load(in + i)));
    if (i == count)
        return;
    float last[groupSize];
    for (float& v : last)
        v = 1.0f;
    const auto bytes = sizeof(float) * static_cast<uint64_t>(count - i);
    __builtin_memcpy(last, in + i, bytes);
    store(last, compute(load(last)));
    __builtin_memcpy(out + i, last, bytes);
}

/// Do values up to `bound` in magnitude stay finite?
RU_INLINE bool stayFinite(const ru_Lines& lines, double bound)
{
    for (int64_t i = 0; i < lines.count; ++i) {
        const ru_Line& line = lines.first[i];
        bound = bound * __builtin_fabs(line.mult) + __builtin_fabs(line.add);
        if (line.limits())
            bound += __builtin_fabs(line.belowValue) + __builtin_fabs(line.aboveValue);
        if (!(bound < 0x1p127))
            return false;
    }
    return true;
}

/// Every line on a group, and one NaN for all if there can be any.
template <bool AllFinite = false>
RU_INLINE Group follow(const ru_Lines& lines, Group group)
{
    for (int64_t i = 0; i < lines.count; ++i) {
        const ru_Line& line = lines.first[i];
        if (line.multiplies())
            for (Floats& v : group.lanes)
                v = v * line.mult;
        if (line.adds())
            for (Floats& v : group.lanes)
                v = v + line.add;
        if (!line.limits())
            continue;
        for (Floats& v : group.lanes) {
            v = v < line.lower ? splat(line.belowValue) : v;
            v = v > line.upper ? splat(line.aboveValue) : v;
        }
    }
    if (!AllFinite)
        for (Floats& v : group.lanes)
            v = v == v ? v : splat(__builtin_nanf("")); // NOLINT(misc-redundant-expression)
    return group;
}

void runRow(const ru_Lines& given, const float* in, float* out, int64_t count)
{
    const ru_Lines lines = given;
    eachGroup(in, out, count, [&](const Group& group) { return follow(lines, group); });
}

/// For values of any kind.
template <class Power>
void runFar(const Power& power, const ru_Lines& lines, const float* in, float* out, int64_t count)
{
    RU_EACH_ALONE
    for (int64_t i = 0; i < count; ++i)
        out[i] = power(in[i]);
    runRow(lines, out, out, count);
}

/// A power in floats, odd about 0, where every value is in reach or 0.
template <class Power>
class Near
{
public:
    [[gnu::always_inline]] Near(const Power& power, const ru_Exponent& exponent)
        : lanes_(exponent), atZero_(__builtin_bit_cast(int32_t, power(0.0f))),
          signAtZero_(atZero_ ^ __builtin_bit_cast(int32_t, power(-0.0f))),
          lowest_(static_cast<int32_t>(exponent.lowest))
    {
    }

    [[gnu::always_inline]] Group operator()(const Group& group)
    {
        Group result;
        for (int64_t k = 0; k < groupLanes; ++k) {
            const Floats v = group.lanes[k];
            const Ints bits = __builtin_bit_cast(Ints, v);
            const Ints power = __builtin_bit_cast(Ints, ru_math::powInReach(v, lanes_));
            const Ints odd = power | (bits & INT32_MIN);
            const Ints isZero = v == 0.0f;
            result.lanes[k] = __builtin_bit_cast(Floats, isZero ? atZero_ ^ (bits & signAtZero_) : odd);
            const Words place = __builtin_bit_cast(Words, ((bits & INT32_MAX) - lowest_) & ~isZero);
            farthest_ = place > farthest_ ? place : farthest_;
        }
        return result;
    }

    [[gnu::always_inline]] bool hasMetFar() const
    {
        return anyLane(__builtin_bit_cast(Ints, farthest_ >= lanes_.p.span));
    }

private:
    const PowerOfLanes lanes_;
    const int32_t atZero_, signAtZero_, lowest_;
    Words farthest_ = {}; ///< above the lowest in reach
};

template <class Power>
void runRow(const ru_LinesAfter<Power>& given, const float* in, float* out, int64_t count)
{
    const Power power = given.power;
    const ru_Lines lines = given.lines;
    const ru_Exponent exponent = *power.exponent; // a copy: nothing the loop stores can change it
    if (exponent.span == 0)
        return runFar(power, lines, in, out, count);
    const bool finite = stayFinite(lines, 0x1p126 + __builtin_fabs(power(0.0f)));
    constexpr int64_t segment = 256;
    float kept[segment];
    for (int64_t i = 0; i < count; i += segment) {
        const int64_t length = count - i < segment ? count - i : segment;
        const float* from = in + i;
        if (in == out)
            from = static_cast<const float*>(
                __builtin_memcpy(kept, from, sizeof(float) * static_cast<uint64_t>(length)));
        Near<Power> near(power, exponent);
        if (finite)
            eachGroup(from, out + i, length,
                      [&](const Group& group) { return follow<true>(lines, near(group)); });
        else
            eachGroup(from, out + i, length, [&](const Group& group) { return follow(lines, near(group)); });
        if (near.hasMetFar())
            runFar(power, lines, from, out + i, length);
    }
}

} // namespace

extern constinit const ru_LineKernels ru_lineRows = {
#define RU_ROW(ROW) {runRow},
    RU_FOR_EACH_LINE_ROW(RU_ROW)
#undef RU_ROW
        {RU_COMPILED_FOR}};

} // namespace RU_ISA
