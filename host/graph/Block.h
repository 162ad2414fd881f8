#pragma once

#include <host/file/Components.h>
#include <host/file/Image.h>

#include <TIL/TIL_Buffer.h>

#include <array>
#include <map>
#include <vector>

namespace host {

/// One array per component; null where there is none.
using Arrays = std::array<void*, 4>;

/// Pixels of a plane in a rectangle: an array per component, rows without a gap.
struct Block
{
    Window rect;
    unsigned char format = 0;
    std::array<TIL_Buffer, 4> data;

    int64_t count() const { return static_cast<int64_t>(rect.width) * rect.height; }
    int64_t bytes() const { return count() * PXLbytesPerElement(format); }
    bool has(size_t c) const { return data[c].data() != nullptr; }

    Arrays arrays() { return {data[0].data(), data[1].data(), data[2].data(), data[3].data()}; }

    /// Where a pixel lies in an array.
    int64_t offset(int x, int y) const
    {
        return (static_cast<int64_t>(y - rect.y) * rect.width + (x - rect.x)) * PXLbytesPerElement(format);
    }
    const char* pixel(size_t c, int x, int y) const
    {
        return has(c) ? static_cast<const char*>(data[c].data()) + offset(x, y) : nullptr;
    }

    template <class T>
    T* values(size_t c)
    {
        return static_cast<T*>(data[c].data());
    }
};

/// Memory for blocks that goes from one to the next; for one thread.
class Buffers
{
public:
    TIL_Buffer take(int64_t bytes);
    void give(TIL_Buffer&& buffer, int64_t bytes);

    Block block(const Window& rect, unsigned char format, const Components& present);
    void give(Block&& block);

private:
    std::map<int64_t, std::vector<TIL_Buffer>> free_; ///< by size
    int64_t freeBytes_ = 0;
};

} // namespace host
