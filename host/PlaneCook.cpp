#include <host/PlaneCook.h>

#include <host/Format.h>

#include <cstring>
#include <new>

namespace host {

TIL_Tile* Workspace::tiles(unsigned char format, int side)
{
    for (const auto& set : sets_)
        if (set->format == format)
            return set->tiles;
    auto set = std::make_unique<Set>();
    set->format = format;
    for (TIL_Tile& tile : set->tiles)
        tile = TIL_Tile(format, side, side);
    sets_.push_back(std::move(set));
    return sets_.back()->tiles;
}

TIL_Buffer* Workspace::scratch(int side)
{
    if (scratch_ == nullptr) {
        scratch_ = std::make_unique<TIL_Buffer[]>(4);
        for (int c = 0; c < 4; ++c)
            scratch_[static_cast<size_t>(c)] = TIL_Buffer(static_cast<int64_t>(side + 2) * (side + 2) * 4);
    }
    return scratch_.get();
}

PlaneCook::PlaneCook(const Image& in, const Image& out, size_t plane, const Operation* operation,
                     const CookSettings& settings)
    : operation_(operation), window_(in.data), inFormat_(in.planes[plane].format),
      outFormat_(out.planes[plane].format), workFormat_(widerFormat(inFormat_, outFormat_)),
      side_(settings.tile), inLayout_(in, in.planes[plane]), outLayout_(out, out.planes[plane]),
      plane_(workFormat_, 4)
{
    for (size_t c = 0; c < 4; ++c) {
        present_[c] = in.planes[plane].channel[c] >= 0;
        written_[c] = present_[c] && operation != nullptr && operation->written[c];
    }
    plane_.alpha = !in.planes[plane].colour && present_[3];
    if (settings.black || settings.white) {
        plane_.blackWhitePoints = true;
        plane_.blackPoint = settings.black.value_or(0);
        plane_.whitePoint = settings.white.value_or(PXLfullWhite(workFormat_));
    }
}

void PlaneCook::run(const Band& in, Band& out, const Window& rect, Workspace& workspace, void* stop,
                    int thread) const
{
    if (&in != &out)
        copyOthers(in, out, rect, workspace);
    if (operation_ == nullptr)
        return;
    if (operation_->isFilter())
        filter(in, out, rect, workspace, stop, thread);
    else
        adjust(in, out, rect, workspace, stop, thread);
}

// Tiles are never marked constant here, not even flat ones: the library evaluates the chain itself for a
// constant tile and looks others up in its tables, which differ for infinities and for 16-bit white. The
// result must not depend on where the cuts between tiles fall.
void PlaneCook::adjust(const Band& in, Band& out, const Window& rect, Workspace& workspace, void* stop,
                       int thread) const
{
    TIL_TileList inTiles(plane_, rect.x, rect.y, rect.x + rect.width - 1, rect.y + rect.height - 1);
    TIL_TileList outTiles = inTiles;
    Pointers loaded{}, stored{};
    TIL_Tile* tiles = workspace.tiles(workFormat_, side_);
    for (size_t c = 0; c < 4; ++c) {
        char* data = nullptr;
        tiles[c].getImageData(data);
        if (present_[c] && (written_[c] || operation_->readsAllComponents)) {
            inTiles.tiles[c] = &tiles[c];
            loaded[c] = data;
        }
        if (written_[c]) {
            outTiles.tiles[c] = &tiles[c];
            stored[c] = data;
        }
    }
    load(in, rect, workFormat_, loaded, workspace.scratch(side_));
    if (operation_->algorithm->pixelAdjust(&outTiles, &inTiles, 0.0f, stop, thread, nullptr) == 0)
        throw std::bad_alloc();
    store(workFormat_, stored, out, rect, workspace.scratch(side_));
}

void PlaneCook::filter(const Band& in, Band& out, const Window& rect, Workspace& workspace, void* stop,
                       int thread) const
{
    const int border = operation_->border;
    const Window around{rect.x - border, rect.y - border, rect.width + 2 * border, rect.height + 2 * border};
    TIL_Region region(plane_, around.x, around.y, around.x + around.width - 1, around.y + around.height - 1);
    TIL_TileList outTiles(plane_, rect.x, rect.y, rect.x + rect.width - 1, rect.y + rect.height - 1);
    Pointers loaded{}, stored{};
    TIL_Tile* tiles = workspace.tiles(workFormat_, side_);
    for (size_t c = 0; c < 4; ++c) {
        if (!written_[c])
            continue;
        char* data = nullptr;
        tiles[c].getImageData(data);
        outTiles.tiles[c] = &tiles[c];
        loaded[c] = region.getImageData(static_cast<int>(c));
        stored[c] = data;
    }
    load(in, around, workFormat_, loaded, workspace.scratch(side_));
    if (operation_->algorithm->filter(&outTiles, &region, 0.0f, stop, thread, nullptr) == 0)
        throw std::bad_alloc();
    store(workFormat_, stored, out, rect, workspace.scratch(side_));
}

/// Pixels to planes of `format`. What lies outside of the image repeats its edge.
void PlaneCook::load(const Band& in, const Window& rect, unsigned char format, const Pointers& planes,
                     TIL_Buffer* scratch) const
{
    const int bytes = PXLbytesPerElement(inFormat_);
    const int x = std::max(rect.x, window_.x);
    const int inside = std::min(rect.x + rect.width, window_.x + window_.width) - x;
    const int left = x - rect.x;
    const int right = rect.width - left - inside;
    const bool direct = format == inFormat_;
    for (int i = 0; i < rect.height; ++i) {
        const int y = std::clamp(rect.y + i, window_.y, window_.y + window_.height - 1);
        Pointers rows{}, begins{};
        for (size_t c = 0; c < 4; ++c) {
            if (planes[c] == nullptr)
                continue;
            char* base = static_cast<char*>(direct ? planes[c] : scratch[c].data());
            rows[c] = base + static_cast<int64_t>(i) * rect.width * bytes;
            begins[c] = static_cast<char*>(rows[c]) + left * bytes;
        }
        inLayout_.split(in.pixel(x, y), begins.data(), inside);
        for (size_t c = 0; c < 4 && left + right > 0; ++c) {
            if (planes[c] == nullptr)
                continue;
            char* row = static_cast<char*>(rows[c]);
            for (int k = 0; k < left; ++k)
                std::memcpy(row + k * bytes, row + left * bytes, static_cast<size_t>(bytes));
            for (int k = rect.width - right; k < rect.width; ++k)
                std::memcpy(row + k * bytes, row + (left + inside - 1) * bytes, static_cast<size_t>(bytes));
        }
    }
    for (size_t c = 0; c < 4 && !direct; ++c)
        if (planes[c] != nullptr)
            convertFormat(inFormat_, scratch[c].data(), format, planes[c],
                          static_cast<int64_t>(rect.width) * rect.height);
}

/// Planes of `format` to pixels.
void PlaneCook::store(unsigned char format, const Pointers& planes, Band& out, const Window& rect,
                      TIL_Buffer* scratch) const
{
    const int64_t rowBytes = static_cast<int64_t>(rect.width) * PXLbytesPerElement(outFormat_);
    Pointers from = planes;
    for (size_t c = 0; c < 4 && format != outFormat_; ++c) {
        if (planes[c] == nullptr)
            continue;
        from[c] = scratch[c].data();
        convertFormat(format, planes[c], outFormat_, from[c], static_cast<int64_t>(rect.width) * rect.height);
    }
    for (int i = 0; i < rect.height; ++i) {
        const void* rows[4] = {};
        for (size_t c = 0; c < 4; ++c)
            if (from[c] != nullptr)
                rows[c] = static_cast<const char*>(from[c]) + i * rowBytes;
        outLayout_.join(rows, out.pixel(rect.x, rect.y + i), rect.width);
    }
}

/// Copies the components that the operation does not write, in the output's format.
void PlaneCook::copyOthers(const Band& in, Band& out, const Window& rect, Workspace& workspace) const
{
    TIL_Tile* tiles = workspace.tiles(inFormat_, side_);
    Pointers planes{};
    for (size_t c = 0; c < 4; ++c) {
        char* data = nullptr;
        tiles[c].getImageData(data);
        planes[c] = present_[c] && !written_[c] ? data : nullptr;
    }
    load(in, rect, inFormat_, planes, workspace.scratch(side_));
    store(inFormat_, planes, out, rect, workspace.scratch(side_));
}

} // namespace host
