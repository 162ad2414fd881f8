#include <RU/shape/RU_RotoSpline.h>

#include <GU/GU_PrimNURBCurve.h>
#include <GU/GU_PrimPoly.h>
#include <GU/GU_PrimRBezCurve.h>
#include <RU/shape/ru_FeatherQuads.h>
#include <RU/shape/ru_Shrink.h>
#include <RU/shape/ru_Stroke.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr float indexTolerance = 1e-5f;
constexpr double leastHalfWidth = 0.01;
/// Strokes that turn by more than 60 degrees from one sample to the next have a corner there.
constexpr float cornerAngle = std::numbers::pi_v<float> / 3.0f;

/// Writes control points into a detail.
class PointWriter
{
public:
    PointWriter(GU_Detail& detail, bool withFeather) : detail_(detail)
    {
        detail.clear();
        detail.addAlphaAttribute();
        if (withFeather)
            feather_ = detail.addFloatAttribute("feather", sizeof(float), 0.0f);
    }

    int64_t append(const RU_RotoPoint& point)
    {
        const int64_t added = detail_.appendPoint();
        set(added, point, point.x, point.y);
        return added;
    }
    void set(int64_t number, const RU_RotoPoint& point, float x, float y)
    {
        detail_.setPosition(number, {x, y, 0.0f, 1.0f});
        detail_.setAlpha(number, point.alpha);
        if (feather_ >= 0)
            detail_.setValue(feather_, number, point.feather);
    }

private:
    GU_Detail& detail_;
    int64_t feather_ = -1;
};

bool isFinite(const RU_RotoPoint& p, bool withHandles)
{
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.alpha) && std::isfinite(p.feather) &&
           (!withHandles || (std::isfinite(p.inHandleX) && std::isfinite(p.inHandleY) &&
                             std::isfinite(p.outHandleX) && std::isfinite(p.outHandleY)));
}

/// Edges of a shape and how far they are soft, outwards. The inside is on their left.
struct SoftEdges
{
    std::vector<ru_Outline> outlines;
    bool areShrunk = false; ///< the shape is what they enclose, and no longer the whole one
};

SoftEdges softEdges(ru_Outline&& outline, RU_RotoFill fill, double halfWidth, float reach)
{
    SoftEdges edges;
    const bool isCounterclockwise = outline.signedArea() > 0.0;
    if (fill == RU_ROTO_OPEN || fill == RU_ROTO_FILLED_OUTLINE) {
        edges.outlines = ru_outlinesOfStroke(outline, ru_strokeAround(outline, halfWidth));
        // A shape that is filled has the stroke's other side within it.
        if (outline.isClosed)
            edges.outlines.erase(edges.outlines.begin() + (isCounterclockwise ? 1 : 0));
    } else {
        if (!isCounterclockwise)
            std::reverse(outline.points.begin(), outline.points.end());
        edges.outlines.push_back(std::move(outline));
    }
    for (ru_Outline& edge : edges.outlines)
        edges.areShrunk = ru_addReach(edge, std::isfinite(reach) ? double(reach) : 0.0) || edges.areShrunk;
    if (edges.areShrunk)
        edges.outlines = ru_shrunk(edges.outlines);
    return edges;
}

/// Fills what outlines enclose, where some may be holes in others.
void addSolid(GU_Detail& detail, const std::vector<ru_Outline>& outlines)
{
    const bool hasHoles = std::any_of(outlines.begin(), outlines.end(),
                                      [](const ru_Outline& outline) { return outline.signedArea() < 0.0; });
    std::vector<ru_OutlinePoint> all;
    for (const ru_Outline& outline : outlines) {
        if (!hasHoles) {
            ru_addPolygon(detail, outline.points);
            continue;
        }
        // A single polygon, which goes from the first outline to each other one and back on the same way.
        all.insert(all.end(), outline.points.begin(), outline.points.end());
        all.push_back(outline.points.front());
        all.push_back(outlines.front().points.front());
    }
    if (hasHoles)
        ru_addPolygon(detail, all);
    detail.convex(3, 0, 0);
}

} // namespace

RU_RotoSpline::RU_RotoSpline(RU_RotoType type, RU_RotoFill fill, float levelOfDetail, float width)
    : fill_(fill), width_(width), levelOfDetail_(levelOfDetail), type_(type)
{
}

RU_RotoSpline::~RU_RotoSpline() = default;

int64_t RU_RotoSpline::entries() const
{
    return static_cast<int64_t>(points_.size());
}

RU_RotoPoint* RU_RotoSpline::getPoint(int index) const
{
    return index >= 0 && index < entries() ? points_[static_cast<size_t>(index)].get() : nullptr;
}

RU_RotoFill RU_RotoSpline::getFillType() const
{
    return fill_;
}

void RU_RotoSpline::addPoint(RU_RotoPoint* point)
{
    if (!point)
        return;
    const auto before = std::find_if(points_.rbegin(), points_.rend(),
                                     [point](const auto& other) { return other->index <= point->index; });
    points_.emplace(before.base(), point);
}

RU_RotoPoint* RU_RotoSpline::getPointByIndex(float index) const
{
    for (const auto& point : points_)
        if (std::abs(point->index - index) <= indexTolerance)
            return point.get();
    return nullptr;
}

void RU_RotoSpline::buildRawCurve(GU_Detail& detail, bool withFeather) const
{
    PointWriter writer(detail, withFeather);
    const bool open = fill_ == RU_ROTO_OPEN, bezier = type_ != RU_ROTO_POLYGON && type_ != RU_ROTO_NURBS;
    const int64_t n = entries();
    if (n < (type_ == RU_ROTO_POLYGON && !open ? 3 : 2) ||
        !std::all_of(points_.begin(), points_.end(),
                     [bezier](const auto& point) { return isFinite(*point, bezier); }))
        return;

    if (bezier) {
        const GU_PrimRBezCurve& curve =
            *GU_PrimRBezCurve::build(&detail, open ? 3 * n - 2 : 3 * n, 4, open ? 0 : 1, 1);
        const int64_t vertices = curve.vertexCount();
        for (int64_t i = 0; i < n; ++i) {
            const RU_RotoPoint& point = *points_[static_cast<size_t>(i)];
            writer.set(curve.vertexPoint(3 * i), point, point.x, point.y);
            if (i > 0 || !open)
                writer.set(curve.vertexPoint((3 * i + vertices - 1) % vertices), point, point.inHandleX,
                           point.inHandleY);
            if (i + 1 < n || !open)
                writer.set(curve.vertexPoint(3 * i + 1), point, point.outHandleX, point.outHandleY);
        }
        return;
    }

    GEO_PointArray points(detail);
    for (const auto& point : points_)
        points.append(writer.append(*point));
    if (type_ == RU_ROTO_POLYGON) {
        GU_PrimPoly* const polygon = GU_PrimPoly::build(&detail, n, open ? 1 : 0, 0);
        for (int64_t i = 0; i < n; ++i)
            polygon->setVertexPoint(i, points(i));
        return;
    }
    GU_PrimNURBCurve* const curve = GU_PrimNURBCurve::build(&detail, n, 4, open ? 0 : 1, 1, 1);
    if (!curve->interpGlobal(points, 4, open ? 0 : 1, 1, 1, nullptr))
        PointWriter(detail, withFeather); // as for points that are not finite
}

ru_Outline RU_RotoSpline::flattened() const
{
    GU_Detail detail;
    buildRawCurve(detail, true);
    detail.convert({levelOfDetail_});
    return ru_outlineOf(detail);
}

double RU_RotoSpline::halfWidth() const
{
    return std::isfinite(width_) ? std::max(0.5 * double(width_), leastHalfWidth) : leastHalfWidth;
}

GU_Detail* RU_RotoSpline::build(GU_Detail* /*detail*/) const
{
    auto built = std::make_unique<GU_Detail>();
    buildRawCurve(*built, false);
    built->convert({levelOfDetail_});
    const ru_Outline outline = ru_outlineOf(*built);
    if (fill_ == RU_ROTO_OPEN) {
        built->clear();
        built->addAlphaAttribute();
    } else {
        built->convex(3, 0, 0);
    }
    if (fill_ == RU_ROTO_OPEN || fill_ == RU_ROTO_FILLED_OUTLINE)
        ru_addStroke(*built, outline, ru_strokeAround(outline, halfWidth()));
    return built.release();
}

GU_Detail* RU_RotoSpline::buildCore(float reach) const
{
    const SoftEdges edges = softEdges(flattened(), fill_, halfWidth(), reach);
    if (!edges.areShrunk)
        return build();
    auto built = std::make_unique<GU_Detail>();
    built->addAlphaAttribute();
    addSolid(*built, edges.outlines);
    return built.release();
}

GU_Detail* RU_RotoSpline::buildFeather(float reach, GU_Detail* /*detail*/) const
{
    auto built = std::make_unique<GU_Detail>();
    built->addAlphaAttribute();
    GB_PrimitiveGroup& group = *built->addPrimitiveGroup("feather");
    for (const ru_Outline& outline : softEdges(flattened(), fill_, halfWidth(), reach).outlines)
        ru_addFeatherQuads(*built, group, outline);
    return built.release();
}

void RU_RotoSpline::buildFreehand(const UT_Vector2Array& stroke, UT_Vector2Array& points,
                                  UT_Vector2Array& inHandles, UT_Vector2Array& outHandles, float tolerance,
                                  bool closed, bool corners)
{
    UT_Vector4Array samples;
    for (const UT_Vector2& p : stroke)
        samples.append({p.x, p.y, 0.0f, 1.0f});
    GU_Detail detail;
    const GU_PrimRBezCurve* const curve =
        detail.approxCurveGlobal(samples, 4, 4, closed ? 1 : 0, tolerance, corners ? cornerAngle : 0.0f, 1);
    const int64_t vertices = curve ? curve->vertexCount() : 0;
    const int64_t count = (vertices + 2) / 3; // an open curve has another point at its end
    for (UT_Vector2Array* array : {&points, &inHandles, &outHandles})
        array->setSize(count);
    const auto place = [&](int64_t vertex) {
        const UT_Vector4& p = detail.position(curve->vertexPoint(vertex));
        return UT_Vector2{p.x, p.y};
    };
    for (int64_t i = 0; i < count; ++i) {
        points(i) = place(3 * i);
        inHandles(i) = i > 0 || closed ? place((3 * i + vertices - 1) % vertices) : points(i);
        outHandles(i) = 3 * i + 1 < vertices ? place(3 * i + 1) : points(i);
    }
}
