#pragma once

#include <reference/Formats.h>

namespace reference {

/// The place of a pixel among all of its format: codes count, floats and halves go from the NaN with a sign over
/// the infinities, -0 and 0 to the NaN without.
inline int64_t placeOf(Format format, uint32_t bits)
{
    const uint32_t sign = format.isHalf() ? 0x8000u : 0x80000000u;
    return format.isInteger() || (bits & sign) == 0 ? bits : -1 - int64_t(bits ^ sign);
}

inline uint32_t bitsOfPlace(Format format, int64_t place)
{
    const uint32_t sign = format.isHalf() ? 0x8000u : 0x80000000u;
    return place >= 0 ? static_cast<uint32_t>(place) : static_cast<uint32_t>(-1 - place) | sign;
}

/// A plane of places.
struct Places
{
    explicit Places(int w = 0, int h = 0) : width(w), height(h), all(static_cast<size_t>(w * h)) {}
    Places(Format format, const void* data, int w, int h) : Places(w, h)
    {
        for (int i = 0; i < w * h; ++i)
            all[static_cast<size_t>(i)] = placeOf(format, format.bitsAt(data, i));
    }
    int64_t& at(int x, int y) { return all[static_cast<size_t>(y * width + x)]; }
    const int64_t& at(int x, int y) const { return all[static_cast<size_t>(y * width + x)]; }

    int width, height;
    std::vector<int64_t> all;
};

} // namespace reference
