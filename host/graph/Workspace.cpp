#include <host/graph/Workspace.h>

namespace host {

TIL_Tile* Workspace::tiles(unsigned char format, int set)
{
    for (const auto& known : sets_)
        if (known->format == format && known->number == set)
            return known->tiles;
    auto made = std::make_unique<Set>();
    made->format = format;
    made->number = set;
    for (TIL_Tile& tile : made->tiles)
        tile = TIL_Tile(format, side_, side_);
    sets_.push_back(std::move(made));
    return sets_.back()->tiles;
}

TIL_Region& Workspace::region(const TIL_Plane& plane, const Components& present, const Window& rect)
{
    const int right = rect.x + rect.width - 1, bottom = rect.y + rect.height - 1;
    for (const auto& known : regions_) {
        if (known->plane != &plane || known->width() != rect.width || known->height() != rect.height)
            continue;
        known->x1 = rect.x;
        known->y1 = rect.y;
        known->x2 = right;
        known->y2 = bottom;
        return *known;
    }
    auto made = std::make_unique<TIL_Region>(plane, rect.x, rect.y, right, bottom);
    for (int c = 0; c < 4; ++c)
        if (!present[static_cast<size_t>(c)])
            made->removeImageData(c);
    regions_.push_back(std::move(made));
    return *regions_.back();
}

TIL_Buffer* Workspace::scratch(int64_t elements)
{
    if (elements > scratchElements_) {
        for (TIL_Buffer& buffer : scratch_)
            buffer = TIL_Buffer(elements * 4);
        scratchElements_ = elements;
    }
    return scratch_;
}

} // namespace host
