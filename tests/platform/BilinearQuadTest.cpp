#include <UT/UT_BilinearSampleQuad2D.h>
#include <gtest/gtest.h>
#include <reference/Random.h>

#include <cmath>

namespace {

using Corners = std::array<double, 8>;

struct Place
{
    double x, y;
};

Place at(const Corners& c, double u, double v)
{
    const double w[4] = {(1 - u) * (1 - v), u * (1 - v), u * v, (1 - u) * v};
    Place p = {0.0, 0.0};
    for (size_t i = 0; i < 4; ++i) {
        p.x += w[i] * c[2 * i];
        p.y += w[i] * c[2 * i + 1];
    }
    return p;
}

/// Maps places of the quadrilateral back and there again. `unique`: u and v have to be the same too.
void expectRoundTrip(const Corners& given, reference::Random& random, bool unique)
{
    Corners c;
    std::transform(given.begin(), given.end(), c.begin(), [](double v) { return static_cast<float>(v); });
    UT_BilinearSampleQuad2D quad;
    const auto f = [&c](size_t i) { return static_cast<float>(c[i]); };
    quad.setVertices(f(0), f(1), f(2), f(3), f(4), f(5), f(6), f(7));
    for (int i = 0; i < 40; ++i) {
        const double s = i < 4 ? i % 2 : random.between(0.01, 0.99),
                     t = i < 4 ? i / 2 : random.between(0.01, 0.99);
        const Place p = at(c, s, t);
        float u = -1.0f, v = -1.0f;
        ASSERT_NE(quad.sample(static_cast<float>(p.x), static_cast<float>(p.y), u, v), 0) << s << " " << t;
        ASSERT_TRUE(u >= 0.0f && u <= 1.0f && v >= 0.0f && v <= 1.0f);
        const Place back = at(c, u, v);
        EXPECT_NEAR(back.x, p.x, 3e-6);
        EXPECT_NEAR(back.y, p.y, 3e-6);
        if (unique) {
            EXPECT_NEAR(u, s, 1e-4);
            EXPECT_NEAR(v, t, 1e-4);
        }
    }
}

} // namespace

TEST(BilinearQuad, MapsBackWhatTheSquareMapsTo)
{
    reference::Random random(4);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        // Corners on a circle: convex, either way round.
        Corners c;
        for (size_t i = 0; i < 4; ++i) {
            const double angle =
                (round % 2 ? 0.5 : -0.5) * M_PI * (static_cast<double>(i) + random.between(0.05, 0.85));
            c[2 * i] = std::cos(angle);
            c[2 * i + 1] = std::sin(angle);
        }
        expectRoundTrip(c, random, true);
    }
    expectRoundTrip({0, 0, 1, 0, 1, 1, 0, 1}, random, true);
    expectRoundTrip({0, 0, 4, 0, 3, 1, 1, 1}, random, true); // two parallel edges
    expectRoundTrip({0, 0, 1, 3, 1, 4, 0, 1}, random, true);
    const Corners triangle = {0, 0, 1, 0.2, 0.3, 1}; // each edge collapsed in turn
    for (size_t twice = 0; twice < 4; ++twice) {
        Corners c;
        for (size_t i = 0, from = 0; i < 4; ++i, from += i == twice + 1 ? 0 : 1) {
            c[2 * i] = triangle[2 * (from % 3)];
            c[2 * i + 1] = triangle[2 * (from % 3) + 1];
        }
        expectRoundTrip(c, random, false);
    }
}

TEST(BilinearQuad, KnowsWhatLiesOutside)
{
    UT_BilinearSampleQuad2D quad;
    float u = 7.0f, v = 7.0f;
    EXPECT_EQ(quad.sample(0, 0, u, v), 0);
    quad.setVertices(0, 0, 2, 0, 3, 1, 0, 1);
    for (const Place p :
         {Place{-0.001, 0.5}, {1, -0.001}, {1, 1.001}, {2.6, 0.5}, {NAN, 0.5}, {HUGE_VAL, 0.5}})
        EXPECT_EQ(quad.sample(static_cast<float>(p.x), static_cast<float>(p.y), u, v), 0)
            << p.x << " " << p.y;
    EXPECT_NE(quad.sample(1.0f, -1e-7f, u, v), 0);
    EXPECT_EQ(v, 0.0f);
    for (const float flat : {0.0f, 1.0f}) {
        quad.setVertices(0, 0, flat, 0, 2 * flat, 0, 3 * flat, 0);
        EXPECT_EQ(quad.sample(0.5f * flat, 0, u, v), 0);
    }
    quad.setVertices(0, 0, NAN, 0, 1, 1, 0, 1);
    EXPECT_EQ(quad.sample(0.5f, 0.5f, u, v), 0);
}
