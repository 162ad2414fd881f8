#include <host/graph/Block.h>

#include <algorithm>
#include <utility>

namespace host {

namespace {

constexpr int64_t mostFreeBytes = 64 << 20; ///< or few that are large; footprints of all sizes pile up else

/// Sizes are few, so that tiles at the edges share buffers with others.
int64_t roundedUp(int64_t bytes)
{
    constexpr int64_t step = 32 << 10;
    return (bytes + step - 1) / step * step;
}

} // namespace

TIL_Buffer Buffers::take(int64_t bytes)
{
    std::vector<TIL_Buffer>& known = free_[roundedUp(bytes)];
    if (known.empty())
        return TIL_Buffer(roundedUp(bytes));
    TIL_Buffer buffer = std::move(known.back());
    known.pop_back();
    freeBytes_ -= roundedUp(bytes);
    return buffer;
}

void Buffers::give(TIL_Buffer&& buffer, int64_t bytes)
{
    const int64_t size = roundedUp(bytes);
    if (buffer.data() == nullptr)
        return;
    const int64_t largest = std::max(size, free_.empty() ? 0 : free_.rbegin()->first);
    if (freeBytes_ + size > std::max(mostFreeBytes, 8 * largest)) { // two large blocks may stay
        free_.clear();
        freeBytes_ = 0;
    }
    free_[size].push_back(std::move(buffer));
    freeBytes_ += size;
}

Block Buffers::block(const Window& rect, unsigned char format, const Components& present)
{
    Block block{rect, format, {}};
    for (size_t c = 0; c < 4; ++c)
        if (present[c])
            block.data[c] = take(block.bytes());
    return block;
}

void Buffers::give(Block&& block)
{
    for (TIL_Buffer& buffer : block.data)
        give(std::move(buffer), block.bytes());
}

} // namespace host
