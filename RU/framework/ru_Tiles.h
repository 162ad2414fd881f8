#pragma once

#include <TIL/TIL_TileList.h>

#include <cstdint>

/// The data of output component `c` if an operation may write it: the tile is there, not constant and not
/// done. Null otherwise.
template <class T>
T* ru_outputData(const TIL_TileList& list, int c)
{
    TIL_Tile* tile = list.tiles[c];
    if (tile == nullptr || tile->isConstant() || tile->isDone())
        return nullptr;
    T* data = nullptr;
    tile->getImageData(data);
    return data;
}

/// The rows of a tile list that are processed, and where they lie in its tiles:
///     for (int y = rows.first; y < rows.height; y += rows.step) use(data + rows.offset(y), rows.width);
struct ru_TileRows
{
    explicit ru_TileRows(const TIL_TileList& list)
        : width(list.width()), height(list.height()), first(list.firstRow > 0 ? list.firstRow : 0),
          step(list.rowStep > 1 ? list.rowStep : 1)
    {
    }

    bool empty() const { return width <= 0 || first >= height; }
    int64_t offset(int y) const { return static_cast<int64_t>(y) * width; }

    int width;
    int height;
    int first;
    int step;
};
