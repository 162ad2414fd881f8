#pragma once

#include <reference/Picture.h>

#include <cstdio>
#include <cstdlib>

/// What a fuzzer's bytes say, from the first to the last; zeros behind them.
class Bytes
{
public:
    Bytes(const uint8_t* data, size_t size) : next_(data), end_(data + size) {}

    template <class T>
    T bits()
    {
        T value{};
        const size_t size = std::min(sizeof(T), static_cast<size_t>(end_ - next_));
        std::memcpy(static_cast<void*>(&value), next_, size);
        next_ += size;
        return value;
    }
    int below(size_t n) { return static_cast<int>(bits<uint8_t>() % n); }
    bool flag() { return below(2) != 0; }
    /// Most are around [0, 1].
    float number() { return below(4) == 0 ? bits<float>() : static_cast<float>(bits<int16_t>()) / 8192.0f; }
    template <size_t N>
    std::array<float, N> numbers()
    {
        std::array<float, N> all;
        std::generate(all.begin(), all.end(), [this] { return number(); });
        return all;
    }
    reference::Format format() { return {static_cast<unsigned char>(below(5)), flag()}; }

    /// Pixels, absent tiles, constant and done ones.
    void fill(reference::Picture& picture)
    {
        reference::Random random(bits<uint16_t>());
        picture.randomize(random);
        for (int c = 0; c < 4; ++c) {
            const int kind = below(8);
            picture.list.tiles[c] = kind == 0 ? nullptr : &picture.tiles[c];
            picture.tiles[c].setConstantTile(kind == 1);
            picture.tiles[c].setDone(kind == 2);
            const double first = picture.format.isInteger() ? picture.at(c, 0, 0) : bits<float>();
            for (int i = 0; i < (kind == 1 ? picture.list.itemCount : 1); ++i)
                picture.format.put(picture.data(c), i, first);
        }
    }

private:
    const uint8_t* next_;
    const uint8_t* end_;
};

/// Ends the process, which the fuzzer takes for a fault.
inline void check(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// Elements that end where their memory does, so that the address sanitizer sees the first one too many;
/// they begin up to 15 times `step` elements behind its start.
template <class T>
struct Row
{
    Row(Bytes& bytes, int count, int step = 1)
        : offset(step * bytes.below(16)), memory(static_cast<size_t>(offset + count))
    {
        for (T& element : memory)
            element = std::is_same_v<T, float> ? static_cast<T>(bytes.number()) : bytes.bits<T>();
    }
    T* data() { return memory.data() + offset; }
    bool same(const Row& other) const
    {
        return memory.empty() ||
               std::memcmp(memory.data(), other.memory.data(), memory.size() * sizeof(T)) == 0;
    }

    int offset;
    std::vector<T> memory;
};

/// `run(to, first, count)` leaves the same bits in a row as in its elements one by one.
template <class T, class Run>
void checkSingles(Row<T> whole, int count, const Run& run)
{
    Row<T> single = whole;
    run(whole.data(), 0, count);
    for (int i = 0; i < count; ++i)
        run(single.data() + i, i, 1);
    check(whole.same(single), "a row is its elements");
}

/// `run(picture, y)` leaves the same in a picture as in its rows one by one, which begin at row y.
template <class Run>
void checkRows(reference::Picture& whole, const Run& run)
{
    const TIL_TileList& list = whole.list;
    std::vector<reference::Bytes> rows;
    for (int y = 0; y < list.height(); ++y) {
        reference::Picture row(whole.format, list.width(), 1, list.x1, list.y1 + y);
        for (int c = 0; c < 4; ++c) {
            const reference::Bytes from = whole.rows(c, y, y + 1);
            std::copy(from.begin(), from.end(), row.data(c));
            row.list.tiles[c] = list.tiles[c] != nullptr ? &row.tiles[c] : nullptr;
            row.tiles[c].setConstantTile(whole.tiles[c].isConstant());
            row.tiles[c].setDone(whole.tiles[c].isDone());
        }
        run(row, y);
        for (int c = 0; c < 4; ++c)
            rows.push_back(row.bytes(c));
    }
    run(whole, 0);
    check(whole.guardsIntact(), "nothing is written behind a tile");
    for (int i = 0; i < 4 * list.height(); ++i)
        check(whole.rows(i % 4, i / 4, i / 4 + 1) == rows[static_cast<size_t>(i)], "a picture is its rows");
}
