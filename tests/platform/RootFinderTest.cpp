#include <UT/UT_RootFinder.h>
#include <gtest/gtest.h>
#include <reference/Random.h>

#include <algorithm>
#include <cmath>

using Roots = std::vector<double>;

namespace {

Roots cubic(double a, double b, double c, double d, double low = -0.1, double high = 1.1)
{
    double roots[3];
    const int count = UT_RootFinder::cubic(a, b, c, d, low, high, roots);
    return {roots, roots + count};
}

/// (t - p)(t - q)(s t - r)
Roots ofProduct(double p, double q, double s, double r, double scale)
{
    return cubic(scale * s, -scale * (r + s * (p + q)), scale * (r * (p + q) + s * p * q),
                 -scale * p * q * r);
}

void expectNear(const Roots& got, const Roots& expected, double error)
{
    ASSERT_EQ(got.size(), expected.size());
    for (size_t i = 0; i < got.size(); ++i)
        EXPECT_NEAR(got[i], expected[i], error);
}

} // namespace

TEST(RootFinder, AnswersRootsInTheIntervalAscending)
{
    expectNear(cubic(1, -6, 11, -6, 0, 10), {1, 2, 3}, 1e-14);
    expectNear(cubic(-1, 6, -11, 6, 1.5, 3), {2, 3}, 1e-14);
    expectNear(cubic(1, 0, 1, -2, -10, 10), {1}, 1e-14);
    expectNear(cubic(1, -1.5, 0.5, 0), {0, 0.5, 1}, 1e-15);
    expectNear(cubic(4, -8, 5, -1), {0.5, 1}, 1e-7); // 0.5 twice
    expectNear(cubic(1, -1.5, 0.75, -0.125), {0.5}, 1e-5);
    expectNear(cubic(1, 0, 0, 0), {0}, 0);
    expectNear(cubic(0, 1, -1, 0.25), {0.5}, 1e-7);
    expectNear(cubic(0, 0, 4, -1), {0.25}, 1e-15);
    expectNear(cubic(0, 0, 0, 1), {}, 0);
    expectNear(cubic(0, 0, 0, 0), {}, 0);
    expectNear(cubic(1, 0, 0, 0, 1, -1), {}, 0);
    for (const double bad : {std::nan(""), HUGE_VAL})
        for (int i = 0; i < 4; ++i)
            expectNear(cubic(i == 0 ? bad : 1, i == 1 ? bad : 1, i == 2 ? bad : 1, i == 3 ? bad : 1), {}, 0);
}

// The third root leaves towards infinity while the leading coefficient vanishes, at any size of all of them.
TEST(RootFinder, DoesNotCareHowSmallTheLeadingCoefficientIs)
{
    reference::Random random(5);
    for (int round = 0; round < 2000; ++round) {
        double p = random.between(-0.09, 1.09), q = random.between(-0.09, 1.09);
        if (std::abs(p - q) < 0.01)
            continue;
        const double lead =
            round % 7 == 0 ? 0.0 : std::ldexp(random.between(-1.0, 1.0), random.between(-80, -1));
        const double scale = std::ldexp(1.0, random.between(-300, 300));
        SCOPED_TRACE(::testing::Message() << p << " " << q << " " << lead << " " << scale);
        expectNear(ofProduct(p, q, lead, 2.0, scale), {std::min(p, q), std::max(p, q)}, 1e-12);
    }
}
