#pragma once

#include <reference/Contract.h>

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

/// `run(scene, y)` leaves the same in the output of a scene as in its rows one by one, which begin at row y.
template <class Run>
void checkRows(Bytes& bytes, const Run& run)
{
    using reference::Scene;
    const reference::Format format = reference::formats()[static_cast<size_t>(bytes.below(10))];
    const int width = 1 + bytes.below(64), height = 1 + bytes.below(3);
    reference::Random pixels(bytes.bits<uint16_t>());
    const auto states = bytes.bits<uint16_t>();
    const auto prepare = [&](Scene& scene) {
        reference::Random random(states);
        scene.scatter(random);
        scene.out.list.firstRow = 0;
        scene.out.list.rowStep = 1;
        for (TIL_Tile& tile : (scene.shared ? scene.out : scene.in).tiles)
            tile.setConstantTile(false); // its first pixel stands for all, those of other rows too
    };
    Scene whole(format, {}, width, height);
    whole.fill(pixels, 4, 6);
    whole.hold();
    std::vector<std::unique_ptr<Scene>> rows;
    for (int y = 0; y < height; ++y) {
        rows.push_back(std::make_unique<Scene>(format, RU_Border{}, width, 1, 0, y));
        rows.back()->copyFrom(whole);
        prepare(*rows.back());
        run(*rows.back(), y);
    }
    prepare(whole);
    run(whole, 0);
    check(whole.out.guardsIntact() && whole.in.guardsIntact(), "nothing is written behind a tile");
    for (int i = 0; i < 4 * height; ++i)
        check(whole.out.rows(i % 4, i / 4, i / 4 + 1) == rows[static_cast<size_t>(i / 4)]->out.bytes(i % 4),
              "a picture is its rows");
}
