#pragma once

#include <RU/framework/RU_Algorithm.h>
#include <TIL/TIL_Region.h>
#include <TIL/TIL_TileList.h>
#include <reference/Formats.h>
#include <reference/Random.h>

#include <cstring>
#include <vector>

namespace reference {

/// A tile list with its plane and four tiles. A pattern behind each tile shows whether anybody wrote there.
template <class V>
class Picture
{
public:
    using T = typename V::Type;

    Picture(int width, int height, int x1 = 0, int y1 = 0)
        : plane(PXL_FormatOf<T>::code, 4), list(ranged(plane), x1, y1, x1 + width - 1, y1 + height - 1)
    {
        for (int c = 0; c < 4; ++c) {
            tiles[c] = TIL_Tile(plane.formatCode, width, height);
            list.tiles[c] = &tiles[c];
            std::fill_n(end(c), guardBytes, guard);
        }
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    T* data(int c)
    {
        T* data = nullptr;
        tiles[c].getImageData(data);
        return data;
    }
    T& at(int c, int x, int y) { return data(c)[static_cast<int64_t>(y) * list.width() + x]; }
    std::vector<T> pixels(int c) { return {data(c), data(c) + list.itemCount}; }

    void randomize(Random& random)
    {
        for (int c = 0; c < 4; ++c)
            std::generate_n(data(c), list.itemCount, [&] { return random.pixel<T>(); });
    }

    bool guardsIntact()
    {
        for (int c = 0; c < 4; ++c)
            if (std::count(end(c), end(c) + guardBytes, guard) != guardBytes)
                return false;
        return true;
    }

    TIL_Plane plane;
    TIL_TileList list;
    TIL_Tile tiles[4];

private:
    static constexpr unsigned char guard = 0xA5;
    static constexpr int guardBytes = 64; // the spare ones of TIL_Buffer

    unsigned char* end(int c) { return reinterpret_cast<unsigned char*>(data(c) + list.itemCount); }

    static TIL_Plane& ranged(TIL_Plane& plane)
    {
        plane.blackWhitePoints = !V::full;
        plane.blackPoint = rangeOf<V>.black;
        plane.whitePoint = rangeOf<V>.white;
        return plane;
    }
};

/// Equal bytes.
template <class T>
bool sameBytes(const std::vector<T>& a, const std::vector<T>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

/// A host that says stop after a number of rows, while it lives.
class StopAfter
{
public:
    explicit StopAfter(int rows)
    {
        rowsLeft = rows;
        RU_Algorithm::setInterruptCallback([](void*, int) { return rowsLeft-- <= 0; });
    }
    ~StopAfter() { RU_Algorithm::setInterruptCallback(nullptr); }
    StopAfter(const StopAfter&) = delete;
    StopAfter& operator=(const StopAfter&) = delete;

    /// Questions after the one that was answered with stop.
    static int furtherQuestions() { return -1 - rowsLeft; }

    int token = 0;

private:
    static inline int rowsLeft = 0;
};

} // namespace reference
