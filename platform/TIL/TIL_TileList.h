#pragma once

#include <SYS/SYS_API.h>
#include <TIL/TIL_Plane.h>
#include <TIL/TIL_Tile.h>

#include <cstdint>

/// Up to four tiles, one per component of a plane, over one rectangle. Owns neither tiles nor plane.
class PLATFORM_API TIL_TileList
{
public:
    TIL_TileList() = default;
    /// Over an inclusive rectangle of `plane`, with its integer range and no tiles yet.
    TIL_TileList(const TIL_Plane& plane, int x1, int y1, int x2, int y2);

    int width() const { return x2 - x1 + 1; }
    int height() const { return y2 - y1 + 1; }

    /// Fills every tile that is not done with the code of 0.0: the black point where `useBlackPoint` is set
    /// and the list has one, else 0. The tiles stop being constant.
    void clearToBlack(bool useBlackPoint);

    TIL_Tile* tiles[4] = {}; ///< null: the plane lacks the component, or it is not to be cooked
    const TIL_Plane* plane = nullptr;
    bool blackWhitePoints = false; ///< integer codes run from the black to the white point
    signed char firstRow = 0;      ///< the row at which processing starts
    signed char rowStep = 1;       ///< from one processed row to the next; below 1 counts as 1
    float verticalScale = 1.0f;
    float verticalOffset = 0.0f;
    int itemCount = 0; ///< pixels of each tile
    int x1 = 0, y1 = 0, x2 = -1, y2 = -1;
    unsigned int blackPoint = 0; ///< the codes of 0.0 and 1.0
    unsigned int whitePoint = 1;
};
