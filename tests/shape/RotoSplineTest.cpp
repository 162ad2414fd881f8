#include <RU/shape/RU_PolyFill.h>
#include <RU/shape/RU_RotoSpline.h>

#include <UT/UT_BilinearSampleQuad2D.h>
#include <gtest/gtest.h>
#include <reference/Distance.h>
#include <reference/Picture.h>
#include <reference/Random.h>

#include <algorithm>
#include <cmath>

namespace {

using Built = std::unique_ptr<GU_Detail>;

struct Place
{
    double x, y;
};

RU_RotoPoint* pointAt(float index, Place p, float feather = 0.0f)
{
    const auto x = static_cast<float>(p.x), y = static_cast<float>(p.y);
    return new RU_RotoPoint(index, x, y, 1.0f, x, y, x, y, feather);
}

RU_RotoSpline polygon(RU_RotoFill fill, const std::vector<Place>& places, float width = 1.0f,
                      RU_RotoType type = RU_ROTO_POLYGON)
{
    RU_RotoSpline spline(type, fill, 20.0f, width);
    for (const Place& p : places)
        spline.addPoint(pointAt(static_cast<float>(spline.entries()), p));
    return spline;
}

RU_RotoSpline disc(double radius)
{
    std::vector<Place> places;
    for (int i = 0; i < 24; ++i)
        places.push_back({radius * std::cos(i * M_PI / 12), radius * std::sin(i * M_PI / 12)});
    return polygon(RU_ROTO_FILLED, places, 1.0f, RU_ROTO_NURBS);
}

Place corner(const GU_Detail& detail, const GEO_Primitive& polygon, int64_t i)
{
    const UT_Vector4& p = detail.position(polygon.vertexPoint(i % polygon.vertexCount()));
    return {p.x, p.y};
}

/// The areas of all polygons.
double areaOf(const GU_Detail& detail)
{
    double area = 0.0;
    for (int64_t i = 0; i < detail.primitiveCount(); ++i) {
        const GEO_Primitive& polygon = *detail.primitive(i);
        double twice = 0.0;
        for (int64_t k = 0; k < polygon.vertexCount(); ++k) {
            const Place a = corner(detail, polygon, k), b = corner(detail, polygon, k + 1);
            twice += a.x * b.y - a.y * b.x;
        }
        area += 0.5 * std::abs(twice);
    }
    return area;
}

/// Whether a convex polygon covers a place.
bool covers(const GU_Detail& detail, Place p)
{
    for (int64_t i = 0; i < detail.primitiveCount(); ++i) {
        const GEO_Primitive& polygon = *detail.primitive(i);
        bool left = true, right = true;
        for (int64_t k = 0; k < polygon.vertexCount(); ++k) {
            const Place a = corner(detail, polygon, k), b = corner(detail, polygon, k + 1);
            const double turn = (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
            left = left && turn >= -1e-5;
            right = right && turn <= 1e-5;
        }
        if (left || right)
            return true;
    }
    return false;
}

/// The largest ramp of the quads of "feather" at a place; -1 where there is none.
float rampAt(GU_Detail& detail, Place p)
{
    float largest = -1.0f;
    for (const int64_t i : *detail.findPrimitiveGroup("feather")) {
        const GEO_Primitive& quad = *detail.primitive(i);
        EXPECT_EQ(quad.vertexCount(), 4);
        float x[4], y[4], u = 0.0f, v = 0.0f;
        for (int64_t k = 0; k < 4; ++k) {
            x[k] = static_cast<float>(corner(detail, quad, k).x);
            y[k] = static_cast<float>(corner(detail, quad, k).y);
        }
        UT_BilinearSampleQuad2D sampler;
        sampler.setVertices(x[0], y[0], x[1], y[1], x[2], y[2], x[3], y[3]);
        if (sampler.sample(static_cast<float>(p.x), static_cast<float>(p.y), u, v) != 0)
            largest = std::max(largest, u);
    }
    return largest;
}

double distance(Place p, const std::vector<Place>& outline)
{
    double least = HUGE_VAL;
    for (size_t i = 0; i < outline.size(); ++i) {
        const Place a = outline[i], b = outline[(i + 1) % outline.size()];
        const double dx = b.x - a.x, dy = b.y - a.y;
        const double t = std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
        least = std::min(least, std::hypot(a.x + t * dx - p.x, a.y + t * dy - p.y));
    }
    return least;
}

} // namespace

TEST(RotoSpline, PointsGoByIndexAndAreSharedByCopies)
{
    const RU_RotoPoint point(1, 2, 3, 4, 5, 6, 7, 8, 9);
    const float stored[] = {2, 3, 4, 5, 7, 6, 8, 1, 9};
    static_assert(sizeof point == sizeof stored);
    EXPECT_TRUE(std::equal(stored, stored + 9, &point.x));

    auto first = std::make_unique<RU_RotoSpline>(RU_ROTO_NURBS, RU_ROTO_FILLED, 1.0f, 1.0f);
    RU_RotoPoint* points[5];
    const float indices[] = {1, 3, 2, 2, 0};
    for (size_t i = 0; i < 5; ++i)
        first->addPoint(points[i] = pointAt(indices[i], {0, 0}));
    const size_t order[] = {4, 0, 2, 3, 1};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(first->getPoint(i), points[order[i]]);
    EXPECT_EQ(first->getPointByIndex(2.000009f), points[2]);
    EXPECT_EQ(first->getPointByIndex(1.999991f), points[2]);
    for (const float other : {2.0001f, 4.0f, NAN})
        EXPECT_EQ(first->getPointByIndex(other), nullptr);
    EXPECT_EQ(first->getPoint(-1), nullptr);
    EXPECT_EQ(first->getPoint(5), nullptr);

    auto copy = std::make_unique<RU_RotoSpline>(*first);
    first->getPoint(0)->x = 7.0f;
    first->addPoint(pointAt(9, {1, 1}));
    EXPECT_EQ(copy->entries(), 5);
    RU_RotoSpline third = polygon(RU_ROTO_OPEN, {{1, 2}});
    third = *copy;
    first.reset();
    EXPECT_EQ(copy->getPoint(0)->x, 7.0f);
    copy.reset();
    EXPECT_EQ(third.getPoint(0), points[4]);
    EXPECT_EQ(third.getFillType(), RU_ROTO_FILLED);
}

TEST(RotoSpline, RawCurvesHaveTheVerticesOfTheirKind)
{
    for (const int type : {0, 1, 2, 7})
        for (const RU_RotoFill fill : {RU_ROTO_OPEN, RU_ROTO_FILLED, RU_ROTO_FILLED_OUTLINE})
            for (int n = 0; n < 6; ++n) {
                SCOPED_TRACE(testing::Message() << type << " " << fill << " " << n);
                RU_RotoSpline spline(static_cast<RU_RotoType>(type), fill, 20.0f, 1.0f);
                for (int i = 0; i < n; ++i)
                    spline.addPoint(new RU_RotoPoint(float(i), float(10 * i), float(i * i), 0.5f,
                                                     float(10 * i - 3), float(-i), float(10 * i + 3), 9.0f,
                                                     float(i)));
                GU_Detail detail;
                spline.buildRawCurve(detail, true);
                const bool open = fill == RU_ROTO_OPEN;
                ASSERT_EQ(detail.primitiveCount(), n < 2 || (n == 2 && type == 0 && !open) ? 0 : 1);
                const Built built(spline.build()), feather(spline.buildFeather(2.0f));
                EXPECT_EQ(built->primitiveCount() > 0, detail.primitiveCount() > 0);
                EXPECT_EQ(feather->primitiveCount() > 0, detail.primitiveCount() > 0);
                EXPECT_EQ(spline.entries(), n);
                if (detail.primitiveCount() == 0)
                    continue;
                const GEO_Primitive& curve = *detail.primitive(0);
                EXPECT_EQ(curve.isClosed(), !open);
                const bool bezier = type % 2 == 1;
                EXPECT_EQ(curve.vertexCount(), !bezier ? n : open ? 3 * n - 2 : 3 * n);
                const int64_t attribute = detail.findAttribute("feather");
                for (int i = 0; bezier && i < curve.vertexCount(); ++i) {
                    const RU_RotoPoint& p = *spline.getPoint((i + 1) / 3 % n);
                    const UT_Vector4 at = detail.position(curve.vertexPoint(i));
                    EXPECT_EQ(at.x, i % 3 == 0 ? p.x : i % 3 == 1 ? p.outHandleX : p.inHandleX) << i;
                    EXPECT_EQ(at.y, i % 3 == 0 ? p.y : i % 3 == 1 ? p.outHandleY : p.inHandleY) << i;
                    EXPECT_EQ(detail.value(attribute, curve.vertexPoint(i)), p.feather);
                    EXPECT_EQ(detail.alpha(curve.vertexPoint(i)), 0.5f);
                }
                if (type != RU_ROTO_NURBS)
                    continue;
                const auto pieces = dynamic_cast<const GU_PrimCurve&>(curve).pieces(detail);
                for (int i = 0; i < n; ++i)
                    EXPECT_LT(reference::distance({10.0 * i, 1.0 * i * i}, pieces), 1e-6 * 50) << i;
            }
}

TEST(RotoSpline, StrokesCoverTheirWidth)
{
    const std::vector<Place> square = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    EXPECT_NEAR(areaOf(*Built(polygon(RU_ROTO_OPEN, {{1, 1}, {4, 5}, {4, 5}, {7, 9}}, 3.0f).build())), 30.0,
                1e-4);
    EXPECT_NEAR(areaOf(*Built(polygon(RU_ROTO_OPEN, {{1, 1}, {5, 1}}, -1.0f).build())), 0.08, 1e-5);
    EXPECT_NEAR(areaOf(*Built(polygon(RU_ROTO_FILLED_OUTLINE, square, 2.0f).build())), 100.0 + 80.0, 1e-4);
    EXPECT_NEAR(areaOf(*Built(polygon(RU_ROTO_FILLED, square, 2.0f).build())), 100.0, 1e-4);
    EXPECT_EQ(areaOf(*Built(polygon(RU_ROTO_OPEN, {{3, 3}, {3, 3}, {3, 3}}, 2.0f).build())), 0.0);

    // Turns of all sizes, wider than edges are long: what lies within the half width beside an edge is covered.
    reference::Random random(61);
    for (int round = 0; round < 60; ++round) {
        std::vector<Place> line;
        for (int i = 0; i < 6; ++i)
            line.push_back({random.between(0.0, 20.0), random.between(0.0, 20.0)});
        if (round % 3 == 0)
            line[3] = line[1];
        const double half = random.between(0.2, 6.0);
        const bool open = round % 2 == 0;
        RU_RotoSpline spline =
            polygon(open ? RU_ROTO_OPEN : RU_ROTO_FILLED_OUTLINE, line, static_cast<float>(2.0 * half));
        const Built built(spline.build());
        for (size_t i = 0; i < (open ? 5u : 6u); ++i) {
            const Place a = line[i], b = line[(i + 1) % 6];
            const double length = std::hypot(b.x - a.x, b.y - a.y);
            for (int k = 0; k < 40; ++k) {
                const double t = random.between(0.0, 1.0), side = random.between(-half, half) / length;
                EXPECT_TRUE(covers(*built, {a.x + t * (b.x - a.x) - side * (b.y - a.y),
                                            a.y + t * (b.y - a.y) + side * (b.x - a.x)}))
                    << round;
            }
        }
    }
    const Built feather(polygon(RU_ROTO_OPEN, {{0, 0}, {20, 0}}, 4.0f).buildFeather(10.0f));
    EXPECT_NEAR(rampAt(*feather, {10, -7}), 0.5, 1e-6);
    EXPECT_NEAR(rampAt(*feather, {25, 1}), 0.5, 1e-6);
}

TEST(RotoSpline, FeatherFallsWithTheDistance)
{
    // Around any polygon, crossing itself or not, the ramp is that of the nearest edge.
    reference::Random random(62);
    for (int shape = 0; shape < 20; ++shape) {
        std::vector<Place> places;
        for (int i = 0; i < 7; ++i)
            places.push_back({random.between(0.0, 30.0), random.between(0.0, 30.0)});
        const Built feather(polygon(RU_ROTO_FILLED, places).buildFeather(8.0f));
        for (int k = 0; k < 300; ++k) {
            const Place p = {random.between(-8.0, 38.0), random.between(-8.0, 38.0)};
            EXPECT_NEAR(std::max(rampAt(*feather, p), 0.0f), std::max(1.0 - distance(p, places) / 8.0, 0.0),
                        0.006);
        }
    }
}

TEST(RotoSpline, SoftEdgesLieWithinShapesBelowZero)
{
    // Around star shapes, in either direction: full where the outline is further than the reach, none outside.
    reference::Random random(63);
    for (int shape = 0; shape < 30; ++shape) {
        const double reach = random.between(1.0, 12.0);
        const bool isUneven = shape % 3 == 0;
        std::vector<Place> places;
        for (int i = 0; i < 9; ++i) {
            const double angle = (shape % 2 == 0 ? i : -i) * M_PI / 4.5, r = random.between(10.0, 30.0);
            places.push_back({r * std::cos(angle), r * std::sin(angle)});
        }
        const RU_RotoSpline spline = polygon(RU_ROTO_FILLED, places);
        for (int i = 0; isUneven && i < 9; ++i)
            spline.getPoint(i)->feather = static_cast<float>(random.between(0.0, 0.9 * reach));
        const Built core(spline.buildCore(static_cast<float>(-reach)));
        const Built feather(spline.buildFeather(static_cast<float>(-reach)));
        const Built whole(spline.build());
        for (int k = 0; k < 400; ++k) {
            const Place p = {random.between(-30.0, 30.0), random.between(-30.0, 30.0)};
            const double depth = distance(p, places) * (covers(*whole, p) ? 1.0 : -1.0);
            const float ramp = rampAt(*feather, p);
            const bool isFull = covers(*core, p);
            EXPECT_TRUE(isFull || depth < 1.01 * reach) << shape << " " << p.x << " " << p.y;
            if (!isUneven && depth < 0.99 * reach) {
                EXPECT_FALSE(isFull) << shape << " " << p.x << " " << p.y;
                EXPECT_LE(ramp, std::max(depth / reach, 0.0) + 0.01) << shape;
            }
            EXPECT_TRUE(depth > -0.01 || (!isFull && ramp < 0.25f)) << shape << " " << p.x << " " << p.y;
        }
    }
    // A way to a hole and back is no edge.
    const RU_RotoSpline ring =
        polygon(RU_ROTO_FILLED,
                {{0, 0}, {20, 0}, {20, 20}, {0, 20}, {0, 0}, {5, 5}, {5, 15}, {15, 15}, {15, 5}, {5, 5}});
    EXPECT_NEAR(areaOf(*Built(ring.buildCore(-2.0f))), 16 * 16 - (14 * 14 - (4 - M_PI) * 2 * 2), 0.2);

    const RU_RotoSpline round = disc(40.0);
    EXPECT_EQ(Built(round.buildCore(-41.0f))->primitiveCount(), 0);
    EXPECT_EQ(Built(round.buildFeather(-41.0f))->primitiveCount(), 0);
    EXPECT_EQ(areaOf(*Built(round.buildCore(5.0f))), areaOf(*Built(round.build())));
}

TEST(RotoSpline, FilledDiscsFallOffMonotonely)
{
    constexpr int size = 128;
    const double middle = 63.3;
    for (const float reach : {0.0f, 0.7f, 3.0f, 10.0f, 40.0f, -0.7f, -3.0f, -19.0f}) {
        const RU_RotoSpline round = disc(20.0);
        const Built core(round.buildCore(reach)), feather(round.buildFeather(reach));
        for (GU_Detail* detail : {core.get(), feather.get()})
            for (int64_t i = 0; i < detail->pointCount(); ++i) {
                const UT_Vector4 p = detail->position(i);
                detail->setPosition(i, {(p.x + float(middle)) / size, (p.y + float(middle)) / size, 0, 1});
            }
        RU_PolyFill fill(RU_POLYFILL_FEATHER, 1);
        fill.initialize(core.get());
        fill.initializeFeather(feather.get());
        fill.setResolution(size, size, size, size);
        reference::Picture picture({PXL_FORMAT_float32, true}, size, size);
        for (int c = 0; c < 4; ++c)
            std::fill_n(picture.data(c), size * size * sizeof(float), 0);
        fill.scanConvert(&picture.list, 0, 0, {1, 1, 1, 1}, 0);

        std::vector<std::pair<double, double>> profile; // distance from the middle, value
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
                profile.push_back({std::hypot(x + 0.5 - middle, y + 0.5 - middle), picture.at(0, x, y)});
        std::sort(profile.begin(), profile.end());
        const double width = std::abs(reach), steepest = 0.75 / std::max(width, 1.0);
        double least = 1.0;
        for (const auto& [r, value] : profile) {
            const double from = r - 20.0 - std::min(reach, 0.0f);
            const double expected = width > 0.0 ? std::clamp(1.0 - from / width, 0.0, 1.0) : from < 0.0;
            ASSERT_NEAR(value, expected, steepest) << reach << " " << from;
            ASSERT_LE(value, least + 0.2 * steepest + 0.005) << reach << " " << from;
            least = std::min(least, value);
        }
    }
}

TEST(RotoSpline, FreehandCurvesPassTheirSamples)
{
    UT_Vector2Array samples, points, in, out;
    for (int i = 0; i < 400; ++i) { // wavy, with a corner
        const double t = i * M_PI / 200, x = 50 * std::abs(std::cos(t)) + 0.3 * std::sin(40 * t);
        samples.append({static_cast<float>(x), static_cast<float>(50 * std::sin(t))});
    }
    for (const bool closed : {false, true})
        for (const bool corners : {false, true}) {
            RU_RotoSpline::buildFreehand(samples, points, in, out, 0.5f, closed, corners);
            ASSERT_GT(points.entries(), 2);
            ASSERT_LT(points.entries(), 40);
            RU_RotoSpline spline(RU_ROTO_BEZIER, closed ? RU_ROTO_FILLED : RU_ROTO_OPEN, 1.0f, 1.0f);
            for (int64_t i = 0; i < points.entries(); ++i)
                spline.addPoint(new RU_RotoPoint(static_cast<float>(i), points(i).x, points(i).y, 1.0f,
                                                 in(i).x, in(i).y, out(i).x, out(i).y, 0.0f));
            GU_Detail detail;
            spline.buildRawCurve(detail, false);
            const auto pieces = dynamic_cast<const GU_PrimCurve&>(*detail.primitive(0)).pieces(detail);
            for (const UT_Vector2 p : samples)
                EXPECT_LE(reference::distance({p.x, p.y}, pieces), 0.5 + 1e-4);
            EXPECT_EQ(in(0) == points(0), !closed);
            EXPECT_EQ(out(points.entries() - 1) == points(points.entries() - 1), !closed);
        }
    samples.setSize(1);
    RU_RotoSpline::buildFreehand(samples, points, in, out, 0.5f, false, true);
    EXPECT_EQ(points.entries() + in.entries() + out.entries(), 0);
}

TEST(RotoSpline, WhatIsNotFiniteBuildsNothing)
{
    for (const float wrong : {NAN, HUGE_VALF, 3e38f})
        for (int type = 0; type < 3; ++type)
            for (const RU_RotoFill fill : {RU_ROTO_OPEN, RU_ROTO_FILLED, RU_ROTO_FILLED_OUTLINE}) {
                RU_RotoSpline spline(static_cast<RU_RotoType>(type), fill, NAN, NAN);
                for (int i = 0; i < 5; ++i)
                    spline.addPoint(pointAt(wrong, {i == 3 ? double(wrong) : i, 1.0 * i * i},
                                            i % 2 == 0 ? wrong : -wrong));
                for (GU_Detail* const detail :
                     {spline.build(), spline.buildFeather(wrong), spline.buildCore(-wrong)}) {
                    const Built built(detail);
                    EXPECT_TRUE(std::isfinite(wrong) || built->primitiveCount() == 0);
                    for (int64_t i = 0; i < built->pointCount(); ++i)
                        EXPECT_TRUE(std::isfinite(0.5f * built->position(i).x + 0.5f * built->position(i).y));
                }
            }
}
