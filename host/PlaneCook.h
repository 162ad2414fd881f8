#pragma once

#include <host/Bands.h>
#include <host/Cook.h>

#include <TIL/TIL_Region.h>
#include <TIL/TIL_TileList.h>

#include <vector>

namespace host {

/// What one thread keeps from tile to tile: buffers for elements of any format.
class Workspace
{
public:
    /// Four tiles of a format, and four buffers for conversions, for tiles of `side` squared and a border of
    /// one.
    TIL_Tile* tiles(unsigned char format, int side);
    TIL_Buffer* scratch(int side);

private:
    struct Set
    {
        unsigned char format;
        TIL_Tile tiles[4];
    };
    std::vector<std::unique_ptr<Set>> sets_;
    std::unique_ptr<TIL_Buffer[]> scratch_;
};

/// Works on one plane of an image, tile by tile; any number of threads may call it, each with its own
/// workspace.
class PlaneCook
{
public:
    PlaneCook(const Image& in, const Image& out, size_t plane, const Operation* operation,
              const CookSettings& settings);

    /// Computes or copies the plane's part of a rectangle. `in` and `out` may be the same band unless the
    /// operation is a filter. `stop` is the token of the library's interrupt callback.
    void run(const Band& in, Band& out, const Window& rect, Workspace& workspace, void* stop,
             int thread) const;

    /// True when the operation writes any component of the plane.
    bool writes() const { return written_ != Components{}; }

    /// False when input and output may share a band and there is nothing to do.
    bool isNeeded(bool inPlace) const { return operation_ != nullptr || !inPlace; }

private:
    using Pointers = std::array<void*, 4>;

    void adjust(const Band& in, Band& out, const Window& rect, Workspace& workspace, void* stop,
                int thread) const;
    void filter(const Band& in, Band& out, const Window& rect, Workspace& workspace, void* stop,
                int thread) const;
    void load(const Band& in, const Window& rect, unsigned char format, const Pointers& planes,
              TIL_Buffer* scratch) const;
    void store(unsigned char format, const Pointers& planes, Band& out, const Window& rect,
               TIL_Buffer* scratch) const;
    void copyOthers(const Band& in, Band& out, const Window& rect, Workspace& workspace) const;

    const Operation* operation_; ///< null: copy
    Window window_;
    unsigned char inFormat_, outFormat_, workFormat_;
    int side_;
    Interleaving inLayout_, outLayout_;
    Components present_{};
    Components written_{}; ///< components that the operation writes here
    TIL_Plane plane_;
};

} // namespace host
