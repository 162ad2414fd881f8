#pragma once

#include <RU/kernel/ru_ConvertRows.h>
#include <TIL/TIL_TileList.h>

#include <algorithm>
#include <type_traits>

/// The range of T over its full width, or between two points.
template <class T, bool FullRange>
ru_Range<T> ru_rangeOf(unsigned int black, unsigned int white)
{
    using Work = ru_Work<T>;
    if constexpr (FullRange) {
        constexpr Work span = PXL_FormatOf<T>::white;
        return {Work(1) / span, span, Work(0)};
    } else {
        const Work span = static_cast<Work>(white - black); // an unsigned difference
        return {white == black ? Work(1) : Work(1) / span, span, static_cast<Work>(black)};
    }
}

/// Between equal points, where every result is the black code.
template <class T, bool FullRange>
bool ru_isEmpty(const ru_Range<T>& range)
{
    return !FullRange && std::is_integral_v<T> && range.span == 0;
}

template <class T>
T ru_blackCode(const ru_Range<T>& range)
{
    return static_cast<T>(std::min(range.black, static_cast<ru_Work<T>>(PXL_FormatOf<T>::white)));
}

/// Rows of one format to and from values, for one call of an operation. The values are of the working type,
/// or float for what pixel functions compute. Where codes are values already, rows can be used in place and
/// nothing is copied.
template <class T, bool FullRange, class Value = ru_Work<T>>
class ru_RowConverter
{
public:
    explicit ru_RowConverter(const TIL_TileList& out)
        : ru_RowConverter(ru_rangeOf<T, FullRange>(out.blackPoint, out.whitePoint))
    {
    }
    explicit ru_RowConverter(const ru_Range<T>& range) : range_(range), rows_(ru_convertRows()) {}

    /// `count` codes as values: in `scratch`, or where they are.
    const Value* read(const T* codes, Value* scratch, int64_t count) const
    {
        if constexpr (inPlace) {
            return codes;
        } else {
            rows_.read(codes, scratch, count, range_);
            return scratch;
        }
    }

    /// `count` codes as values, in `values`; they may be there already.
    void load(const T* codes, Value* values, int64_t count) const
    {
        if (!isSame(codes, values))
            rows_.read(codes, values, count, range_);
    }

    /// Where to compute the values that write() will store at `codes`: `scratch`, or `codes` itself.
    Value* target(T* codes, Value* scratch) const
    {
        if constexpr (inPlace)
            return codes;
        else
            return scratch;
    }

    void write(const Value* values, T* codes, int64_t count) const
    {
        if (ru_isEmpty<T, FullRange>(range_))
            std::fill_n(codes, count, ru_blackCode(range_));
        else if (!isSame(codes, values))
            rows_.write(values, codes, count, range_);
    }

private:
    static constexpr bool inPlace = std::is_same_v<T, Value>;

    static bool isSame(const void* codes, const void* values) { return inPlace && codes == values; }

    ru_Range<T> range_;
    const ru_RowConversion<T, FullRange, Value>& rows_;
};
