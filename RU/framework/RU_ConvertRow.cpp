#include <RU/framework/RU_ConvertRow.h>

#include <RU/framework/ru_Convert.h>

#include <algorithm>

namespace {

/// What a row's elements mean; the full range is one between points here.
struct Coding
{
    explicit Coding(const TIL_Plane& plane)
        : format(plane.formatCode), size(PXLbytesPerElement(format)), white(PXLfullWhite(format))
    {
        if (white > 1 && plane.usesBlackWhitePoints() != 0) { // an integer format
            black = plane.blackPoint;
            white = plane.whitePoint;
        }
    }
    bool operator==(const Coding&) const = default;

    /// The kernels for rows of T and this range.
    template <class T, class Value>
    ru_RowConverter<T, false, Value> rows() const
    {
        return ru_RowConverter<T, false, Value>(ru_rangeOf<T, false>(black, white));
    }

    unsigned char format;
    int size;
    unsigned int black = 0, white;
};

/// A piece of a row on its way.
struct Piece
{
    float floats[ru_chunk];
    double doubles[ru_chunk];
    unsigned int codes[ru_chunk];
};

void throughFloats(const Coding& from, const void* in, const Coding& to, void* out, int64_t count,
                   Piece& piece)
{
    PXLwithElement(from.format, [&]<class From>() {
        const float* values =
            from.rows<From, float>().read(static_cast<const From*>(in), piece.floats, count);
        PXLwithElement(to.format,
                       [&]<class To>() { to.rows<To, float>().write(values, static_cast<To*>(out), count); });
    });
}

/// Codes of 8 and 16 bits pass as 32-bit ones over their own range.
void throughDoubles(const Coding& from, const void* in, const Coding& to, void* out, int64_t count,
                    Piece& piece)
{
    PXLwithElement(from.format, [&]<class From>() {
        const auto* elements = static_cast<const From*>(in);
        if constexpr (std::is_integral_v<From>) {
            std::copy_n(elements, count, piece.codes);
            from.rows<unsigned int, double>().read(piece.codes, piece.doubles, count);
        } else {
            const float* values = from.rows<From, float>().read(elements, piece.floats, count);
            std::copy_n(values, count, piece.doubles);
        }
    });
    PXLwithElement(to.format, [&]<class To>() {
        auto* elements = static_cast<To*>(out);
        if constexpr (std::is_integral_v<To>) {
            to.rows<unsigned int, double>().write(piece.doubles, piece.codes, count);
            std::transform(piece.codes, piece.codes + count, elements, [](unsigned int code) {
                return static_cast<To>(std::min(code, PXL_FormatOf<To>::white));
            });
        } else {
            std::transform(piece.doubles, piece.doubles + count, piece.floats,
                           [](double value) { return static_cast<float>(value); });
            to.rows<To, float>().write(piece.floats, elements, count);
        }
    });
}

} // namespace

int RUconvertRow(const TIL_Plane& from, const void* in, const TIL_Plane& to, void* out, int64_t count)
{
    const Coding source(from), target(to);
    if (source.size == 0 || target.size == 0)
        return 0;
    if (source == target) {
        std::copy_n(static_cast<const char*>(in), count * source.size, static_cast<char*>(out));
        return 1;
    }
    const bool wide = source.format == PXL_FORMAT_uint32 || target.format == PXL_FORMAT_uint32;
    const auto convert = wide ? throughDoubles : throughFloats;
    Piece piece;
    for (int64_t i = 0; i < count; i += ru_chunk)
        convert(source, static_cast<const char*>(in) + i * source.size, target,
                static_cast<char*>(out) + i * target.size, std::min(ru_chunk, count - i), piece);
    return 1;
}
