#include <RU/shape/ru_Stroke.h>

#include <algorithm>
#include <cmath>

namespace {

ru_OutlinePoint beside(const ru_OutlinePoint& point, ru_Direction direction, double distance)
{
    return point.moved(distance * direction.x, distance * direction.y);
}

/// A point where the line goes on from `before` to `after`.
struct Corner
{
    Corner(const ru_OutlinePoint& place, ru_Direction before, ru_Direction after, double width)
        : point(place), arriving(before.left()), leaving(after.left()), halfWidth(width)
    {
        const double cosine = before.x * after.x + before.y * after.y;
        turnsLeft = before.x * after.y - before.y * after.x > 0.0;
        isMitred =
            2.0 <= (1.0 + cosine) * ru_mitreLimit * ru_mitreLimit; // its length squared is 2 / (1 + cosine)
        if (isMitred) {
            mitre = {(arriving.x + leaving.x) / (1.0 + cosine), (arriving.y + leaving.y) / (1.0 + cosine)};
            overlap = halfWidth * std::sqrt(std::max(2.0 / (1.0 + cosine) - 1.0, 0.0));
        }
    }

    /// The mitre's corner alone.
    void share(ru_StrokeSide& left, ru_StrokeSide& right) const
    {
        left.append(beside(point, mitre, halfWidth));
        right.append(beside(point, mitre, -halfWidth));
    }
    /// The edges' own corners, and between them the mitre outside and the point inside.
    void part(ru_StrokeSide& left, ru_StrokeSide& right) const
    {
        for (const double side : {1.0, -1.0}) {
            ru_StrokeSide& corners = side > 0.0 ? left : right;
            corners.isOuter = turnsLeft == (side < 0.0);
            corners.append(beside(point, arriving, side * halfWidth));
            if (!corners.isOuter)
                corners.append(point);
            else if (isMitred)
                corners.append(beside(point, mitre, side * halfWidth));
            corners.append(beside(point, leaving, side * halfWidth));
        }
    }

    ru_OutlinePoint point;
    ru_Direction arriving, leaving, mitre;
    double halfWidth;
    double overlap = 0.0; ///< of the edges along them, on the inner side
    bool turnsLeft = false, isMitred = false;
};

double edgeLength(const ru_Outline& line, size_t i)
{
    const ru_OutlinePoint &a = line.point(i), &b = line.point(i + 1);
    return std::hypot(b.x - a.x, b.y - a.y);
}

} // namespace

ru_Stroke ru_strokeAround(const ru_Outline& line, double halfWidth)
{
    const size_t n = line.points.size();
    ru_Stroke stroke{std::vector<ru_StrokeSide>(n), std::vector<ru_StrokeSide>(n)};
    for (size_t i = 0; i < n; ++i) {
        ru_StrokeSide &left = stroke.left[i], &right = stroke.right[i];
        if (!line.isClosed && (i == 0 || i + 1 == n)) {
            const ru_Direction across = ru_edgeDirection(line, i == 0 ? 0 : i - 1).left();
            left.append(beside(line.points[i], across, halfWidth));
            right.append(beside(line.points[i], across, -halfWidth));
            continue;
        }
        const size_t before = i == 0 ? n - 1 : i - 1;
        const Corner corner(line.points[i], ru_edgeDirection(line, before), ru_edgeDirection(line, i),
                            halfWidth);
        // A third of an edge for each of its corners: no quadrilateral folds, and what one leaves to its neighbour at
        // a corner, up to twice the overlap along that, is covered there.
        const double room = std::min(edgeLength(line, before), edgeLength(line, i)) / 3.0;
        if (corner.isMitred && corner.overlap <= room)
            corner.share(left, right);
        else
            corner.part(left, right);
    }
    return stroke;
}

void ru_addStroke(GEO_Detail& detail, const ru_Outline& line, const ru_Stroke& stroke)
{
    for (size_t i = 0; i < line.edges(); ++i) {
        const size_t next = i + 1 == line.points.size() ? 0 : i + 1;
        ru_addPolygon(detail, {stroke.left[i].last(), stroke.right[i].last(), stroke.right[next].first(),
                               stroke.left[next].first()});
    }
    for (size_t i = 0; i < line.points.size(); ++i)
        for (const ru_StrokeSide& side : {stroke.left[i], stroke.right[i]})
            if (side.isOuter) {
                std::vector<ru_OutlinePoint> wedge = {line.points[i]};
                wedge.insert(wedge.end(), side.corners.begin(), side.corners.begin() + int64_t(side.count));
                ru_addPolygon(detail, wedge);
            }
}

std::vector<ru_Outline> ru_outlinesOfStroke(const ru_Outline& line, const ru_Stroke& stroke)
{
    ru_Outline forth, back;
    forth.isClosed = back.isClosed = true;
    for (size_t i = 0; i < line.points.size(); ++i) {
        const ru_StrokeSide& right = stroke.right[i];
        for (size_t k = 0; k < right.count; ++k)
            forth.points.push_back(right.corners[k]);
        const ru_StrokeSide& left = stroke.left[line.points.size() - 1 - i];
        for (size_t k = left.count; k > 0; --k)
            back.points.push_back(left.corners[k - 1]);
    }
    if (line.isClosed)
        return {forth, back};
    forth.points.insert(forth.points.end(), back.points.begin(), back.points.end());
    return {forth};
}
