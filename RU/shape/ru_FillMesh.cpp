#include <RU/shape/ru_FillMesh.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>

namespace {

/// Triangles that reach further out are drawn alone: rounding in their edges would be larger than that of a place in
/// the image, and what neighbours share might not cancel.
constexpr float reach = 4.0f;

/// About the nanoseconds that drawing takes.
double costAlone(double pixelRows, int samples)
{
    return 40.0 + pixelRows * (20.0 + samples);
}
double costOfEdge(double pixelRows, int samples)
{
    return 25.0 + pixelRows * 6.0 * samples;
}

double rowsBetween(float top, float bottom, int64_t height)
{
    const float from = std::clamp(top, 0.0f, 1.0f), to = std::clamp(bottom, 0.0f, 1.0f);
    return (double{to} - double{from}) * static_cast<double>(height);
}

/// All edges of triangles, each once.
class Edges
{
public:
    struct Entry
    {
        ru_FillPoint from, to;
        int32_t change = 0;
        int32_t triangle; ///< the first that has it
    };

    explicit Edges(size_t triangles) : slots_(std::bit_ceil(6 * triangles + 2), -1)
    {
        entries_.reserve(3 * triangles);
    }

    /// The edge's entry, a new one for `triangle` when it has none.
    Entry& at(const ru_FillPoint& from, const ru_FillPoint& to, int32_t triangle)
    {
        for (size_t slot = hash(from, to);; ++slot) {
            int32_t& index = slots_[slot & (slots_.size() - 1)];
            if (index < 0) {
                index = static_cast<int32_t>(entries_.size());
                return entries_.emplace_back(Entry{from, to, 0, triangle});
            }
            Entry& entry = entries_[static_cast<size_t>(index)];
            if (entry.from == from && entry.to == to)
                return entry;
        }
    }

    const std::vector<Entry>& entries() const { return entries_; }

private:
    static uint64_t bits(const ru_FillPoint& p)
    {
        return uint64_t{std::bit_cast<uint32_t>(p.x + 0.0f)} << 32 |
               std::bit_cast<uint32_t>(p.y + 0.0f); // -0 is 0
    }
    static size_t hash(const ru_FillPoint& from, const ru_FillPoint& to)
    {
        const uint64_t mixed = (bits(from) * 0x9E3779B97F4A7C15u) ^ (bits(to) * 0xC2B2AE3D27D4EB4Fu);
        return static_cast<size_t>((mixed * 0x9E3779B97F4A7C15u) >> 20);
    }

    std::vector<int32_t> slots_;
    std::vector<Entry> entries_;
};

/// Triangles that hang together by edges.
class Parts
{
public:
    explicit Parts(size_t triangles) : parents_(triangles) { std::iota(parents_.begin(), parents_.end(), 0); }

    int32_t of(int32_t triangle)
    {
        while (parent(triangle) != triangle) {
            parent(triangle) = parent(parent(triangle)); // halves the way for the next time
            triangle = parent(triangle);
        }
        return triangle;
    }
    void join(int32_t a, int32_t b) { parent(of(a)) = of(b); }

private:
    int32_t& parent(int32_t triangle) { return parents_[static_cast<size_t>(triangle)]; }

    std::vector<int32_t> parents_;
};

bool isNear(const ru_FillTriangle& triangle)
{
    return std::all_of(triangle.corners.begin(), triangle.corners.end(), [](const ru_FillPoint& p) {
        return std::abs(p.x) <= reach && std::abs(p.y) <= reach;
    });
}

} // namespace

ru_FillMesh::ru_FillMesh(const std::vector<ru_FillTriangle>& triangles, int64_t height, int samples)
{
    Edges edges(triangles.size());
    Parts parts(triangles.size());
    std::vector<char> isPart(triangles.size(), 0);
    std::vector<double> saved(triangles.size(), 0.0); ///< by part: what drawing its outline would save
    for (size_t i = 0; i < triangles.size(); ++i) {
        const auto index = static_cast<int32_t>(i);
        const ru_TriangleEdges triangle(triangles[i]);
        if (!triangle.valid)
            continue;
        if (!isNear(triangles[i])) {
            alone.push_back(index);
            continue;
        }
        isPart[i] = 1;
        const auto& v = triangle.corners;
        const ru_FillPoint* const ends[3][2] = {{&v[0], &v[1]}, {&v[0], &v[2]}, {&v[1], &v[2]}};
        for (size_t e = 0; e < 3; ++e) {
            auto& entry = edges.at(*ends[e][0], *ends[e][1], index);
            entry.change += triangle.edges[e].left ? -1 : 1;
            parts.join(index, entry.triangle);
        }
        saved[i] = costAlone(rowsBetween(v[0].y, v[2].y, height), samples);
    }
    for (size_t i = 0; i < triangles.size(); ++i)
        if (const auto part = static_cast<size_t>(parts.of(static_cast<int32_t>(i))); part != i)
            saved[part] += saved[i];
    for (const auto& entry : edges.entries()) {
        double& gain = saved[static_cast<size_t>(parts.of(entry.triangle))];
        if (std::abs(entry.change) > ru_MeshEdge::mostChange)
            gain = -std::numeric_limits<double>::infinity();
        else if (entry.change != 0)
            gain -= costOfEdge(rowsBetween(entry.from.y, entry.to.y, height), samples);
    }
    const auto byOutline = [&](int32_t triangle) {
        return saved[static_cast<size_t>(parts.of(triangle))] > 0.0;
    };
    for (size_t i = 0; i < triangles.size(); ++i)
        if (isPart[i] != 0 && !byOutline(static_cast<int32_t>(i)))
            alone.push_back(static_cast<int32_t>(i));
    for (const auto& entry : edges.entries())
        if (entry.change != 0 && entry.from.y != entry.to.y && byOutline(entry.triangle))
            outline.push_back({entry.from, entry.to, entry.change});
}
