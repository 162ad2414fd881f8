#include <UT/ut_ConvexOutline.h>

#include <algorithm>
#include <numeric>
#include <queue>

namespace {

using Outline = std::vector<ut_GridPoint>;

/// The vertices that are not convex: the only ones that can lie in an ear. A tree of boxes,
/// from which vertices are taken and never put in.
class BlockerTree
{
public:
    BlockerTree(const Outline& outline, std::vector<size_t> blockers)
        : outline_(outline), items_(std::move(blockers)), leaf_(outline.size(), none)
    {
        size_t leaves = 1;
        while (leaves * 8 < items_.size())
            leaves *= 2;
        nodes_.resize(2 * leaves - 1);
        build(0, 0, items_.size());
    }

    void remove(size_t vertex)
    {
        size_t node = leaf_[vertex];
        leaf_[vertex] = none;
        for (--nodes_[node].count; node != 0; --nodes_[node].count)
            node = (node - 1) / 2;
    }

    /// Whether a counterclockwise triangle has another blocker in it or on its edges.
    bool isBlocked(size_t a, size_t b, size_t c) const
    {
        return isBlocked(0, {outline_[a], outline_[b], outline_[c]}, {a, b, c});
    }

private:
    static constexpr size_t none = SIZE_MAX;
    using Corners = std::array<ut_GridPoint, 3>;

    struct Node
    {
        size_t begin = 0, end = 0; ///< in items_
        size_t count = 0;          ///< of those that are left
        ut_GridPoint low{}, high{};
    };

    bool isLeaf(size_t node) const { return 2 * node + 1 >= nodes_.size(); }

    void build(size_t at, size_t begin, size_t end)
    {
        Node& node = nodes_[at];
        node = {begin, end, end - begin, {ut_gridSize, ut_gridSize, 0}, {0, 0, 0}};
        for (size_t i = begin; i < end; ++i) {
            const ut_GridPoint& p = outline_[items_[i]];
            node.low = {std::min(node.low.x, p.x), std::min(node.low.y, p.y), 0};
            node.high = {std::max(node.high.x, p.x), std::max(node.high.y, p.y), 0};
        }
        if (isLeaf(at)) {
            for (size_t i = begin; i < end; ++i)
                leaf_[items_[i]] = at;
            return;
        }
        const bool wide = node.high.x - node.low.x > node.high.y - node.low.y;
        const auto along = wide ? &ut_GridPoint::x : &ut_GridPoint::y;
        const size_t middle = begin + (end - begin) / 2;
        const auto item = [this](size_t i) { return items_.begin() + static_cast<int64_t>(i); };
        std::nth_element(item(begin), item(middle), item(end),
                         [&](size_t a, size_t b) { return outline_[a].*along < outline_[b].*along; });
        build(2 * at + 1, begin, middle);
        build(2 * at + 2, middle, end);
    }

    static bool isOutside(const Node& node, const Corners& t)
    {
        const auto [x0, x1] = std::minmax({t[0].x, t[1].x, t[2].x});
        const auto [y0, y1] = std::minmax({t[0].y, t[1].y, t[2].y});
        if (x1 < node.low.x || x0 > node.high.x || y1 < node.low.y || y0 > node.high.y)
            return true;
        for (size_t i = 0; i < 3; ++i) {
            const ut_GridPoint &p = t[i], &q = t[(i + 1) % 3];
            const ut_GridPoint inmost = {q.y > p.y ? node.low.x
                                                   : node.high.x, // the corner furthest to the left
                                         q.x > p.x ? node.high.y : node.low.y, 0};
            if (ut_turn(p, q, inmost) < 0)
                return true;
        }
        return false;
    }

    bool isBlocked(size_t at, const Corners& t, const std::array<size_t, 3>& own) const
    {
        const Node& node = nodes_[at];
        if (node.count == 0 || isOutside(node, t))
            return false;
        if (!isLeaf(at))
            return isBlocked(2 * at + 1, t, own) || isBlocked(2 * at + 2, t, own);
        for (size_t i = node.begin; i < node.end; ++i) {
            const size_t item = items_[i];
            const ut_GridPoint& p = outline_[item];
            if (leaf_[item] != none && std::find(own.begin(), own.end(), item) == own.end() &&
                ut_turn(t[0], t[1], p) >= 0 && ut_turn(t[1], t[2], p) >= 0 && ut_turn(t[2], t[0], p) >= 0)
                return true;
        }
        return false;
    }

    const Outline& outline_;
    std::vector<size_t> items_;
    std::vector<size_t> leaf_; ///< of each vertex of the outline that is left
    std::vector<Node> nodes_;
};

/// Cuts corners off a counterclockwise outline, always the one with the shortest diagonal that nothing blocks.
/// Only the corners beside a cut can change: what blocks another one goes on doing so.
class EarClipper
{
public:
    explicit EarClipper(const Outline& outline)
        : outline_(outline), next_(outline.size()), before_(outline.size()), cuts_(outline.size(), 0),
          tree_(outline, linkAndFindBlockers())
    {
    }

    std::vector<ut_Triangle> triangles()
    {
        for (size_t i = 0; i < outline_.size(); ++i)
            consider(i);
        size_t left = outline_.size();
        while (left > 2 && !queue_.empty()) {
            const Ear ear = queue_.top();
            queue_.pop();
            const size_t at = ear.vertex, a = before_[at], c = next_[at];
            if (ear.cuts != cuts_[at] || tree_.isBlocked(a, at, c))
                continue;
            triangles_.push_back(
                {static_cast<int64_t>(a), static_cast<int64_t>(at), static_cast<int64_t>(c)});
            cut(a, at, c);
            --left;
        }
        return std::move(triangles_);
    }

private:
    struct Ear
    {
        int64_t length; ///< of the diagonal, squared
        size_t vertex;
        int64_t cuts; ///< that changed the corner until it was queued
        bool operator<(const Ear& other) const
        {
            return length != other.length ? length > other.length : vertex > other.vertex;
        }
    };

    bool isConvex(size_t at) const
    {
        return ut_turn(outline_[before_[at]], outline_[at], outline_[next_[at]]) > 0;
    }

    std::vector<size_t> linkAndFindBlockers()
    {
        const size_t n = outline_.size();
        for (size_t i = 0; i < n; ++i) {
            next_[i] = i + 1 == n ? 0 : i + 1;
            before_[next_[i]] = i;
        }
        std::vector<size_t> blockers;
        for (size_t i = 0; i < n; ++i)
            if (!isConvex(i))
                blockers.push_back(i);
        blocks_.assign(n, false);
        for (const size_t i : blockers)
            blocks_[i] = true;
        return blockers;
    }

    void consider(size_t at)
    {
        if (blocks_[at])
            return;
        const ut_GridPoint &a = outline_[before_[at]], &c = outline_[next_[at]];
        const int64_t dx = c.x - a.x, dy = c.y - a.y;
        queue_.push({dx * dx + dy * dy, at, cuts_[at]});
    }

    void cut(size_t a, size_t at, size_t c)
    {
        next_[a] = c;
        before_[c] = a;
        cuts_[at] = -1;
        for (const size_t beside : {a, c}) {
            ++cuts_[beside];
            if (blocks_[beside] && isConvex(beside)) {
                blocks_[beside] = false;
                tree_.remove(beside);
            }
            consider(beside);
        }
    }

    const Outline& outline_;
    std::vector<size_t> next_, before_;
    std::vector<int64_t> cuts_;
    std::vector<bool> blocks_;
    BlockerTree tree_;
    std::priority_queue<Ear> queue_;
    std::vector<ut_Triangle> triangles_;
};

} // namespace

std::vector<ut_Triangle> ut_clipEars(const std::vector<ut_GridPoint>& outline)
{
    // The first vertex from the left turns as the whole outline does.
    const auto first = static_cast<size_t>(std::min_element(outline.begin(), outline.end(),
                                                            [](const ut_GridPoint& a, const ut_GridPoint& b) {
                                                                return a.x != b.x ? a.x < b.x : a.y < b.y;
                                                            }) -
                                           outline.begin());
    const size_t n = outline.size();
    if (ut_turn(outline[(first + n - 1) % n], outline[first], outline[(first + 1) % n]) > 0)
        return EarClipper(outline).triangles();

    std::vector<ut_GridPoint> mirrored = outline;
    for (ut_GridPoint& p : mirrored)
        p.x = ut_gridSize - p.x;
    return EarClipper(mirrored).triangles();
}
