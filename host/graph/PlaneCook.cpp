#include <host/graph/PlaneCook.h>

#include <host/file/Format.h>

#include <new>

namespace host {

namespace {

Components both(const Components& a, const Components& b)
{
    return {a[0] && b[0], a[1] && b[1], a[2] && b[2], a[3] && b[3]};
}

Components inverse(const Components& a)
{
    return {!a[0], !a[1], !a[2], !a[3]};
}

} // namespace

PlaneCook::PlaneCook(const Image& in, const Image& out, size_t plane, const Operation& operation,
                     const CookSettings& settings)
    : operation_(operation), workFormat_(widerFormat(in.planes[plane].format, out.planes[plane].format)),
      in_(in, in.planes[plane]), out_(out, out.planes[plane]),
      written_(both(in_.present(), operation.written)), others_(in, out, plane, inverse(written_)),
      plane_(codesOf(workFormat_, settings))
{
    plane_.alpha = !in.planes[plane].colour && in_.present()[3];
}

void PlaneCook::run(const std::vector<Band>& in, Band& out, const Window& rect, Workspace& workspace) const
{
    if (&in.front() != &out)
        others_.run(in, out, rect, workspace);
    if (operation_.isFilter)
        filter(in.front(), out, rect, workspace);
    else
        adjust(in.front(), out, rect, workspace);
}

// Tiles are never marked constant here, not even flat ones: the library evaluates the chain itself for a
// constant tile and looks others up in its tables, which differ for infinities and for 16-bit white. The
// result must not depend on where the cuts between tiles fall.
void PlaneCook::adjust(const Band& in, Band& out, const Window& rect, Workspace& workspace) const
{
    TIL_TileList inTiles(plane_, rect.x, rect.y, rect.x + rect.width - 1, rect.y + rect.height - 1);
    TIL_TileList outTiles = inTiles;
    TIL_Tile* tiles = workspace.tiles(workFormat_);
    const Components& read = operation_.readsAllComponents ? in_.present() : written_;
    for (size_t c = 0; c < 4; ++c) {
        inTiles.tiles[c] = read[c] ? &tiles[c] : nullptr;
        outTiles.tiles[c] = written_[c] ? &tiles[c] : nullptr;
    }
    in_.load(in, rect, workFormat_, PlanePixels::arraysOf(tiles, read), PlanePixels::Outside::Edge,
             workspace);
    if (operation_.algorithm->pixelAdjust(&outTiles, &inTiles, 0.0f, workspace.stop, workspace.thread,
                                          nullptr) == 0)
        throw std::bad_alloc();
    out_.store(workFormat_, PlanePixels::arraysOf(tiles, written_), out, rect, workspace);
}

void PlaneCook::filter(const Band& in, Band& out, const Window& rect, Workspace& workspace) const
{
    const RU_Border border =
        operation_.border(); // the library's bottom is at the lowest y, where our rows begin
    const Window around{rect.x - border.left, rect.y - border.bottom, rect.width + border.left + border.right,
                        rect.height + border.bottom + border.top};
    TIL_Region& region = workspace.region(plane_, written_, around);
    TIL_TileList outTiles(plane_, rect.x, rect.y, rect.x + rect.width - 1, rect.y + rect.height - 1);
    TIL_Tile* tiles = workspace.tiles(workFormat_);
    for (size_t c = 0; c < 4; ++c)
        outTiles.tiles[c] = written_[c] ? &tiles[c] : nullptr;
    in_.load(in, around, workFormat_, PlanePixels::arraysOf(region), PlanePixels::Outside::Edge, workspace);
    if (operation_.algorithm->filter(&outTiles, &region, 0.0f, workspace.stop, workspace.thread, nullptr) ==
        0)
        throw std::bad_alloc();
    out_.store(workFormat_, PlanePixels::arraysOf(tiles, written_), out, rect, workspace);
}

} // namespace host
