#pragma once

#include <RE/RE_Convert.h>
#include <RE/RE_OGLComputeGPU.h>
#include <TIL/TIL_TileList.h>

/// What programs call the components of a plane, and those of a vector.
inline constexpr const char* ru_componentNames[] = {"red", "green", "blue", "alpha"};
inline constexpr const char* ru_componentLetters[] = {"r", "g", "b", "a"};

/// Makes component `c` an output of the computation. False where no tile is to be written.
inline bool ru_setOutputTile(RE_OGLComputeGPU& compute, const TIL_TileList& tiles, int c)
{
    TIL_Tile* tile = tiles.tiles[c];
    if (tile == nullptr || tile->isDone())
        return false;
    void* data = nullptr;
    tile->getImageData(data);
    compute.setOutputArray2D(ru_componentNames[c], REconvertPXLType(tiles.plane->formatCode), 1,
                             tiles.width(), tiles.height(), data);
    return true;
}
