#pragma once

#include <RU/framework/ru_ConvertRows.h>
#include <TIL/TIL_TileList.h>

#include <type_traits>

/// The range of T over its full width, or between two points.
template <class T, bool FullRange>
ru_Range<T> ru_rangeOf(unsigned int black, unsigned int white)
{
    using Work = ru_Work<T>;
    if constexpr (FullRange) {
        constexpr Work span = PXL_FormatOf<T>::white;
        return {Work(1) / span, span, Work(0), 0};
    } else {
        const Work span = static_cast<Work>(white - black); // an unsigned difference
        const int code = static_cast<int>(black < 0x7FFFFFFFu ? black : 0x7FFFFFFFu);
        return {white == black ? Work(1) : Work(1) / span, span, static_cast<Work>(black), code};
    }
}

/// Rows of one format to and from working values, for one call of an operation.
/// Where codes are working values already (float), rows are used in place and nothing is copied.
template <class T, bool FullRange>
class ru_RowConverter
{
public:
    using Work = ru_Work<T>;
    static constexpr bool inPlace = std::is_same_v<T, Work>;

    explicit ru_RowConverter(const TIL_TileList& out)
        : ru_RowConverter(ru_rangeOf<T, FullRange>(out.blackPoint, out.whitePoint))
    {
    }
    explicit ru_RowConverter(const ru_Range<T>& range) : range_(range), rows_(ru_convertRows()) {}

    /// `count` codes as working values: in `scratch`, or where they are.
    const Work* read(const T* codes, Work* scratch, int64_t count) const
    {
        if constexpr (inPlace) {
            return codes;
        } else {
            rows_.read(codes, scratch, count, range_);
            return scratch;
        }
    }

    /// Where to compute the values that write() will store at `codes`: `scratch`, or `codes` itself.
    Work* target(T* codes, Work* scratch) const
    {
        if constexpr (inPlace)
            return codes;
        else
            return scratch;
    }

    void write(const Work* values, T* codes, int64_t count) const
    {
        if constexpr (!inPlace)
            rows_.write(values, codes, count, range_);
    }

private:
    ru_Range<T> range_;
    const ru_RowConversion<T, FullRange>& rows_;
};
