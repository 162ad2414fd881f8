#pragma once

#include <RU/framework/RU_Algorithm.h>
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

/// The rows that a call goes over, and where they lie in tiles and regions of its rectangle.
struct ru_TileRows
{
    /// Those that a tile list asks for, by its first row and row step.
    explicit ru_TileRows(const TIL_TileList& list)
        : width(list.width()), height(list.height()), first(list.firstRow > 0 ? list.firstRow : 0),
          step(list.rowStep > 1 ? list.rowStep : 1)
    {
    }
    /// All rows of a tile list or region.
    template <class Out>
    static ru_TileRows allOf(const Out& out)
    {
        return ru_TileRows(out.width(), out.height());
    }

    bool empty() const { return width <= 0 || first >= height; }
    int64_t offset(int64_t y) const { return y * width; }

    /// Calls row(y) for one after the other, unless the host wants the call to stop: it is asked before each
    /// row. False when it stopped.
    template <class Row>
    bool each(int thread, Row row) const
    {
        for (int64_t y = first; y < height; y += step) {
            if (RU_Algorithm::interruptCheck(thread))
                return false;
            row(y);
        }
        return true;
    }

    int64_t width;
    int64_t height;
    int64_t first = 0;
    int64_t step = 1;

private:
    ru_TileRows(int64_t columns, int64_t rows) : width(columns), height(rows) {}
};
