#pragma once

#include <RU/framework/ru_Convert.h>
#include <RU/shape/ru_FillRows.h>

#include <array>
#include <cmath>
#include <limits>
#include <optional>

/// What a code of the full range is multiplied by before it is compared with a new value. These are not the factors
/// by which codes are read everywhere else: those of 8 and 16 bits are rounded to fewer digits, that of 32 bits is
/// 2^-32, so that white compares as below 1.
template <class T>
inline constexpr float ru_comparedScale = 1.0f;
template <>
inline constexpr float ru_comparedScale<unsigned char> = 0.003921569f;
template <>
inline constexpr float ru_comparedScale<unsigned short> = 1.5259021893143654e-05f;
template <>
inline constexpr float ru_comparedScale<unsigned int> = 2.3283064370807974e-10f;

/// Raises codes of one format and range to values; those that are as large already stay, and NaN raises nothing.
template <class T, bool FullRange>
class ru_FillWriter
{
public:
    explicit ru_FillWriter(const TIL_TileList& out)
        : range_(ru_rangeOf<T, FullRange>(out.blackPoint, out.whitePoint)), convert_(range_)
    {
    }

    void convert(const float* values, T* codes, int64_t count) const
    {
        std::array<ru_Work<T>, 128> piece;
        for (int64_t from = 0; from < count; from += int64_t{piece.size()}) {
            const int64_t size = std::min(count - from, int64_t{piece.size()});
            std::copy_n(values + from, size, piece.begin());
            convert_.write(piece.data(), codes + from, size);
        }
    }

    bool isBelow(T code, float value) const { return compared(code) < value; }

    /// The largest code below `value`; none when no code is.
    std::optional<T> lastBelow(float value) const
    {
        if constexpr (std::is_same_v<T, float>) {
            return value > -std::numeric_limits<float>::infinity()
                       ? std::optional(std::nextafter(value, -std::numeric_limits<float>::infinity()))
                       : std::nullopt;
        } else {
            int64_t low = firstRank - 1, high = lastRank; // the rank looked for lies in between
            while (low < high) {
                const int64_t middle = low + (high - low + 1) / 2;
                if (isBelow(codeOf(middle), value))
                    low = middle;
                else
                    high = middle - 1;
            }
            return low < firstRank ? std::nullopt : std::optional(codeOf(low));
        }
    }

    /// All codes of a row up to `last`, which lastBelow() found.
    void raiseRow(T* codes, int64_t count, T last, T raised) const
    {
        kernels_.raise(codes, count, last, raised);
    }

private:
    // Codes by their rank: their own order, for halves that of their values from -infinity to infinity.
    static constexpr bool isHalf = std::is_same_v<T, fpreal16>;
    static constexpr int64_t firstRank = isHalf ? -0x7C01 : 0;
    static constexpr int64_t lastRank = isHalf ? 0x7C00 : int64_t{PXL_FormatOf<T>::white};
    static T codeOf(int64_t rank)
    {
        if constexpr (isHalf)
            return fpreal16::fromBits(static_cast<uint16_t>(rank < 0 ? 0x8000 | (-1 - rank) : rank));
        else
            return static_cast<T>(rank);
    }

    auto compared(T code) const
    {
        if constexpr (!std::is_integral_v<T>)
            return static_cast<float>(code);
        else if constexpr (FullRange)
            return static_cast<float>(code) * ru_comparedScale<T>;
        else
            return (static_cast<ru_Work<T>>(code) - range_.black) * range_.scale;
    }

    ru_Range<T> range_;
    ru_RowConverter<T, FullRange> convert_;
    const ru_RaiseRow<T>& kernels_ = ru_fillRows();
};
