#include <host/shape/Outlines.h>

#include <algorithm>
#include <utility>

namespace host {

namespace {

/// The corners of an outline with its curves as a few edges each.
std::vector<Place> cornersOf(const ShapePoints& points)
{
    constexpr int edges = 16;
    std::vector<Place> corners;
    for (size_t i = 0; i < points.size(); ++i) {
        const ShapePoint &from = points[i], &to = points[(i + 1) % points.size()];
        for (int k = 0; k < edges; ++k) {
            const double t = static_cast<double>(k) / edges, s = 1.0 - t;
            Place& place = corners.emplace_back();
            for (size_t axis = 0; axis < 2; ++axis)
                place[axis] = s * s * s * from.at[axis] + 3.0 * s * s * t * from.out[axis] +
                              3.0 * s * t * t * to.in[axis] + t * t * t * to.at[axis];
        }
    }
    return corners;
}

double areaOf(const std::vector<Place>& corners)
{
    double twice = 0.0;
    for (size_t i = 0, before = corners.size() - 1; i < corners.size(); before = i++)
        twice += corners[before][0] * corners[i][1] - corners[i][0] * corners[before][1];
    return 0.5 * twice;
}

bool isInside(const Place& place, const std::vector<Place>& corners)
{
    bool inside = false;
    for (size_t i = 0, before = corners.size() - 1; i < corners.size(); before = i++) {
        const Place &a = corners[before], &b = corners[i];
        if ((a[1] > place[1]) != (b[1] > place[1]) &&
            place[0] < a[0] + (b[0] - a[0]) * (place[1] - a[1]) / (b[1] - a[1]))
            inside = !inside;
    }
    return inside;
}

/// Puts an outline into another one, by a bridge between their nearest points.
void join(ShapePoints& outline, const ShapePoints& other)
{
    size_t here = 0, there = 0;
    double nearest = std::numeric_limits<double>::max();
    for (size_t i = 0; i < outline.size(); ++i)
        for (size_t k = 0; k < other.size(); ++k) {
            const double dx = outline[i].at[0] - other[k].at[0], dy = outline[i].at[1] - other[k].at[1];
            if (const double distance = dx * dx + dy * dy; distance < nearest) {
                nearest = distance;
                here = i;
                there = k;
            }
        }
    ShapePoints detour(other.begin() + static_cast<ptrdiff_t>(there), other.end());
    detour.insert(detour.end(), other.begin(), other.begin() + static_cast<ptrdiff_t>(there) + 1);
    detour.front().in = detour.back().out = detour.front().at;
    detour.push_back(outline[here]);
    detour.back().in = outline[here].out = outline[here].at;
    outline.insert(outline.begin() + static_cast<ptrdiff_t>(here) + 1, detour.begin(), detour.end());
}

} // namespace

void windByNesting(std::vector<SubPath>& paths)
{
    std::vector<std::vector<Place>> corners;
    corners.reserve(paths.size());
    for (const SubPath& path : paths)
        corners.push_back(cornersOf(path.points));
    for (size_t i = 0; i < paths.size(); ++i) {
        bool isHole = false;
        for (size_t k = 0; k < paths.size(); ++k)
            isHole = isHole != (k != i && isInside(corners[i].front(), corners[k]));
        if ((areaOf(corners[i]) < 0.0) == isHole)
            continue;
        std::reverse(paths[i].points.begin(), paths[i].points.end());
        for (ShapePoint& point : paths[i].points)
            std::swap(point.in, point.out);
    }
}

std::vector<ShapePoints> joinedOutlines(const std::vector<SubPath>& paths)
{
    struct Joined
    {
        ShapePoints points;
        std::array<Box, 2> boxes; ///< by sense
    };
    std::vector<Joined> outlines;
    for (const SubPath& path : paths) {
        Joined added{path.points, {}};
        added.boxes[areaOf(cornersOf(path.points)) < 0.0 ? 1 : 0] = boxOf(path.points);
        for (size_t i = 0;
             i < outlines.size();) { // boxes grow, so that one looked at before may come to meet
            Joined& other = outlines[i];
            if (!other.boxes[0].meets(added.boxes[1]) && !other.boxes[1].meets(added.boxes[0])) {
                ++i;
                continue;
            }
            join(other.points, added.points);
            for (size_t sense = 0; sense < 2; ++sense)
                other.boxes[sense].add(added.boxes[sense]);
            added = std::move(other);
            outlines.erase(outlines.begin() + static_cast<ptrdiff_t>(i));
            i = 0;
        }
        outlines.push_back(std::move(added));
    }
    std::vector<ShapePoints> joined;
    joined.reserve(outlines.size());
    for (Joined& each : outlines)
        joined.push_back(std::move(each.points));
    return joined;
}

Box boxOf(const ShapePoints& points)
{
    Box box;
    for (const ShapePoint& point : points)
        for (const Place& place : {point.at, point.in, point.out})
            box.add({place, place});
    return box;
}

bool isPolygon(const ShapePoints& points)
{
    return std::all_of(points.begin(), points.end(),
                       [](const ShapePoint& point) { return point.in == point.at && point.out == point.at; });
}

} // namespace host
