#pragma once

#include <host/chain/Chain.h>
#include <host/file/Image.h>

#include <TIL/TIL_Region.h>
#include <TIL/TIL_TileList.h>

#include <memory>
#include <vector>

namespace host {

/// What one thread keeps from tile to tile, and what names its calls to the library.
class Workspace
{
public:
    /// For tiles of up to `tileSide` squared; `stopToken` is the one of the library's interrupt callback.
    Workspace(int tileSide, int threadIndex, void* stopToken)
        : thread(threadIndex), stop(stopToken), side_(tileSide)
    {
    }

    /// Four tiles of a format; those of another `set` are others.
    TIL_Tile* tiles(unsigned char format, int set = 0);

    /// A region over a rectangle with these components, the same one for each call with that very plane and a
    /// rectangle of that size.
    TIL_Region& region(const TIL_Plane& plane, const Components& present, const Window& rect);

    /// Four buffers for conversions, for so many elements of any format.
    TIL_Buffer* scratch(int64_t elements);

    const int thread;
    void* const stop;

private:
    struct Set
    {
        unsigned char format;
        int number;
        TIL_Tile tiles[4];
    };
    int side_;
    std::vector<std::unique_ptr<Set>> sets_;
    std::vector<std::unique_ptr<TIL_Region>> regions_;
    TIL_Buffer scratch_[4];
    int64_t scratchElements_ = 0;
};

} // namespace host
