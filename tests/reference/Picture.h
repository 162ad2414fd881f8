#pragma once

#include <RU/framework/RU_Algorithm.h>
#include <TIL/TIL_Region.h>
#include <TIL/TIL_TileList.h>
#include <reference/Formats.h>
#include <reference/Random.h>

namespace reference {

/// A tile list with its plane and four tiles. A pattern behind each tile shows whether anybody wrote there.
class Picture
{
public:
    Picture(Format of, int width, int height, int x1 = 0, int y1 = 0) : format(of), plane(of.code, 4)
    {
        plane.blackWhitePoints = !of.full;
        plane.blackPoint = of.range().black;
        plane.whitePoint = of.range().white;
        list = TIL_TileList(plane, x1, y1, x1 + width - 1, y1 + height - 1);
        for (int c = 0; c < 4; ++c) {
            tiles[c] = TIL_Tile(plane.formatCode, width, height);
            list.tiles[c] = &tiles[c];
            std::fill_n(data(c) + size(), guardBytes, guard);
        }
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    unsigned char* data(int c)
    {
        unsigned char* data = nullptr;
        tiles[c].getImageData(data);
        return data;
    }
    const unsigned char* data(int c) const
    {
        const unsigned char* data = nullptr;
        tiles[c].getImageData(data);
        return data;
    }
    Bytes bytes(int c) const { return {data(c), data(c) + size()}; }
    /// The bytes of some rows.
    Bytes rows(int c, int from, int to)
    {
        const int stride = list.width() * format.size();
        return {data(c) + from * stride, data(c) + to * stride};
    }
    /// A code, or a value.
    double at(int c, int x, int y) const { return format.codeAt(data(c), int64_t(y) * list.width() + x); }

    void randomize(Random& random)
    {
        for (int c = 0; c < 4; ++c)
            format.randomize(data(c), list.itemCount, random, 0);
    }

    /// Makes some tiles absent, constant or done.
    void scatter(Random& random)
    {
        for (int c = 0; c < 4; ++c) {
            if (random.oneIn(6))
                list.tiles[c] = nullptr;
            tiles[c].setConstantTile(random.oneIn(6));
            tiles[c].setDone(random.oneIn(6));
        }
    }
    bool mayWrite(int c) const { return list.tiles[c] && !tiles[c].isConstant() && !tiles[c].isDone(); }

    bool guardsIntact() const
    {
        for (int c = 0; c < 4; ++c)
            if (std::count(data(c) + size(), data(c) + size() + guardBytes, guard) != guardBytes)
                return false;
        return true;
    }

    Format format;
    TIL_Plane plane;
    TIL_TileList list;
    TIL_Tile tiles[4];

private:
    static constexpr unsigned char guard = 0xA5;
    static constexpr int guardBytes = 64; // the spare ones of TIL_Buffer

    int64_t size() const { return int64_t(list.itemCount) * format.size(); }
};

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

    /// Questions after the one that was answered with stop.
    static int furtherQuestions() { return -1 - rowsLeft; }

    int token = 0;

private:
    static inline int rowsLeft = 0;
};

} // namespace reference
