#include <RU/shape/ru_FeatherQuads.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

/// The largest turn of a quad in a fan: its ramp, straight where it should be round, is 0.4 % of the reach short.
constexpr double fanTurn = std::numbers::pi / 18.0;

/// The least part of the reach that the ramp goes on inside. With less, pixels on the outline would be darker than
/// those next to them outside.
constexpr double leastInside = 0.25;

class FeatherQuads
{
public:
    FeatherQuads(GEO_Detail& detail, GB_PrimitiveGroup& group, const ru_Outline& outline)
        : detail_(detail), group_(group), outline_(outline)
    {
        least_ = HUGE_VAL;
        for (const ru_OutlinePoint& p : outline.points)
            least_ = std::min({least_, p.feather, p.featherAfter()});
    }

    void add()
    {
        for (size_t i = 0; i < outline_.edges(); ++i) {
            const ru_Direction along = ru_edgeDirection(outline_, i), left = along.left();
            const ru_OutlinePoint &a = outline_.point(i), &b = outline_.point(i + 1);
            for (const double side : {1.0, -1.0})
                quad(outer(a, a.featherAfter(), left, side), a, b, outer(b, b.feather, left, side));
            fan(b, along, ru_edgeDirection(outline_, i + 1 == outline_.edges() ? 0 : i + 1));
        }
    }

private:
    /// How far the ramp goes on one side: `side` is 1 outside, -1 inside. Inside of a narrow shape a ramp comes out
    /// on the other side. That makes no difference as long as it goes no further than what begins there.
    double reachOf(double feather, double side) const
    {
        return side > 0.0 ? feather : std::min(feather, std::max(least_, leastInside * feather));
    }
    ru_OutlinePoint outer(const ru_OutlinePoint& point, double feather, ru_Direction left, double side) const
    {
        const double reach = -side * reachOf(feather, side);
        return point.moved(reach * left.x, reach * left.y);
    }

    /// Fills the gap between the quads of two edges, on the side away from which the outline turns.
    void fan(const ru_OutlinePoint& corner, ru_Direction before, ru_Direction after)
    {
        const double turn =
            std::atan2(before.x * after.y - before.y * after.x, before.x * after.x + before.y * after.y);
        const double side = turn > 0.0 ? 1.0 : -1.0;
        const int steps = std::max(1, static_cast<int>(std::ceil(std::abs(turn) / fanTurn - 1e-9)));
        ru_OutlinePoint from = outer(corner, corner.feather, before.left(), side);
        for (int k = 1; k <= steps; ++k) {
            const double angle = turn * k / steps, c = std::cos(angle), s = std::sin(angle);
            const ru_Direction left = before.left();
            const ru_Direction turned = {c * left.x - s * left.y, s * left.x + c * left.y};
            const double feather =
                k == steps ? corner.featherAfter() : corner.feather + corner.step * k / steps;
            const ru_OutlinePoint to = outer(corner, feather, k == steps ? after.left() : turned, side);
            quad(from, corner, corner, to);
            from = to;
        }
    }

    /// Leaves out what has no width.
    void quad(const ru_OutlinePoint& p0, const ru_OutlinePoint& p1, const ru_OutlinePoint& p2,
              const ru_OutlinePoint& p3)
    {
        const double area = (p2.x - p0.x) * (p3.y - p1.y) - (p2.y - p0.y) * (p3.x - p1.x);
        if (area == 0.0)
            return;
        const int64_t number = detail_.primitiveCount();
        if (ru_addPolygon(detail_, {p0, p1, p2, p3}))
            group_.append(number);
    }

    GEO_Detail& detail_;
    GB_PrimitiveGroup& group_;
    const ru_Outline& outline_;
    double least_ = 0.0; ///< the shortest reach
};

} // namespace

bool ru_addReach(ru_Outline& outline, double reach)
{
    std::vector<ru_OutlinePoint> points;
    for (ru_OutlinePoint& p : outline.points)
        p.feather += reach;
    for (size_t i = 0; i < outline.points.size(); ++i) {
        const ru_OutlinePoint &a = outline.point(i), &b = outline.point(i + 1);
        points.push_back(a);
        if (i < outline.edges() &&
            ((a.feather < 0.0 && b.feather > 0.0) || (a.feather > 0.0 && b.feather < 0.0))) {
            const double t = a.feather / (a.feather - b.feather);
            points.push_back(
                {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y), a.alpha + t * (b.alpha - a.alpha), 0.0});
        }
    }
    outline.points = std::move(points);
    outline.dropRepeats();
    return std::any_of(outline.points.begin(), outline.points.end(),
                       [](const ru_OutlinePoint& p) { return p.feather < 0.0; });
}

void ru_addFeatherQuads(GEO_Detail& detail, GB_PrimitiveGroup& group, const ru_Outline& outline)
{
    FeatherQuads(detail, group, outline).add();
}
