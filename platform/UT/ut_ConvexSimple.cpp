#include <UT/ut_ConvexOutline.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <utility>

namespace {

using Outline = std::vector<ut_GridPoint>;

bool isBefore(const ut_GridPoint& a, const ut_GridPoint& b)
{
    return a.x != b.x ? a.x < b.x : a.y < b.y;
}

int signOf(int64_t v)
{
    return (v > 0) - (v < 0);
}

/// A line sweeps from left to right and keeps the edges that it meets in order, from below. Edges that touch are
/// neighbours there before.
class Sweep
{
public:
    explicit Sweep(const Outline& outline)
        : outline_(outline), size_(outline.size()), met_(Below{this}), places_(size_, met_.end())
    {
    }

    bool findsNothing()
    {
        std::vector<size_t> order(size_);
        std::iota(order.begin(), order.end(), size_t(0));
        std::sort(order.begin(), order.end(),
                  [this](size_t a, size_t b) { return isBefore(outline_[a], outline_[b]); });
        for (size_t i = 0; i < size_ && !found_; ++i) {
            if (i > 0 && !isBefore(outline_[order[i - 1]], outline_[order[i]]))
                return false;
            const size_t after = order[i];
            const size_t before = after == 0 ? size_ - 1 : after - 1;
            for (const size_t edge : {before, after})
                if (right(edge) == after)
                    leave(edge);
            for (const size_t edge : {before, after})
                if (left(edge) == after)
                    meet(edge);
        }
        return !found_;
    }

private:
    struct Below
    {
        Sweep* sweep;
        bool operator()(size_t a, size_t b) const { return sweep->isBelow(a, b); }
    };

    size_t end(size_t edge) const { return edge + 1 == size_ ? 0 : edge + 1; }
    size_t left(size_t edge) const
    {
        return isBefore(outline_[edge], outline_[end(edge)]) ? edge : end(edge);
    }
    size_t right(size_t edge) const { return left(edge) == edge ? end(edge) : edge; }
    int64_t turn(size_t a, size_t b, size_t c) const
    {
        return ut_turn(outline_[a], outline_[b], outline_[c]);
    }

    /// Whether edge a lies below the left end of edge b, which comes behind its own.
    bool isBelowLaterEnd(size_t a, size_t b)
    {
        if (left(a) == left(b))
            return turn(left(a), right(a), right(b)) > 0;
        const int64_t side = turn(left(a), right(a), left(b));
        found_ = found_ || side == 0;
        return side > 0;
    }
    bool isBelow(size_t a, size_t b)
    {
        if (a == b)
            return false;
        return isBefore(outline_[left(b)], outline_[left(a)]) ? !isBelowLaterEnd(b, a)
                                                              : isBelowLaterEnd(a, b);
    }

    bool touch(size_t a, size_t b) const
    {
        if (end(a) == b || end(b) == a)
            return false;
        const auto apart = [&](int64_t ut_GridPoint::*c) {
            const auto [a0, a1] = std::minmax(outline_[a].*c, outline_[end(a)].*c);
            const auto [b0, b1] = std::minmax(outline_[b].*c, outline_[end(b)].*c);
            return a1 < b0 || b1 < a0;
        };
        if (apart(&ut_GridPoint::x) || apart(&ut_GridPoint::y))
            return false;
        return signOf(turn(a, end(a), b)) * signOf(turn(a, end(a), end(b))) <= 0 &&
               signOf(turn(b, end(b), a)) * signOf(turn(b, end(b), end(a))) <= 0;
    }

    void meet(size_t edge)
    {
        const auto place = met_.insert(edge).first;
        places_[edge] = place;
        if (place != met_.begin() && touch(*std::prev(place), edge))
            found_ = true;
        if (std::next(place) != met_.end() && touch(*std::next(place), edge))
            found_ = true;
    }
    void leave(size_t edge)
    {
        const auto place = places_[edge];
        if (place == met_.end())
            return;
        const auto next = met_.erase(place);
        if (next != met_.begin() && next != met_.end() && touch(*std::prev(next), *next))
            found_ = true;
    }

    const Outline& outline_;
    size_t size_;
    bool found_ = false;
    std::set<size_t, Below> met_;
    std::vector<std::set<size_t, Below>::iterator> places_;
};

} // namespace

bool ut_isSimple(const std::vector<ut_GridPoint>& outline)
{
    return Sweep(outline).findsNothing();
}
