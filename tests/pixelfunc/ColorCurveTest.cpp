#include <RU/pixelfunc/RU_ColorCurve.h>
#include <RU/pixelfunc/ru_CurveTable.h>
#include <reference/Curves.h>
#include <reference/Formats.h>
#include <reference/Random.h>

using namespace reference;

namespace {

void expectPoints(const RU_ColorCurve& curve, const std::vector<Point>& expected, double error)
{
    ASSERT_EQ(curve.controlPoints().entries(), std::ssize(expected));
    EXPECT_EQ(curve.builtCount(), std::ssize(expected));
    for (size_t i = 0; i < expected.size(); ++i) {
        const UT_Vector2 got = curve.controlPoints()(static_cast<int64_t>(i));
        EXPECT_NEAR(got.x, expected[i].x, error) << i;
        EXPECT_NEAR(got.y, expected[i].y, error) << i;
    }
}

/// Special numbers, all keys and their neighbours, and places between and around them.
std::vector<float> valuesFor(const std::vector<Key>& keys, Random& random)
{
    std::vector<float> values = specialFloats();
    const double low = keys.empty() ? 0 : keys.front().x, high = keys.empty() ? 1 : keys.back().x;
    for (int i = 0; i < 60; ++i)
        values.push_back(static_cast<float>(low + (high - low) * random.between(-0.1, 1.1)));
    for (const Key& key : keys) {
        values.push_back(key.x);
        for (const float way : {HUGE_VALF, -HUGE_VALF})
            values.push_back(std::nextafter(key.x, way));
    }
    return values;
}

} // namespace

TEST(ColorCurve, KeepsKeysSortedAndBuildsAfresh)
{
    RU_ColorCurve curve;
    for (const float x : {0.5f, 0.0f, 1.0f, 0.5f, 0.25f})
        curve.addPoint(x, static_cast<float>(curve.keyCount()), x / 2);
    const float x[] = {0.0f, 0.25f, 0.5f, 0.5f, 1.0f}, y[] = {1, 4, 0, 3, 2};
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(curve.keyX(i) == x[i] && curve.keyY(i) == y[i] && curve.keyWeight(i) == x[i] / 2) << i;

    EXPECT_EQ(curve.evaluate(0.5f), 0.0f) << "nothing was created";
    curve.create(true);
    const RU_ColorCurve copy = curve;
    curve.create(true);
    EXPECT_EQ(curve.controlPoints(), copy.controlPoints());
    EXPECT_EQ(curve.builtCount(), 13);
    curve.addPoint(0.75f, 9, 0);
    EXPECT_EQ(curve.evaluate(0.75f), copy.evaluate(0.75f));
    curve.create(false);
    EXPECT_EQ(curve.evaluate(0.75f), 9.0f);
    EXPECT_NE(copy.evaluate(0.75f), 9.0f);
    curve.reset();
    EXPECT_EQ(curve.keyCount() + curve.controlPoints().entries() + curve.builtCount(), 0);
    EXPECT_EQ(curve.evaluate(0.75f), 0.0f);
    EXPECT_TRUE(curve.preslope() == 0 && curve.postslope() == 0 && !curve.extend() && copy.extend());

    expectPoints(curveOf({}, true), {{0, 0}}, 0);
    const RU_ColorCurve single = curveOf({{2, 3, 0}}, true);
    expectPoints(single, {{2, 3}}, 0);
    float values[] = {2.0f, NAN};
    single.evaluate(values, values, 2);
    EXPECT_TRUE(values[0] == 0.0f && values[1] == 0.0f && single.evaluate(2.0f) == 0.0f);
}

TEST(ColorCurve, HasTheControlPointsWorkedOutByHand)
{
    constexpr double k = 0.33333, m = 6 * 0.166666;
    expectPoints(curveOf({{0, 0, 0}, {1, 1, 0}}, false), {{0, 0}, {k, k}, {1 - k, 1 - k}, {1, 1}}, 3e-7);

    // l1 = 1, l2 = 5, s = 1/6, T = (2/3, 2/3): half of l1 limits the incoming handle, m the outgoing one.
    const double first = k / std::sqrt(26.0), lastX = 6 + 2 * m / 3, lastY = 8 + 2 * m / 3;
    const double last = 5 * k / std::hypot(lastX, lastY);
    const std::vector<Point> kinked = {
        {3, 0}, {3 + 5 * first, -first},    {4 - 1 / 3.0, -1 / 3.0},
        {4, 0}, {4 + 2 * m / 3, 2 * m / 3}, {7 - last * lastX, 4 - last * lastY},
        {7, 4}};
    expectPoints(curveOf({{3, 0, 0}, {4, 0, 0}, {7, 4, 0}}, false), kinked, 5e-7);

    // Weights draw handles to the straight lines: half, all the way, beyond.
    std::vector<Point> drawn = kinked;
    drawn[2] = {4 - 1 / 6.0 - k / 2, -1 / 6.0};
    drawn[4] = {4 + m / 3 + k * 1.5, m / 3 + k * 2};
    drawn[1] = {3 + k, 0};
    drawn[5] = {7 - 2 * 3 * k + last * lastX, 4 - 2 * 4 * k + last * lastY};
    expectPoints(curveOf({{3, 0, 1}, {4, 0, 0.5}, {7, 4, 2}}, false), drawn, 5e-7);

    const UT_Vector2Array startPoints = curveOf({{1, 0, 0}, {1, 2, 0}, {2, 2, 0}}, false).controlPoints();
    EXPECT_EQ(startPoints(1), startPoints(0));
    expectPoints(curveOf({{1, 2, 0}, {1, 2, 0}, {1, 2, 1}}, true), std::vector<Point>(7, {1, 2}), 0);
}

TEST(ColorCurve, IsVerticalOrMonotoneWhereItShouldBe)
{
    for (const float up : {1.0f, -1.0f}) { // vertical ends, straight and without handles
        const RU_ColorCurve vertical = curveOf({{0, 0, 1}, {0, up, 0}, {1, 0, 0}, {1, up, 1}}, true);
        EXPECT_TRUE(vertical.preslope() == up * 1e20f && vertical.postslope() == -up * 1e20f);
        EXPECT_EQ(vertical.evaluate(-2.0f), up * -2e20f);
    }
    const RU_ColorCurve null = curveOf({{0, 5, 0}, {0, 6, 0}}, true);
    EXPECT_TRUE(null.preslope() == 0 && null.postslope() == 0);
    EXPECT_TRUE(null.evaluate(-9.0f) == 5.0f && null.evaluate(0.0f) == 5.0f && null.evaluate(9.0f) == 6.0f);

    const RU_ColorCurve rising = curveOf({{0, 0, 0}, {0.3f, 0.2f, 0}, {0.6f, 0.7f, 0}, {1, 1, 0}}, false);
    float before = 0.0f;
    for (int i = 1; i <= 100000; ++i) {
        const float y = rising.evaluate(static_cast<float>(i) * 1e-5f);
        ASSERT_GE(y, before) << i;
        before = y;
    }
    EXPECT_TRUE(rising.evaluate(0.3f) == 0.2f && rising.evaluate(0.6f) == 0.7f);
    EXPECT_EQ(rising.evaluate(NAN), 0.7f);
}

TEST(ColorCurve, MatchesTheReference)
{
    int values = 0, atFolds = 0;
    for (uint64_t seed = 0; seed < 150; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const std::vector<Key> keys = randomKeys(random);
        const bool extend = random.oneIn(2);
        const RU_ColorCurve curve = curveOf(keys, extend);
        double size = 0;
        for (const Key& key : keys)
            size = std::max<double>({size, std::abs(key.x), std::abs(key.y)});
        expectPoints(curve, controlPoints(keys), 2e-6 * size);
        if (keys.size() < 2)
            continue;
        double most = 0;
        for (const UT_Vector2 point : curve.controlPoints())
            most = std::max(most, std::abs(static_cast<double>(point.y)));
        const Key &first = keys.front(), &last = keys.back();
        for (const float x : valuesFor(keys, random)) {
            const double y = curve.evaluate(x);
            if (x <= first.x || x >= last.x) {
                const Key& end = x <= first.x ? first : last;
                const double slope = x <= first.x ? curve.preslope() : curve.postslope();
                const double line = extend ? (double{x} - end.x) * slope + end.y : end.y; // NaN for 0 * inf
                const double allowed = 1e-6 * (std::abs(line) + std::abs(end.y)) + 1e-44;
                ASSERT_TRUE(std::isnan(line) ? std::isnan(y)
                                             : std::abs(line) > 3e38 || std::abs(y - line) <= allowed)
                    << x << " gives " << y << ", not " << line;
            } else if (++values; std::isfinite(x)) {
                const auto inside = [&](double at) { return curveInside(curve.controlPoints(), at); };
                if (std::abs(y - inside(x)) <= 0x1p-24 * most)
                    continue;
                // Where the curve folds or is vertical, a step aside decides.
                ++atFolds;
                double low = HUGE_VAL, high = -HUGE_VAL;
                for (const double step : {-1e-8, -1e-12, 0.0, 1e-12, 1e-8}) {
                    const double aside = inside(x + step * (double{last.x} - first.x));
                    low = std::min(low, aside);
                    high = std::max(high, aside);
                }
                ASSERT_TRUE(y >= low - 0x1p-24 * most && y <= high + 0x1p-24 * most)
                    << x << " gives " << y << ", not " << low << " to " << high;
            }
        }
    }
    EXPECT_LT(atFolds, values / 1000) << "of " << values;
}

TEST(ColorCurve, RowsGiveTheSameBitsAtEveryLength)
{
    for (uint64_t seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        std::vector<Key> keys = randomKeys(random);
        if (seed % 10 == 1)
            keys.push_back({3e38f, 3e38f, 0}), keys.push_back({3.1e38f, -3e38f, 0});
        if (seed % 10 == 2)
            keys.push_back({HUGE_VALF, 1, 0});
        const RU_ColorCurve curve = curveOf(keys, random.oneIn(2));
        if (curve.builtCount() < 4)
            continue;
        const ru_CurveTable table(curve.controlPoints(), curve.extend(), curve.preslope(), curve.postslope());
        std::vector<float> values = valuesFor(keys, random);
        for (int i = 0; i < 600; ++i)
            values.push_back(static_cast<float>(
                keys.front().x + random.between(0.0, 1.0) * (double{keys.back().x} - keys.front().x)));
        for (size_t length = 0; length <= values.size(); length = length < 70 ? length + 1 : 2 * length) {
            std::vector<float> row = values;
            table.evaluate(row.data(), row.data(), static_cast<int64_t>(length), ru_curveRows());
            for (size_t i = 0; i < values.size(); ++i)
                ASSERT_TRUE(sameFloat(row[i], i < length ? curve.evaluate(values[i]) : values[i]))
                    << values[i];
        }
    }
}
