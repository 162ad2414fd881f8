#include <TIL/TIL_TileList.h>

#include <algorithm>
#include <limits>
#include <type_traits>

namespace {

/// At most what an int can count; larger lists are not to be used as flat arrays.
int pixelCount(int64_t width, int64_t height)
{
    return static_cast<int>(std::min<int64_t>(width * height, std::numeric_limits<int>::max()));
}

template <class T>
void fillTile(TIL_Tile& tile, int64_t count, unsigned int code)
{
    T* data = nullptr;
    tile.getImageData(data);
    if constexpr (std::is_integral_v<T>)
        std::fill_n(data, count, static_cast<T>(code));
    else
        std::fill_n(data, count, T(0.0f)); // codes are values
}

} // namespace

TIL_TileList::TIL_TileList(const TIL_Plane& of, int left, int bottom, int right, int top)
    : plane(&of), blackWhitePoints(of.usesBlackWhitePoints() != 0),
      itemCount(pixelCount(int64_t(right) - left + 1, int64_t(top) - bottom + 1)), x1(left), y1(bottom),
      x2(right), y2(top), blackPoint(of.blackPoint), whitePoint(of.whitePoint)
{
}

void TIL_TileList::clearToBlack(bool useBlackPoint)
{
    const int64_t count = static_cast<int64_t>(width()) * height();
    const unsigned int code = useBlackPoint && blackWhitePoints ? blackPoint : 0;
    for (TIL_Tile* tile : tiles) {
        if (tile == nullptr || tile->isDone())
            continue;
        tile->setConstantTile(false);
        switch (plane->formatCode) {
#define TIL_CASE(CODE, TYPE, WHITE, NAME)                                                                    \
    case CODE:                                                                                               \
        fillTile<TYPE>(*tile, count, code);                                                                  \
        break;
            PXL_FOR_EACH_FORMAT(TIL_CASE)
#undef TIL_CASE
        default:
            break;
        }
    }
}
