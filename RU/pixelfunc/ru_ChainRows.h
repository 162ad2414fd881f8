#pragma once

#include <RU/framework/ru_Convert.h>
#include <RU/pixelfunc/RU_PixelFunction.h>

#include <algorithm>

/// Copies a row of values, unless it is the same; null for an absent component.
inline void ru_copyRow(const float* in, float* out, int64_t count)
{
    if (in != out)
        std::copy_n(in, count, out);
}

/// Rows of one format as the floats that chains work on.
template <class T, bool FullRange>
using ru_FloatRows = ru_RowConverter<T, FullRange, float>;

/// The range in which the engine reads codes. Departs from the common rule for 32-bit codes between points:
/// their scale is a float, as the chain's values are.
template <class T, bool FullRange>
ru_Range<T> ru_engineRange(unsigned int black, unsigned int white)
{
    ru_Range<T> range = ru_rangeOf<T, FullRange>(black, white);
    if constexpr (std::is_same_v<T, unsigned int> && !FullRange)
        range.scale = white == black ? 1.0f : 1.0f / static_cast<float>(white - black);
    return range;
}

/// A chain over rows of codes of one component, value by value.
template <class T, bool FullRange>
class ru_ChainRows
{
public:
    using Code = T;

    ru_ChainRows(const RU_PixelFunction& chain, const ru_Range<T>& range) : chain_(chain), rows_(range) {}

    /// `in` and `out` may be the same.
    void evaluate(const T* in, T* out, int64_t count, int component) const
    {
        float scratch[ru_chunk];
        for (int64_t start = 0; start < count; start += ru_chunk) {
            const int64_t length = std::min(ru_chunk, count - start);
            float* values = rows_.target(out + start, scratch);
            const float* from = rows_.read(in + start, values, length);
            chain_.processRow(from, values, length, component);
            rows_.write(values, out + start, length);
        }
    }

private:
    const RU_PixelFunction& chain_;
    ru_FloatRows<T, FullRange> rows_;
};
