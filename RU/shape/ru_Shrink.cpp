#include <RU/shape/ru_Shrink.h>

#include <RU/shape/ru_Boundary.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

/// The largest turn of an edge around a corner.
constexpr double arcTurn = std::numbers::pi / 18.0;

/// A little less than the whole distance: where exactly nothing would remain, its edges would coincide.
constexpr double nearlyAll = 1.0 - 1.0 / 4096.0;

double depthOf(double feather)
{
    return std::max(-feather, 0.0) * nearlyAll;
}

/// How far an outline may move, as a part of the depth. Without that, fine outlines that shrink to next to nothing
/// would have all their edges cross each other.
constexpr double coarseness = 1.0 / 1024.0;

/// Whether the points between two others lie next to the edge between these, and their feathers on a line.
bool areOnEdge(const std::vector<ru_OutlinePoint>& points, size_t from, size_t to)
{
    const ru_OutlinePoint &a = points[from], &b = points[to];
    const double dx = b.x - a.x, dy = b.y - a.y, square = dx * dx + dy * dy;
    for (size_t i = from + 1; i < to; ++i) {
        const ru_OutlinePoint& p = points[i];
        const double part = ((p.x - a.x) * dx + (p.y - a.y) * dy) / square;
        const double away = std::hypot(a.x + part * dx - p.x, a.y + part * dy - p.y);
        const double bend = std::abs(a.featherAfter() + part * (b.feather - a.featherAfter()) - p.feather);
        if (!(part > 0.0 && part < 1.0 && p.step == 0.0 &&
              std::max(away, bend) <=
                  coarseness * depthOf(std::max({a.featherAfter(), p.feather, b.feather}))))
            return false;
    }
    return true;
}

ru_Outline simplified(const ru_Outline& outline)
{
    constexpr size_t mostDropped = 64;
    ru_Outline simple;
    simple.isClosed = true;
    const size_t n = outline.points.size();
    for (size_t i = 0; i < n;) {
        simple.points.push_back(outline.points[i]);
        size_t next = i + 1;
        while (next + 1 < n && next - i < mostDropped && areOnEdge(outline.points, i, next + 1))
            ++next;
        i = next;
    }
    return simple;
}

/// Goes along an outline on its left, in the points' distances. Each edge takes away the rectangle beside it, each
/// corner that juts out to the left a sector: the outline's winding less the number of those that cover a place is
/// the winding of the new outline, and above 0 just where something remains.
class Inset
{
public:
    explicit Inset(const ru_Outline& outline)
    {
        const double first = outline.points.front().feather;
        isEven_ =
            std::all_of(outline.points.begin(), outline.points.end(),
                        [first](const ru_OutlinePoint& p) { return p.feather == first && p.step == 0.0; });
        for (size_t i = 0; i < outline.points.size(); ++i)
            corner(outline.points[i],
                   ru_edgeDirection(outline, i == 0 ? outline.points.size() - 1 : i - 1).left(),
                   ru_edgeDirection(outline, i).left());
        inset.isClosed = true;
    }

    ru_Outline inset;
    std::vector<char> isHelper; ///< edges to the corners of the old outline and back

private:
    void append(const ru_OutlinePoint& point, double feather, bool beginsHelper = false)
    {
        inset.points.push_back(point);
        inset.points.back().feather = std::abs(feather);
        inset.points.back().step = 0.0;
        isHelper.push_back(beginsHelper ? 1 : 0);
    }

    void corner(const ru_OutlinePoint& point, ru_Direction from, ru_Direction to)
    {
        const double arriving = point.feather, leaving = point.featherAfter();
        const double d = depthOf(arriving), e = depthOf(leaving);
        const double sine = from.x * to.y - from.y * to.x, cosine = from.x * to.x + from.y * to.y;
        const double turn = std::atan2(sine, cosine);
        append(point.moved(d * from.x, d * from.y), arriving);
        if (std::max(d, e) == 0.0 || (d == e && std::abs(turn) < 1e-7)) {
            inset.points.back().step = std::abs(leaving) - std::abs(arriving);
            return;
        }
        if (turn > 0.0) {
            // The end of one rectangle lies within others. Where these get narrower its tip may not; at a corner none
            // of it may.
            const double covered = isEven_ ? 1.0 : turn > arcTurn ? 0.0 : 0.5;
            const double s = covered * d, t = covered * e;
            isHelper.back() = isEven_ ? 1 : 0;
            if (!isEven_)
                append(point.moved(s * from.x, s * from.y), arriving, true);
            append(point, arriving, true);
            if (!isEven_)
                append(point.moved(t * to.x, t * to.y), leaving);
        } else {
            const int steps = static_cast<int>(std::ceil(-turn / arcTurn));
            for (int k = 1; k < steps; ++k) {
                const double part = double(k) / steps, radius = d + part * (e - d);
                const double c = radius * std::cos(turn * part), s = radius * std::sin(turn * part);
                append(point.moved(c * from.x - s * from.y, s * from.x + c * from.y),
                       arriving + part * (leaving - arriving));
            }
        }
        append(point.moved(e * to.x, e * to.y), leaving);
    }

    bool isEven_ = false; ///< as deep everywhere
};

/// Whether even the place furthest from the edges goes.
bool goesWhole(const ru_Outline& outline)
{
    const ru_OutlinePoint& first = outline.points.front();
    double left = first.x, right = left, low = first.y, high = low, least = depthOf(first.feather);
    for (const ru_OutlinePoint& p : outline.points) {
        left = std::min(left, p.x);
        right = std::max(right, p.x);
        low = std::min(low, p.y);
        high = std::max(high, p.y);
        least = std::min({least, depthOf(p.feather), depthOf(p.featherAfter())});
    }
    return least > 0.5 * std::min(right - left, high - low);
}

} // namespace

std::vector<ru_Outline> ru_shrunk(const std::vector<ru_Outline>& outlines)
{
    ru_Boundary shape(ru_Boundary::Inside::anyWinding), rest(ru_Boundary::Inside::positiveWinding);
    for (const ru_Outline& outline : outlines)
        shape.add(outline);
    for (const ru_Outline& outline : shape.outlines()) {
        if (goesWhole(outline))
            continue;
        const Inset inset(simplified(outline));
        rest.add(inset.inset, inset.isHelper);
    }
    return rest.outlines();
}
