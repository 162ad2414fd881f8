#include <host/graph/PlanePixels.h>

#include <host/file/Format.h>

#include <cstring>

namespace host {

namespace {

/// Fills a row to both sides of the `inside` elements from `left` on with those at their ends.
void repeatEnds(char* row, int left, int inside, int width, int64_t bytes)
{
    for (int k = 0; k < left; ++k)
        std::memcpy(row + k * bytes, row + left * bytes, static_cast<size_t>(bytes));
    for (int k = left + inside; k < width; ++k)
        std::memcpy(row + k * bytes, row + (left + inside - 1) * bytes, static_cast<size_t>(bytes));
}

} // namespace

PlanePixels::PlanePixels(const Image& image, const Plane& plane)
    : window_(image.data), format_(plane.format), layout_(image, plane)
{
    for (size_t c = 0; c < 4; ++c)
        present_[c] = plane.channel[c] >= 0;
}

PlanePixels::Arrays PlanePixels::arraysOf(TIL_Tile* tiles, const Components& wanted)
{
    Arrays arrays{};
    for (size_t c = 0; c < 4; ++c) {
        char* data = nullptr;
        tiles[c].getImageData(data);
        arrays[c] = wanted[c] ? data : nullptr;
    }
    return arrays;
}

PlanePixels::Arrays PlanePixels::arraysOf(TIL_Region& region)
{
    return {region.getImageData(0), region.getImageData(1), region.getImageData(2), region.getImageData(3)};
}

/// The arrays themselves where no conversion is needed, else others to convert from or to.
PlanePixels::Arrays PlanePixels::inOwnFormat(unsigned char format, const Arrays& arrays, int64_t count,
                                             Workspace& workspace) const
{
    Arrays own = arrays;
    for (size_t c = 0; c < 4 && format != format_; ++c)
        own[c] = arrays[c] != nullptr && present_[c] ? workspace.scratch(count)[c].data() : nullptr;
    return own;
}

void PlanePixels::load(const Band& in, const Window& rect, unsigned char format, const Arrays& arrays,
                       Outside outside, Workspace& workspace) const
{
    const int64_t bytes = PXLbytesPerElement(format_);
    const int64_t count = static_cast<int64_t>(rect.width) * rect.height;
    const Window inside = intersection(rect, window_);
    const Arrays own = inOwnFormat(format, arrays, count, workspace);
    if (outside == Outside::Zero && inside != rect)
        for (void* array : own)
            if (array != nullptr)
                std::memset(array, 0, static_cast<size_t>(count * bytes));
    const int x = std::max(rect.x, window_.x);
    const int width = std::min(rect.x + rect.width, window_.x + window_.width) - x;
    for (int i = 0; i < rect.height; ++i) {
        const int y = std::clamp(rect.y + i, window_.y, window_.y + window_.height - 1);
        if (outside == Outside::Zero && (y != rect.y + i || inside.width == 0))
            continue;
        Arrays begins{};
        for (size_t c = 0; c < 4; ++c)
            if (own[c] != nullptr)
                begins[c] = static_cast<char*>(own[c]) +
                            (static_cast<int64_t>(i) * rect.width + (x - rect.x)) * bytes;
        layout_.split(in.pixel(x, y), begins.data(), width);
        for (size_t c = 0; c < 4 && outside == Outside::Edge && width < rect.width; ++c)
            if (own[c] != nullptr)
                repeatEnds(static_cast<char*>(begins[c]) - (x - rect.x) * bytes, x - rect.x, width,
                           rect.width, bytes);
    }
    for (size_t c = 0; c < 4 && format != format_; ++c)
        if (own[c] != nullptr)
            convertFormat(format_, own[c], format, arrays[c], count);
}

void PlanePixels::store(unsigned char format, const Arrays& arrays, Band& out, const Window& rect,
                        Workspace& workspace) const
{
    const int64_t rowBytes = static_cast<int64_t>(rect.width) * PXLbytesPerElement(format_);
    const int64_t count = static_cast<int64_t>(rect.width) * rect.height;
    const Arrays own = inOwnFormat(format, arrays, count, workspace);
    for (size_t c = 0; c < 4 && format != format_; ++c)
        if (own[c] != nullptr)
            convertFormat(format, arrays[c], format_, own[c], count);
    for (int i = 0; i < rect.height; ++i) {
        const void* rows[4] = {};
        for (size_t c = 0; c < 4; ++c)
            if (own[c] != nullptr)
                rows[c] = static_cast<const char*>(own[c]) + i * rowBytes;
        layout_.join(rows, out.pixel(rect.x, rect.y + i), rect.width);
    }
}

} // namespace host
