#include <GU/GU_Detail.h>
#include <GU/GU_PrimNURBCurve.h>
#include <GU/GU_PrimRBezCurve.h>
#include <gtest/gtest.h>
#include <reference/Distance.h>
#include <reference/Random.h>

#include <algorithm>
#include <cmath>

namespace {

using Values = GEO_Detail::Values;
using Piece = GU_PrimCurve::Piece;

using reference::coordinates;
using reference::distance;

GEO_PointArray appendPoints(GU_Detail& detail, int64_t count, reference::Random& random)
{
    GEO_PointArray points(detail);
    for (int64_t i = 0; i < count; ++i) {
        // Steps from tiny to large, now and then none at all.
        const double size = random.oneIn(9) ? 0.0 : std::pow(10.0, random.between(-2.0, 1.0));
        const UT_Vector4 before = i > 0 ? detail.position(points(i - 1)) : UT_Vector4{0, 0, 0, 1};
        points.append(detail.appendPoint(
            UT_Vector4{before.x + static_cast<float>(size * random.between(-0.2, 1.0)),
                       before.y + static_cast<float>(size * random.between(-1.0, 1.0)), 0, 1}));
        detail.setAlpha(points(i), static_cast<float>(random.between(0.0, 1.0)));
    }
    return points;
}

/// How a curve fits samples: at most `pieces` pieces, each sample within the tolerance.
void expectFit(const UT_Vector4Array& samples, bool closed, float tolerance, float cornerAngle, size_t pieces)
{
    GU_Detail detail;
    const GU_PrimRBezCurve* const curve =
        detail.approxCurveGlobal(samples, 4, 4, closed, tolerance, cornerAngle, 1);
    ASSERT_NE(curve, nullptr);
    EXPECT_EQ(curve->isClosed(), closed);
    EXPECT_EQ(curve->vertexCount() % 3, closed ? 0 : 1);
    const std::vector<Piece> fitted = curve->pieces(detail);
    EXPECT_LE(fitted.size(), pieces);
    for (int64_t i = 0; i < samples.entries();
         i += 1 + samples.entries() * static_cast<int64_t>(fitted.size()) / 10000)
        ASSERT_LE(distance({samples(i).x, samples(i).y}, fitted), tolerance * 1.0001 + 1e-6) << i;
    for (size_t i = closed ? 0 : 1; i < fitted.size() && cornerAngle == 0.0f; ++i) {
        const Piece &a = fitted[(i + fitted.size() - 1) % fitted.size()], &b = fitted[i];
        const double ax = a[3][0] - a[2][0], ay = a[3][1] - a[2][1], bx = b[1][0] - b[0][0],
                     by = b[1][1] - b[0][1];
        EXPECT_GE(ax * bx + ay * by, 0.999 * std::hypot(ax, ay) * std::hypot(bx, by) - 1e-9) << i;
    }
}

} // namespace

TEST(GeometryCurve, SplinesPassThroughTheirPoints)
{
    reference::Random random(7);
    for (int round = 0; round < 120; ++round) {
        SCOPED_TRACE(round);
        const bool closed = round % 2 == 1;
        const int64_t count = 2 + round / 4;
        GU_Detail detail;
        detail.addAlphaAttribute();
        const GEO_PointArray points = appendPoints(detail, count, random);
        auto* const curve = GU_PrimNURBCurve::build(&detail, count, 4, closed, 1, 1);
        ASSERT_TRUE(curve->interpGlobal(points, 4, closed, round % 4 < 2 ? 1 : 0, 1, nullptr));
        EXPECT_EQ(curve->order(), std::min<int64_t>(4, closed && count == 3 ? 4 : count));

        const std::vector<Piece> pieces = curve->pieces(detail);
        double size = 1.0;
        for (int64_t i = 0; i < curve->vertexCount(); ++i)
            for (const double v : detail.pointValues(curve->vertexPoint(i)))
                size = std::max(size, std::abs(v));
        for (int64_t i = 0; i < count; ++i)
            EXPECT_LT(distance(detail.pointValues(points(i)), pieces), 1e-6 * size) << i;

        // Evenly spaced, neighbouring pieces share their first and second derivatives.
        for (size_t i = closed ? 0 : 1; i < pieces.size() && count > 3; ++i) {
            const Piece &b = pieces[i], &a = pieces[(i + pieces.size() - 1) % pieces.size()];
            for (const size_t k : coordinates) {
                EXPECT_NEAR(a[3][k], b[0][k], 1e-6 * size);
                if (round % 4 >= 2 && closed) {
                    EXPECT_NEAR(a[3][k] - a[2][k], b[1][k] - b[0][k], 1e-6 * size);
                    EXPECT_NEAR(a[3][k] - 2 * a[2][k] + a[1][k], b[2][k] - 2 * b[1][k] + b[0][k],
                                1e-6 * size);
                }
            }
        }
        detail.convert({20.0f});
        float low = 1.0f, high = 0.0f;
        for (int64_t i = 0; i < count; ++i) {
            low = std::min(low, detail.alpha(points(i)));
            high = std::max(high, detail.alpha(points(i)));
        }
        for (int64_t i = 0; i < detail.primitive(0)->vertexCount(); ++i) {
            const float alpha = detail.alpha(detail.primitive(0)->vertexPoint(i));
            EXPECT_TRUE(alpha >= low - 1e-6f && alpha <= high + 1e-6f);
        }
        EXPECT_EQ(detail.primitive(0)->isClosed(), closed);
        for (int64_t i = 0; i < count; ++i) {
            const UT_Vector4& p = detail.position(points(i));
            if (!closed && (i == 0 || i == count - 1)) {
                const int64_t end = i == 0 ? 0 : detail.primitive(0)->vertexCount() - 1;
                EXPECT_EQ(detail.position(detail.primitive(0)->vertexPoint(end)).x, p.x);
            }
        }
    }
}

TEST(GeometryCurve, SplinesTakeTheParametersGivenAndRefuseWhatTheyCannotPass)
{
    GU_Detail detail;
    detail.addAlphaAttribute();
    GEO_PointArray points(detail);
    for (const float y : {0.0f, 1.0f, 0.0f, 0.0f})
        points.append(detail.appendPoint(UT_Vector4{static_cast<float>(points.entries()), y, 0, 1}));
    auto* const curve = GU_PrimNURBCurve::build(&detail, 4, 4, 0, 1, 0);
    UT_FloatArray params;
    for (const float t : {0.0f, 1.0f, 2.0f, 4.0f})
        params.append(t);
    ASSERT_TRUE(curve->interpGlobal(points, 4, 0, 1, 1, &params));
    const Piece piece = curve->pieces(detail).at(0);
    EXPECT_NEAR((27 * piece[0][1] + 27 * piece[1][1] + 9 * piece[2][1] + piece[3][1]) / 64, 1.0,
                1e-6); // at 1 of 4

    const int64_t before = detail.pointCount();
    points.append(detail.appendPoint(UT_Vector4{NAN, 0, 0, 1}));
    EXPECT_FALSE(curve->interpGlobal(points, 4, 0));
    EXPECT_FALSE(curve->interpGlobal(GEO_PointArray(detail), 4, 1));
    EXPECT_EQ(curve->vertexCount(), 4);
    EXPECT_EQ(detail.pointCount(), before + 1);
    EXPECT_EQ(GU_PrimNURBCurve::build(&detail, 1, 4, 0, 1, 1), nullptr);
    GU_PrimNURBCurve::build(&detail, 50, 4, 1, 1, 1); // all at one place
    detail.convert({});
    EXPECT_EQ(detail.primitive(1)->vertexCount(), 50);
}

TEST(GeometryCurve, FitsStrokesWithinTheTolerance)
{
    reference::Random random(8);
    UT_Vector4Array circle, stroke, noisy, square, zigzag, line;
    for (int i = 0; i < 2000; ++i) {
        const double t = i / 2000.0, noise = random.between(-0.01, 0.01);
        const auto place = [](double x, double y) {
            return UT_Vector4{static_cast<float>(x), static_cast<float>(y), 0, 1};
        };
        circle.append(place(std::cos(2 * M_PI * t), std::sin(2 * M_PI * t)));
        stroke.append(place(3 * t, std::sin(9 * t) + 0.3 * std::cos(31 * t)));
        noisy.append(place(3 * t + noise, std::sin(6 * t) + random.between(-0.01, 0.01)));
        const double side = 4 * t - std::floor(4 * t), along[] = {side, 1, 1 - side, 0};
        const auto k = static_cast<size_t>(4 * t);
        square.append(place(along[k], along[(k + 3) % 4]));
        if (i % 40 == 0)
            zigzag.append(place(t, i % 80 == 0 ? 0 : 1));
        line.append(place(t, 2 * t));
    }
    expectFit(circle, true, 1e-3f, 0, 8);
    expectFit(circle, false, 1e-5f, 0, 16);
    expectFit(stroke, false, 1e-3f, 0, 40);
    expectFit(noisy, false, 0.03f, 0, 40);
    expectFit(noisy, false, 0.001f, 0, 2000);
    expectFit(square, true, 1e-3f, 0, 40);
    expectFit(square, true, 1e-3f, 1, 4);
    expectFit(square, false, 1e-3f, 1, 4);
    expectFit(zigzag, false, 1e-4f, 0, 49);
    expectFit(zigzag, true, 1e-4f, 1, 50);
    expectFit(line, false, 1e-4f, 1, 1);
    expectFit(line, true, 1e-4f, 0, 20);
    expectFit(line, false, 0.0f, 0, 2000);

    GU_Detail detail;
    UT_Vector4Array few;
    for (const UT_Vector4& p : {UT_Vector4{1, 1, 0, 1}, {1, 1, 0, 1}, {NAN, 2, 0, 1}, {1, 1, 0, 1}}) {
        few.append(p);
        EXPECT_EQ(detail.approxCurveGlobal(few, 4, 4, 0, 0.1f, 0, 1), nullptr);
        EXPECT_EQ(detail.approxCurveGlobal(few, 4, 4, 1, NAN, 1, 1), nullptr);
    }
    EXPECT_EQ(detail.pointCount() + detail.primitiveCount(), 0);
    few.append({3e38f, -3e38f, 0, 1});
    for (const int closed : {0, 1})
        for (const float tolerance : {-1.0f, 0.1f, HUGE_VALF})
            EXPECT_NE(detail.approxCurveGlobal(few, 4, 4, closed, tolerance, HUGE_VALF, 1), nullptr);
}
