#include <RU/shape/ru_Outline.h>

#include <GU/GU_PrimPoly.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

bool isSamePlace(const ru_OutlinePoint& a, const ru_OutlinePoint& b)
{
    return a.x == b.x && a.y == b.y;
}

bool fitsFloat(const ru_OutlinePoint& p)
{
    constexpr double largest = std::numeric_limits<float>::max();
    return std::abs(p.x) <= largest && std::abs(p.y) <= largest;
}

} // namespace

double ru_Outline::signedArea() const
{
    double twice = 0.0;
    for (size_t i = 2; i < points.size(); ++i) {
        const ru_OutlinePoint &o = points[0], &a = points[i - 1], &b = points[i];
        twice += (a.x - o.x) * (b.y - o.y) - (b.x - o.x) * (a.y - o.y);
    }
    return 0.5 * twice;
}

void ru_Outline::dropRepeats()
{
    points.erase(std::unique(points.begin(), points.end(), isSamePlace), points.end());
    while (isClosed && points.size() > 1 && isSamePlace(points.front(), points.back()))
        points.pop_back();
    if (points.size() < 2)
        points.clear();
}

ru_Direction ru_edgeDirection(const ru_Outline& outline, size_t i)
{
    const ru_OutlinePoint &a = outline.point(i), &b = outline.point(i + 1);
    const double length = std::hypot(b.x - a.x, b.y - a.y);
    return length > 0.0 ? ru_Direction{(b.x - a.x) / length, (b.y - a.y) / length} : ru_Direction{};
}

ru_Outline ru_outlineOf(const GEO_Detail& detail)
{
    ru_Outline outline;
    if (detail.primitiveCount() == 0)
        return outline;
    const GEO_Primitive& polygon = *detail.primitive(0);
    const int64_t feather = detail.findAttribute("feather");
    outline.isClosed = polygon.isClosed();
    for (int64_t i = 0; i < polygon.vertexCount(); ++i) {
        const int64_t point = polygon.vertexPoint(i);
        const UT_Vector4& p = detail.position(point);
        const double reach = feather < 0 ? 0.0 : double(detail.value(feather, point));
        outline.points.push_back({p.x, p.y, detail.alpha(point), reach});
        if (!fitsFloat(outline.points.back()))
            return {};
    }
    outline.dropRepeats();
    return outline;
}

bool ru_addPolygon(GEO_Detail& detail, const std::vector<ru_OutlinePoint>& corners)
{
    if (!std::all_of(corners.begin(), corners.end(), fitsFloat))
        return false;
    const auto count = static_cast<int64_t>(corners.size());
    GU_PrimPoly* const polygon = GU_PrimPoly::build(&detail, count, 0, 0);
    for (int64_t i = 0; i < count; ++i) {
        const ru_OutlinePoint& corner = corners[static_cast<size_t>(i)];
        const int64_t point = detail.appendPoint(
            UT_Vector4{static_cast<float>(corner.x), static_cast<float>(corner.y), 0.0f, 1.0f});
        detail.setAlpha(point, static_cast<float>(corner.alpha));
        polygon->setVertexPoint(i, point);
    }
    return true;
}
