#include <host/graph/TileFeed.h>

#include <host/file/Format.h>

#include <algorithm>
#include <cstring>

namespace host {

namespace {

void repeat(char* to, const char* element, int count, int64_t bytes)
{
    for (int k = 0; k < count; ++k)
        std::memcpy(to + k * bytes, element, static_cast<size_t>(bytes));
}

/// Copies a component of a block into a larger or smaller rectangle. The rest of it repeats the nearest pixel,
/// or is 0.
void copyComponent(const Block& from, size_t c, Block& to, size_t target, Outside outside)
{
    const int64_t bytes = PXLbytesPerElement(to.format);
    const Window inside = intersection(to.rect, from.rect);
    if (inside.isEmpty() || (outside == Outside::Zero && inside != to.rect))
        std::memset(to.data[target].data(), 0, static_cast<size_t>(to.bytes()));
    if (inside.isEmpty())
        return;
    const bool repeats = outside == Outside::Edge;
    const int left = inside.x - to.rect.x, right = to.rect.width - left - inside.width;
    for (int y = repeats ? to.rect.y : inside.y;
         y < (repeats ? to.rect.y + to.rect.height : inside.y + inside.height); ++y) {
        const int row = std::clamp(y, inside.y, inside.y + inside.height - 1);
        char* out = static_cast<char*>(to.data[target].data()) + to.offset(to.rect.x, y);
        char* begin = out + left * bytes;
        convertFormat(from.format, from.pixel(c, inside.x, row), to.format, begin, inside.width);
        if (repeats && inside.width != to.rect.width) {
            repeat(out, begin, left, bytes);
            repeat(begin + inside.width * bytes, begin + (inside.width - 1) * bytes, right, bytes);
        }
    }
}

bool isInPlace(const Mapping& mapping)
{
    for (int c = 0; c < 4; ++c)
        if (mapping[static_cast<size_t>(c)] != c && mapping[static_cast<size_t>(c)] >= 0)
            return false;
    return true;
}

} // namespace

size_t TileFeed::stepOf(const Wish& wish) const
{
    const Schedule::Step& step = schedule_.steps()[step_];
    const auto use = std::find_if(step.uses.begin(), step.uses.end(), [&](const Use& known) {
        return known.input == wish.input && known.plane == wish.plane;
    });
    return step.inputs[static_cast<size_t>(use - step.uses.begin())];
}

Block TileFeed::load(const Wish& wish)
{
    const Block& from = workspace_.blocks[stepOf(wish)];
    Components present{};
    for (size_t c = 0; c < 4; ++c)
        present[c] =
            wish.mapping[c] >= 0 && (from.rect.isEmpty() || from.has(static_cast<size_t>(wish.mapping[c])));
    Block block = blank(wish.rect, wish.format, present);
    for (size_t c = 0; c < 4; ++c)
        if (present[c])
            copyComponent(from, static_cast<size_t>(wish.mapping[c]), block, c, wish.outside);
    return block;
}

Block TileFeed::take(const Wish& wish)
{
    const size_t step = stepOf(wish);
    Block& from = workspace_.blocks[step];
    if (workspace_.remaining[step] > 1 || from.rect != wish.rect || !isInPlace(wish.mapping))
        return load(wish);
    Block block = std::move(from);
    from = Block{};
    for (size_t c = 0; c < 4; ++c)
        if (wish.mapping[c] < 0)
            buffers_.give(std::move(block.data[c]), block.bytes());
    return converted(std::move(block), wish.format);
}

Block TileFeed::converted(Block&& block, unsigned char format)
{
    if (block.format == format)
        return std::move(block);
    Block result{block.rect, format, {}};
    for (size_t c = 0; c < 4; ++c) {
        if (!block.has(c))
            continue;
        result.data[c] = buffers_.take(result.bytes());
        convertFormat(block.format, block.data[c].data(), format, result.data[c].data(), block.count());
        buffers_.give(std::move(block.data[c]), block.bytes());
    }
    return result;
}

} // namespace host
