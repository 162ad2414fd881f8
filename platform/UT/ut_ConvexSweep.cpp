#include <UT/ut_ConvexOutline.h>

#include <algorithm>
#include <queue>

namespace {

/// An edge of the outline that is not level, from its lower end.
struct Edge
{
    double x0, y0, x1, y1;
    double slope; ///< x per y
    int64_t index;
    int winding; ///< what crossing it from the left adds

    double xAt(double y) const
    {
        if (y <= y0)
            return x0;
        return y >= y1 ? x1 : std::clamp(x0 + (y - y0) * slope, std::min(x0, x1), std::max(x0, x1));
    }
    UT_ConvexCorner cornerAt(double y) const
    {
        const double part = std::clamp((y - y0) / (y1 - y0), 0.0, 1.0);
        return {static_cast<float>(xAt(y)), static_cast<float>(y), index,
                static_cast<float>(winding > 0 ? 1.0 - part : part)};
    }
};

/// Goes up from vertex to vertex with the row of edges at that height. Between two vertices, neighbours change
/// places one pair at a time until the row has the order of the upper end, whatever rounding makes of where: so it
/// always comes to an end. A trapezoid lasts as long as its two edges bound the same stretch.
class Sweep
{
public:
    explicit Sweep(const std::vector<UT_Vector2>& outline)
    {
        const size_t n = outline.size();
        for (size_t i = 0; i < n; ++i) {
            const UT_Vector2 a = outline[i], b = outline[i + 1 == n ? 0 : i + 1];
            heights_.push_back(a.y);
            if (a.y == b.y)
                continue;
            const bool up = a.y < b.y;
            const UT_Vector2 low = up ? a : b, high = up ? b : a;
            const double slope = (double(high.x) - low.x) / (double(high.y) - low.y);
            edges_.push_back({low.x, low.y, high.x, high.y, slope, static_cast<int64_t>(i), up ? -1 : 1});
        }
        std::sort(heights_.begin(), heights_.end());
        heights_.erase(std::unique(heights_.begin(), heights_.end()), heights_.end());
        std::sort(edges_.begin(), edges_.end(), [](const Edge& a, const Edge& b) { return a.y0 < b.y0; });
        states_.resize(edges_.size());
    }

    std::vector<ut_Trapezoid> trapezoids()
    {
        for (size_t i = 0; i < heights_.size(); ++i) {
            y_ = heights_[i];
            const double above = i + 1 < heights_.size() ? heights_[i + 1] : y_;
            replaceEdges(above);
            bound();
            changePlaces(above);
        }
        return std::move(trapezoids_);
    }

private:
    static constexpr size_t none = SIZE_MAX;

    struct State
    {
        size_t place = 0;    ///< in the row
        int winding = 0;     ///< on the right of the edge
        size_t right = none; ///< the edge that ends the stretch which begins here
        size_t left = none;  ///< the one that begins what ends here
        double since = 0.0;  ///< the height from which the stretch lasts
        double upper = 0.0;  ///< x at the next vertex
    };

    /// Two neighbours that change places.
    struct Swap
    {
        double y;
        size_t left, right;
        bool operator<(const Swap& other) const { return y != other.y ? y > other.y : left > other.left; }
    };

    void replaceEdges(double above)
    {
        old_ = row_;
        std::erase_if(row_, [this](size_t e) { return edges_[e].y1 <= y_; });
        const auto middle = static_cast<int64_t>(row_.size());
        for (; begun_ < edges_.size() && edges_[begun_].y0 <= y_; ++begun_)
            row_.push_back(begun_);
        for (const size_t e : row_)
            states_[e].upper = edges_[e].xAt(above);
        const auto before = [this](size_t a, size_t b) {
            const double xa = edges_[a].xAt(y_), xb = edges_[b].xAt(y_);
            return xa != xb ? xa < xb : states_[a].upper < states_[b].upper;
        };
        std::sort(row_.begin() + middle, row_.end(), before);
        std::inplace_merge(row_.begin(), row_.begin() + middle, row_.end(), before);
    }

    /// Ends the stretches that do not go on with the new row, and begins those that are new.
    void bound()
    {
        begin_.clear();
        goesOn_.assign(row_.size(), false);
        int winding = 0;
        size_t left = none;
        for (size_t i = 0; i < row_.size(); ++i) {
            const size_t e = row_[i];
            const int before = winding;
            winding += edges_[e].winding;
            states_[e].place = i;
            states_[e].winding = winding;
            if (before == 0) {
                left = e;
            } else if (winding == 0) {
                if (states_[left].right == e)
                    goesOn_[states_[left].place] = true;
                else
                    begin_.push_back({left, e});
            }
        }
        for (const size_t e : old_) {
            const State& state = states_[e];
            const bool stays = state.place < row_.size() && row_[state.place] == e && goesOn_[state.place];
            if (state.right != none && !stays)
                endStretch(e);
        }
        for (const auto& [from, to] : begin_)
            beginStretch(from, to);
    }

    void beginStretch(size_t left, size_t right)
    {
        states_[left].right = right;
        states_[right].left = left;
        states_[left].since = y_;
    }

    void endStretch(size_t left)
    {
        State& state = states_[left];
        const Edge &a = edges_[left], &b = edges_[state.right];
        states_[state.right].left = none;
        state.right = none;
        ut_Trapezoid piece;
        for (const UT_ConvexCorner& corner :
             {a.cornerAt(state.since), b.cornerAt(state.since), b.cornerAt(y_), a.cornerAt(y_)}) {
            const UT_ConvexCorner& last =
                piece.corners[static_cast<size_t>(std::max<int64_t>(piece.count - 1, 0))];
            if (piece.count == 0 || corner.x != last.x || corner.y != last.y)
                piece.corners[static_cast<size_t>(piece.count++)] = corner;
        }
        const UT_ConvexCorner &first = piece.corners[0],
                              &last = piece.corners[static_cast<size_t>(piece.count - 1)];
        if (first.x == last.x && first.y == last.y)
            --piece.count;
        if (piece.count > 2 && piece.corners[0].y != piece.corners[2].y)
            trapezoids_.push_back(piece);
    }

    void queueSwap(size_t place, double above)
    {
        const size_t a = row_[place], b = row_[place + 1];
        if (!(states_[a].upper > states_[b].upper))
            return;
        const double lower = edges_[b].xAt(y_) - edges_[a].xAt(y_),
                     upper = states_[a].upper - states_[b].upper;
        const double part = lower > 0.0 ? lower / (lower + upper) : 0.0;
        swaps_.push({std::min(y_ + part * (above - y_), above), a, b});
    }

    void changePlaces(double above)
    {
        for (size_t i = 0; i + 1 < row_.size(); ++i)
            queueSwap(i, above);
        while (!swaps_.empty()) {
            const Swap swap = swaps_.top();
            swaps_.pop();
            const size_t place = states_[swap.left].place;
            if (states_[swap.right].place != place + 1)
                continue;
            y_ = std::max(y_, swap.y);
            changePlaces(swap.left, swap.right);
            if (place > 0)
                queueSwap(place - 1, above);
            if (place + 2 < row_.size())
                queueSwap(place + 1, above);
        }
    }

    /// The left and the right edge of the stretches on both sides of neighbours a and b; none where there is none.
    std::pair<size_t, size_t> boundsAround(size_t a, size_t b, int before, int after) const
    {
        const State &sa = states_[a], &sb = states_[b];
        size_t left = none, right = none;
        if (before != 0)
            left = sa.winding == 0 ? sa.left : sb.left;
        if (after != 0)
            right = sa.winding == 0 ? sb.right : sa.right;
        if (before != 0 && after != 0 && sa.winding != 0) { // one stretch, which begins further on the left
            size_t place = sa.place;
            while (states_[row_[place - 1]].right == none)
                --place;
            left = row_[place - 1];
            right = states_[left].right;
        }
        return {left, right};
    }

    void changePlaces(size_t a, size_t b)
    {
        State &sa = states_[a], &sb = states_[b];
        const int before = sa.winding - edges_[a].winding, after = sb.winding;
        const int between = before + edges_[b].winding;
        const bool plain = before != 0 && after != 0 && sa.winding != 0 && between != 0;
        const bool outside = before == 0 && after == 0 && sa.winding == 0 && between == 0;
        if (!plain && !outside) {
            const auto [left, right] = boundsAround(a, b, before, after);
            for (const size_t e : {left, a, b})
                if (e != none && states_[e].right != none)
                    endStretch(e);
            size_t from = left;
            if ((before == 0) != (between == 0))
                from = step(from, b);
            if ((between == 0) != (after == 0))
                from = step(from, a);
            if (right != none)
                step(from, right);
        }
        std::swap(row_[sa.place], row_[sb.place]);
        std::swap(sa.place, sb.place);
        sb.winding = between;
        sa.winding = after;
    }

    /// A boundary: ends the stretch that began at `from`, or begins one.
    size_t step(size_t from, size_t edge)
    {
        if (from == none)
            return edge;
        beginStretch(from, edge);
        return none;
    }

    std::vector<Edge> edges_; ///< by their lower ends
    std::vector<State> states_;
    std::vector<double> heights_;
    std::vector<size_t> row_, old_;
    std::vector<std::pair<size_t, size_t>> begin_;
    std::vector<bool> goesOn_; ///< by place: whether the stretch that begins there lasted before
    std::priority_queue<Swap> swaps_;
    std::vector<ut_Trapezoid> trapezoids_;
    size_t begun_ = 0; ///< edges that the row has met
    double y_ = 0.0;
};

} // namespace

std::vector<ut_Trapezoid> ut_sweepTrapezoids(const std::vector<UT_Vector2>& outline)
{
    return Sweep(outline).trapezoids();
}
