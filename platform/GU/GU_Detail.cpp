#include <GU/GU_Detail.h>
#include <GU/GU_PrimCurve.h>
#include <GU/GU_PrimPoly.h>
#include <GU/GU_PrimRBezCurve.h>
#include <GU/gu_FitCurve.h>
#include <UT/UT_Convex.h>

#include <cmath>
#include <map>
#include <utility>

namespace {

/// Cuts one polygon and collects the pieces.
class PolygonCutter : public UT_Convex
{
public:
    PolygonCutter(GU_Detail& detail, const GEO_Primitive& polygon) : detail_(detail), polygon_(polygon) {}

    std::vector<std::unique_ptr<GEO_Primitive>> pieces;

private:
    int64_t vertexCount() const override { return polygon_.vertexCount(); }
    UT_Vector2 vertexPosition(int64_t index) const override
    {
        const int64_t point = polygon_.vertexPoint(index);
        if (point < 0)
            return {NAN, NAN};
        const UT_Vector4& p = detail_.position(point);
        return {p.x, p.y};
    }

    void beginPiece() override { points_.clear(); }
    void addVertex(const UT_ConvexCorner& corner) override { points_.push_back(pointAt(corner)); }
    void endPiece() override
    {
        auto piece = std::make_unique<GU_PrimPoly>(static_cast<int64_t>(points_.size()), false);
        for (size_t i = 0; i < points_.size(); ++i)
            piece->setVertexPoint(static_cast<int64_t>(i), points_[i]);
        pieces.push_back(std::move(piece));
    }

    int64_t pointAt(const UT_ConvexCorner& corner)
    {
        const int64_t next = corner.index + 1 == vertexCount() ? 0 : corner.index + 1;
        if (corner.fraction == 0.0f || corner.fraction == 1.0f)
            return polygon_.vertexPoint(corner.fraction == 0.0f ? corner.index : next);
        const auto [place, isNew] = between_.try_emplace({corner.index, corner.fraction}, 0);
        if (isNew) {
            GEO_Detail::Values values = detail_.pointValues(polygon_.vertexPoint(corner.index));
            const GEO_Detail::Values to = detail_.pointValues(polygon_.vertexPoint(next));
            for (size_t i = 0; i < values.size(); ++i)
                values[i] += corner.fraction * (to[i] - values[i]);
            values[0] = corner.x;
            values[1] = corner.y;
            place->second = detail_.appendPoint(values);
        }
        return place->second;
    }

    GU_Detail& detail_;
    const GEO_Primitive& polygon_;
    std::vector<int64_t> points_;
    std::map<std::pair<int64_t, float>, int64_t> between_; ///< points on edges, by edge and fraction
};

} // namespace

GU_Detail::GU_Detail(const GU_Detail* source, const GB_PrimitiveGroup* group)
{
    if (!source)
        return;
    GEO_Detail::operator=(*source);
    if (!group)
        return;
    Primitives chosen;
    for (const int64_t index : *group)
        chosen.push_back(source->primitive(index)->clone());
    replacePrimitives(std::move(chosen), {group->begin(), group->end()});
    dropUnusedPoints();
}

void GU_Detail::convert(const GU_ConvertParms& parms)
{
    const double lod = parms.lod > 0.0f && std::isfinite(parms.lod) ? parms.lod : 1.0;
    Primitives polygons;
    std::vector<int64_t> from;
    for (int64_t i = 0; i < primitiveCount(); ++i) {
        from.push_back(i);
        const auto* curve = dynamic_cast<const GU_PrimCurve*>(primitive(i));
        if (!curve) {
            polygons.push_back(primitive(i)->clone());
            continue;
        }
        const std::vector<Values> points = curve->flattened(*this, 0.1 / lod);
        auto polygon = std::make_unique<GU_PrimPoly>(static_cast<int64_t>(points.size()), !curve->isClosed());
        for (size_t k = 0; k < points.size(); ++k)
            polygon->setVertexPoint(static_cast<int64_t>(k), appendPoint(points[k]));
        polygons.push_back(std::move(polygon));
    }
    replacePrimitives(std::move(polygons), from);
}

void GU_Detail::convex(int mostVertices, int, int)
{
    Primitives pieces;
    std::vector<int64_t> from;
    for (int64_t i = 0; i < primitiveCount(); ++i) {
        const GEO_Primitive& polygon = *primitive(i);
        if (polygon.primitiveType() != GEO_PRIMITIVE_POLYGON || !polygon.isClosed() ||
            polygon.vertexCount() <= 3) {
            pieces.push_back(polygon.clone());
            from.push_back(i);
            continue;
        }
        PolygonCutter cutter(*this, polygon);
        cutter.convex(mostVertices);
        for (auto& piece : cutter.pieces) {
            pieces.push_back(std::move(piece));
            from.push_back(i);
        }
    }
    replacePrimitives(std::move(pieces), from);
}

GU_PrimRBezCurve* GU_Detail::approxCurveGlobal(const UT_Vector4Array& samples, int, int, int closed,
                                               float tolerance, float cornerAngle, int)
{
    std::vector<gu_Place> places;
    for (const UT_Vector4& p : samples) {
        const gu_Place place = {p.x, p.y, p.z};
        const bool isFinite = std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
        if (isFinite && (places.empty() || place != places.back()))
            places.push_back(place);
    }
    while (closed && places.size() > 1 && places.back() == places.front())
        places.pop_back();
    if (places.size() < 2)
        return nullptr;
    if (closed)
        places.push_back(places.front());

    const double within = tolerance > 0.0f ? tolerance : 0.0;
    std::vector<gu_Place> vertices = gu_fitCurve(places, within, cornerAngle, closed != 0);
    if (closed)
        vertices.pop_back();
    GU_PrimRBezCurve* const curve =
        GU_PrimRBezCurve::build(this, static_cast<int64_t>(vertices.size()), 4, closed, 1);
    for (size_t i = 0; i < vertices.size(); ++i) {
        const auto f = [&](size_t k) { return static_cast<float>(vertices[i][k]); };
        setPosition(curve->vertexPoint(static_cast<int64_t>(i)), {f(0), f(1), f(2), 1.0f});
    }
    return curve;
}
