#include <RU/shape/ru_Boundary.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace {

constexpr double atEnd = 1e-9;     ///< of an edge: cuts closer to an end are at it
constexpr double parallel = 1e-12; ///< sine of an angle

double cross(double ax, double ay, double bx, double by)
{
    return ax * by - ay * bx;
}

ru_OutlinePoint between(const ru_OutlinePoint& a, const ru_OutlinePoint& b, double part)
{
    return {a.x + part * (b.x - a.x), a.y + part * (b.y - a.y), a.alpha + part * (b.alpha - a.alpha),
            a.feather + part * (b.feather - a.feather)};
}

double distance(const ru_OutlinePoint& a, const ru_OutlinePoint& b)
{
    return std::hypot(b.x - a.x, b.y - a.y);
}

} // namespace

void ru_Boundary::add(const ru_Outline& outline, const std::vector<char>& isHelper)
{
    const size_t first = nodes_.size(), n = outline.points.size();
    for (size_t i = 0; i < n; ++i)
        edges_.push_back(
            {first + i, first + (i + 1 == n ? 0 : i + 1), !isHelper.empty() && isHelper[i] != 0});
    nodes_.insert(nodes_.end(), outline.points.begin(), outline.points.end());
}

size_t ru_Boundary::rowOf(double y) const
{
    return std::min(static_cast<size_t>(std::max(y - low_, 0.0) / rowHeight_), rows_.size() - 1);
}

void ru_Boundary::sortIntoRows()
{
    double high = nodes_[0].y, left = nodes_[0].x, right = left;
    low_ = high;
    for (const ru_OutlinePoint& p : nodes_) {
        low_ = std::min(low_, p.y);
        high = std::max(high, p.y);
        left = std::min(left, p.x);
        right = std::max(right, p.x);
    }
    extent_ = std::max(high - low_, right - left);
    rows_.resize(std::clamp<size_t>(edges_.size() / 4, 1, 512));
    rowHeight_ = std::max(high - low_, 1e-300) / static_cast<double>(rows_.size());
    for (size_t i = 0; i < edges_.size(); ++i) {
        const auto [from, to] = std::minmax(start(edges_[i]).y, end(edges_[i]).y);
        for (size_t row = rowOf(from); row <= rowOf(to); ++row)
            rows_[row].push_back(i);
    }
}

void ru_Boundary::cutAll()
{
    const auto leftOf = [this](const Edge& e) { return std::min(start(e).x, end(e).x); };
    const auto rightOf = [this](const Edge& e) { return std::max(start(e).x, end(e).x); };
    const auto lowOf = [this](const Edge& e) { return std::min(start(e).y, end(e).y); };
    for (size_t row = 0; row < rows_.size(); ++row) {
        std::vector<size_t> there;
        for (const size_t i : rows_[row])
            if (!edges_[i].isHelper)
                there.push_back(i);
        std::sort(there.begin(), there.end(),
                  [&](size_t a, size_t b) { return leftOf(edges_[a]) < leftOf(edges_[b]); });
        for (size_t i = 0; i < there.size(); ++i) {
            Edge& a = edges_[there[i]];
            const double right = rightOf(a);
            for (size_t k = i + 1; k < there.size() && leftOf(edges_[there[k]]) <= right; ++k) {
                Edge& b = edges_[there[k]];
                if (rowOf(std::max(lowOf(a), lowOf(b))) == row) // once for each pair
                    cross(a, b);
            }
        }
    }
}

/// Cuts an edge at a node that lies on its line.
void ru_Boundary::touch(Edge& edge, size_t node)
{
    const ru_OutlinePoint &a = start(edge), &b = end(edge), &p = nodes_[node];
    const double length = distance(a, b);
    const double part = ((p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y)) / (length * length);
    if (part > atEnd && part < 1.0 - atEnd)
        edge.cuts.push_back({part, node});
}

void ru_Boundary::cross(Edge& a, Edge& b)
{
    const ru_OutlinePoint &p = start(a), &q = start(b);
    const double ax = end(a).x - p.x, ay = end(a).y - p.y, bx = end(b).x - q.x, by = end(b).y - q.y;
    const double sine = ::cross(ax, ay, bx, by), lengths = std::hypot(ax, ay) * std::hypot(bx, by);
    if (lengths == 0.0)
        return;
    if (std::abs(sine) <= parallel * lengths) {
        if (std::abs(::cross(ax, ay, q.x - p.x, q.y - p.y)) > parallel * extent_ * std::hypot(ax, ay))
            return;
        for (const size_t node : {b.from, b.to})
            touch(a, node);
        for (const size_t node : {a.from, a.to})
            touch(b, node);
        return;
    }
    const double s = ::cross(q.x - p.x, q.y - p.y, bx, by) / sine;
    const double t = ::cross(q.x - p.x, q.y - p.y, ax, ay) / sine;
    if (s < -atEnd || s > 1.0 + atEnd || t < -atEnd || t > 1.0 + atEnd)
        return;
    const bool insideA = s > atEnd && s<1.0 - atEnd, insideB = t> atEnd && t < 1.0 - atEnd;
    if (!insideA && !insideB)
        return;
    size_t node = insideA ? (t < 0.5 ? b.from : b.to) : (s < 0.5 ? a.from : a.to);
    if (insideA && insideB) {
        node = nodes_.size();
        nodes_.push_back(between(start(a), end(a), s));
    }
    if (insideA)
        a.cuts.push_back({s, node});
    if (insideB)
        b.cuts.push_back({t, node});
}

/// The winding on the right of an edge at a place on it. Of edges that coincide there, those added later count as
/// further on the right, or above.
int ru_Boundary::windingBeside(size_t edge, const ru_OutlinePoint& place) const
{
    const Edge& own = edges_[edge];
    const bool isLevel = start(own).y == end(own).y;
    int winding = 0; // above a level edge, right in x of another
    for (const size_t i : rows_[rowOf(place.y)]) {
        const ru_OutlinePoint &a = start(edges_[i]), &b = end(edges_[i]);
        if (i == edge)
            continue;
        if (a.y == b.y) {
            if (isLevel && a.y == place.y && i > edge && (a.x > place.x) != (b.x > place.x))
                winding += b.x > a.x ? -1 : 1;
            continue;
        }
        if ((a.y <= place.y) == (b.y <= place.y))
            continue;
        const double beyond = a.x + (place.y - a.y) / (b.y - a.y) * (b.x - a.x) - place.x;
        if (std::abs(beyond) <= parallel * extent_ ? i > edge : beyond > 0.0)
            winding += b.y > a.y ? 1 : -1;
    }
    const bool isOnLeft = isLevel ? end(own).x > start(own).x : end(own).y < start(own).y;
    return isOnLeft ? winding - 1 : winding;
}

void ru_Boundary::keepPieces()
{
    for (size_t i = 0; i < edges_.size(); ++i) {
        Edge& edge = edges_[i];
        if (edge.isHelper)
            continue;
        std::sort(edge.cuts.begin(), edge.cuts.end(),
                  [](const Cut& a, const Cut& b) { return a.part < b.part; });
        edge.cuts.push_back({1.0, edge.to});
        const auto featherAt = [first = start(edge).featherAfter(), last = end(edge).feather](double part) {
            return first + part * (last - first);
        };
        size_t from = edge.from;
        double part = 0.0;
        for (const Cut& cut : edge.cuts) {
            if (distance(nodes_[from], nodes_[cut.node]) > 0.0) {
                const int right = windingBeside(i, between(nodes_[from], nodes_[cut.node], 0.5));
                if (right == 0)
                    pieces_.push_back({from, cut.node, featherAt(part), featherAt(cut.part)});
                else if (right == -1 && inside_ == Inside::anyWinding)
                    pieces_.push_back({cut.node, from, featherAt(cut.part), featherAt(part)});
            }
            from = cut.node;
            part = cut.part;
        }
    }
}

/// Drops pieces that go the same way forth and back, as those to a hole: both sides are inside.
void ru_Boundary::cancelPieces()
{
    const auto key = [this](const Piece& piece) {
        const ru_OutlinePoint &a = nodes_[piece.from], &b = nodes_[piece.to];
        const std::array<double, 4> forth = {a.x, a.y, b.x, b.y}, back = {b.x, b.y, a.x, a.y};
        return std::pair(std::min(forth, back), forth < back);
    };
    std::sort(pieces_.begin(), pieces_.end(),
              [&](const Piece& a, const Piece& b) { return key(a) < key(b); });
    std::vector<Piece> kept;
    for (const Piece& piece : pieces_) {
        const bool isReverse = !kept.empty() && key(kept.back()).first == key(piece).first &&
                               key(kept.back()).second != key(piece).second;
        if (isReverse)
            kept.pop_back();
        else
            kept.push_back(piece);
    }
    pieces_ = std::move(kept);
}

std::vector<ru_Outline> ru_Boundary::joined() const
{
    constexpr size_t none = SIZE_MAX;
    std::vector<size_t> order(pieces_.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(),
              [&](size_t a, size_t b) { return pieces_[a].from < pieces_[b].from; });
    std::vector<char> isUsed(pieces_.size(), 0);
    const auto turnTo = [&](const Piece& a, const Piece& b) {
        const double ax = nodes_[a.to].x - nodes_[a.from].x, ay = nodes_[a.to].y - nodes_[a.from].y;
        const double bx = nodes_[b.to].x - nodes_[b.from].x, by = nodes_[b.to].y - nodes_[b.from].y;
        return std::atan2(::cross(ax, ay, bx, by), ax * bx + ay * by);
    };
    /// Goes on along the same outside, across a small gap where a part is missing.
    const auto next = [&](const Piece& piece) {
        size_t best = none;
        auto at = std::lower_bound(order.begin(), order.end(), piece.to,
                                   [&](size_t i, size_t node) { return pieces_[i].from < node; });
        for (; at != order.end() && pieces_[*at].from == piece.to; ++at)
            if (!isUsed[*at] && (best == none || turnTo(piece, pieces_[*at]) < turnTo(piece, pieces_[best])))
                best = *at;
        double least = 0.01 * extent_;
        for (size_t i = 0; best == none && i < pieces_.size(); ++i)
            if (!isUsed[i] && distance(nodes_[piece.to], nodes_[pieces_[i].from]) < least)
                best = i;
        return best;
    };
    std::vector<ru_Outline> outlines;
    for (size_t i = 0; i < pieces_.size(); ++i) {
        ru_Outline outline;
        outline.isClosed = true;
        double arriving = 0.0;
        for (size_t at = i; at != none && !isUsed[at]; at = next(pieces_[at])) {
            const Piece& piece = pieces_[at];
            isUsed[at] = 1;
            ru_OutlinePoint point = nodes_[piece.from];
            point.feather = outline.points.empty() ? piece.featherFrom : arriving;
            point.step = piece.featherFrom - point.feather;
            outline.points.push_back(point);
            arriving = piece.featherTo;
        }
        if (outline.points.size() < 3)
            continue;
        ru_OutlinePoint& first = outline.points.front();
        first.step = first.featherAfter() - arriving;
        first.feather = arriving;
        outlines.push_back(std::move(outline));
    }
    return outlines;
}

std::vector<ru_Outline> ru_Boundary::outlines()
{
    if (edges_.empty())
        return {};
    sortIntoRows();
    cutAll();
    keepPieces();
    cancelPieces();
    return joined();
}
