#include <GU/GU_Detail.h>
#include <GU/GU_PrimPoly.h>
#include <GU/GU_PrimRBezCurve.h>
#include <gtest/gtest.h>
#include <reference/Random.h>

#include <algorithm>
#include <cmath>

namespace {

using Values = GEO_Detail::Values;

/// The largest distance in x and y between places of a curve and the edges of a polygon.
double distance(const std::vector<GU_PrimCurve::Piece>& pieces, const GEO_Detail& detail,
                const GEO_Primitive& polygon)
{
    double largest = 0.0;
    for (const GU_PrimCurve::Piece& piece : pieces)
        for (int step = 0; step <= 200; ++step) {
            const double t = step / 200.0, s = 1.0 - t;
            const double weights[] = {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
            double x = 0.0, y = 0.0, nearest = HUGE_VAL;
            for (size_t i = 0; i < 4; ++i) {
                x += weights[i] * piece[i][0];
                y += weights[i] * piece[i][1];
            }
            const int64_t count = polygon.vertexCount();
            for (int64_t i = polygon.isClosed() ? 0 : 1; i < count; ++i) {
                const UT_Vector4& a = detail.position(polygon.vertexPoint((i + count - 1) % count));
                const UT_Vector4& b = detail.position(polygon.vertexPoint(i));
                const double dx = b.x - a.x, dy = b.y - a.y, square = dx * dx + dy * dy;
                const double part = square > 0.0 ? ((x - a.x) * dx + (y - a.y) * dy) / square : 0.0;
                const double at = std::clamp(part, 0.0, 1.0);
                nearest = std::min(nearest, std::hypot(a.x + at * dx - x, a.y + at * dy - y));
            }
            largest = std::max(largest, nearest);
        }
    return largest;
}

void appendPolygon(GU_Detail& detail, const std::vector<UT_Vector4>& places, int open = 0)
{
    GU_PrimPoly* const polygon = GU_PrimPoly::build(&detail, static_cast<int64_t>(places.size()), open, 0);
    for (size_t i = 0; i < places.size(); ++i)
        polygon->setVertexPoint(static_cast<int64_t>(i), detail.appendPoint(places[i]));
}

} // namespace

TEST(Geometry, CopiesOwnWhatTheyHold)
{
    GU_Detail detail;
    appendPolygon(detail, {{0, 0, 0, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}});
    const int64_t feather = detail.addFloatAttribute("feather", 4, 0.5f);
    EXPECT_EQ(detail.value(feather, 2), 0.5f);
    detail.addAlphaAttribute();
    appendPolygon(detail, {{5, 0, 0, 1}, {6, 0, 0, 1}, {5, 1, 0, 1}, {4, 0, 0, 1}});
    ASSERT_NE(GU_PrimRBezCurve::build(&detail, 7, 4, 0, 1), nullptr);
    detail.setAlpha(4, 0.25f);
    GB_PrimitiveGroup* const group = detail.addPrimitiveGroup("edge");
    group->append(2);
    group->append(1);

    const GU_Detail all(&detail), some(&detail, group), none(nullptr);
    detail.setPosition(0, {9, 9, 9, 1});
    detail.primitive(0)->setVertexPoint(0, 1);
    EXPECT_EQ(all.position(all.primitive(0)->vertexPoint(0)).x, 0.0f);
    EXPECT_EQ(all.pointCount(), 14);
    EXPECT_EQ(all.primitiveCount(), 3);
    EXPECT_EQ(none.primitiveCount(), 0);

    ASSERT_EQ(some.primitiveCount(), 2);
    EXPECT_EQ(some.pointCount(), 11);
    EXPECT_EQ(some.primitive(0)->primitiveType(), GEO_PRIMITIVE_BEZIER_CURVE);
    EXPECT_EQ(some.primitive(1)->primitiveType(), 1);
    EXPECT_EQ(some.position(some.primitive(1)->vertexPoint(1)).x, 6.0f);
    EXPECT_EQ(some.alpha(some.primitive(1)->vertexPoint(1)), 0.25f);
    const GB_PrimitiveGroup& copied = some.primitiveGroups().front();
    EXPECT_EQ(copied.name(), "edge");
    EXPECT_EQ(std::vector<int64_t>(copied.begin(), copied.end()), (std::vector<int64_t>{0, 1}));
}

TEST(Geometry, MakesPolygonsOfCurves)
{
    EXPECT_EQ(GU_PrimRBezCurve::build(nullptr, 6, 4, 0, 1), nullptr);
    EXPECT_EQ(GU_PrimRBezCurve::build(nullptr, 7, 4, 1, 1), nullptr);

    reference::Random random(6);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        const bool closed = round % 2 == 1;
        GU_Detail detail;
        detail.addAlphaAttribute();
        auto* const curve = GU_PrimRBezCurve::build(&detail, closed ? 9 : 10, 4, closed, 1);
        for (int64_t i = 0; i < curve->vertexCount(); ++i) {
            const auto part = static_cast<float>(i) / 16.0f;
            const UT_Vector4 p = {static_cast<float>(random.between(0.0, 10.0)),
                                  static_cast<float>(random.between(0.0, 10.0)), 0, 1};
            detail.setPosition(curve->vertexPoint(i), p);
            detail.setAlpha(curve->vertexPoint(i), closed ? 0.5f : part);
        }
        const UT_Vector4 first = detail.position(0), last = detail.position(9 - closed);
        const auto pieces = curve->pieces(detail);
        ASSERT_EQ(pieces.size(), 3u);
        for (const float lod : {1.0f, 30.0f, -1.0f}) {
            GU_Detail copy(&detail);
            copy.convert({lod});
            const GEO_Primitive& polygon = *copy.primitive(0);
            EXPECT_EQ(polygon.primitiveType(), GEO_PRIMITIVE_POLYGON);
            EXPECT_EQ(polygon.isClosed(), closed);
            EXPECT_EQ(copy.pointCount(), polygon.vertexCount());
            EXPECT_LT(polygon.vertexCount(), lod > 1.0f ? 700 : 130);
            EXPECT_LE(distance(pieces, copy, polygon), 0.1 / std::abs(lod) + 1e-5);
            EXPECT_EQ(copy.position(polygon.vertexPoint(0)).x, first.x);
            if (!closed) {
                EXPECT_EQ(copy.position(polygon.vertexPoint(polygon.vertexCount() - 1)).y, last.y);
            }
            // Equidistant values follow the parameter, and so rise in even steps within a piece.
            for (int64_t i = 1; i < polygon.vertexCount() && !closed; ++i)
                EXPECT_GT(copy.alpha(polygon.vertexPoint(i)), copy.alpha(polygon.vertexPoint(i - 1)));
        }
    }
    GU_Detail hostile;
    const auto* const curve = GU_PrimRBezCurve::build(&hostile, 4, 4, 0, 1);
    hostile.setPosition(1, {NAN, 0, 0, 1});
    hostile.setPosition(curve->vertexPoint(2), {HUGE_VALF, 3e38f, 0, 1});
    GU_PrimRBezCurve::build(&hostile, 4, 4, 0, 0);
    hostile.convert({1e30f});
    EXPECT_LE(hostile.primitive(0)->vertexCount(), 1025);
    EXPECT_EQ(hostile.primitive(1)->vertexCount(), 0);
}

TEST(Geometry, CutsPolygonsIntoTriangles)
{
    GU_Detail detail;
    detail.addAlphaAttribute();
    appendPolygon(detail, {{0, 0, 0, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}});
    appendPolygon(detail, {{0, 0, 0, 1}, {4, 0, 0, 1}, {4, 4, 0, 1}, {0, 4, 0, 1}});
    appendPolygon(detail, {{0, 0, 0, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}, {5, 5, 0, 1}}, 1);
    appendPolygon(detail, {{0, 0, 1, 1}, {2, 2, 3, 1}, {2, 0, 1, 1}, {0, 2, 3, 1}}); // a bow tie
    const int64_t places = detail.pointCount();
    for (int64_t i = 0; i < places; ++i)
        detail.setAlpha(i, detail.position(i).y / 4.0f);
    detail.addPrimitiveGroup("both")->append(3);
    detail.addPrimitiveGroup("both")->append(0);
    detail.convex(3, 0, 0);

    ASSERT_EQ(detail.primitiveCount(), 8);
    const GB_PrimitiveGroup& group = detail.primitiveGroups().front();
    EXPECT_EQ(std::vector<int64_t>(group.begin(), group.end()), (std::vector<int64_t>{4, 5, 6, 7, 0}));
    EXPECT_EQ(detail.primitive(3)->vertexCount(), 4);
    EXPECT_EQ(detail.pointCount(), places + 4);
    for (const int64_t i : {4, 5, 6, 7})
        for (int64_t k = 0; k < 3; ++k) {
            const int64_t point = detail.primitive(i)->vertexPoint(k);
            EXPECT_FLOAT_EQ(detail.alpha(point), detail.position(point).y / 4.0f);
            EXPECT_FLOAT_EQ(detail.position(point).z, detail.position(point).y + 1.0f);
        }
}
