#include <RU/filter/RU_Feather.h>
#include <reference/Contract.h>

#include <numbers>

using namespace reference;

namespace {

double dropoff(int kind, double x)
{
    switch (kind) {
    case 1:
        return 1.0523 * (1 - std::exp(-3 * x * x));
    case 2:
        return 1.0523 * (1 - std::exp(-3 * x));
    case 3:
        return (std::exp(-3 * (1 - x)) - 1) * 1.0523 + 1;
    case 4:
        return 0.5 - 0.5 * std::cos(std::numbers::pi * x);
    default:
        return x;
    }
}

class Feather : public FilterSubject<RU_Feather>
{
public:
    explicit Feather(const char* of) : FilterSubject(of) { algorithm.initialize(0.0f); }

    /// The border, which a scene already has, stays.
    void choose(Random& random) override
    {
        algorithm.dropoff = static_cast<RU_FeatherDropoff>(random.between(0, 5));
        algorithm.radiusX = static_cast<float>(random.between(4.01, 5.0));
        algorithm.radiusY = random.oneIn(2) ? 5.0f : static_cast<float>(random.between(4.01, 5.0));
        algorithm.initialize(0.0f);
        for (int entry = random.oneIn(3) ? 8 : 0; entry > 0; --entry) {
            const int x = random.between(-6, 6), y = random.between(-6, 6);
            algorithm.setLUTVal(x, y, anyFloat(random));
        }
    }

    Exact result(const Neighbours& at) const override
    {
        double most = at(0, 0);
        const RU_Border size = border();
        for (int dy = -size.bottom; dy <= size.top; ++dy)
            for (int dx = -size.left; dx <= size.right; ++dx) {
                const double weight = algorithm.getLUTVal(dx, dy), there = at(dx, dy);
                if (there > 0 && weight > 0 && there * weight > most)
                    most = there * weight;
            }
        return {most, std::isfinite(most) ? 4 * std::abs(most) : 0.0, {}, true};
    }

    using FilterSubject::algorithm;
};

const Registered<Feather> registered("Feather");

} // namespace

TEST(Feather, TablesFallFromOneToZeroAlikeOnAllSides)
{
    for (int kind = -1; kind < 6; ++kind)
        for (const auto& [rx, ry] : {std::pair(5.0f, 5.0f), {12.3f, 4.0f}, {0.0f, 7.5f}, {1.0f, 0.5f}}) {
            RU_Feather feather;
            feather.radiusX = rx;
            feather.radiusY = ry;
            feather.dropoff = static_cast<RU_FeatherDropoff>(kind);
            EXPECT_EQ(feather.getLUTVal(0, 0), 0.0f) << "before initialize()";
            ASSERT_EQ(feather.initialize(0.0f), 1);
            for (int y = -9; y <= 9; ++y)
                for (int x = -14; x <= 14; ++x) {
                    const double u = x == 0 ? 0.0 : x / double(rx), v = y == 0 ? 0.0 : y / double(ry);
                    const double d = std::hypot(u, v), f = dropoff(kind, 1.0 - d);
                    const double exact = d == 0.0 ? 1.0 : d < 1.0 ? std::clamp(f, 0.0, 1.0) : 0.0;
                    const float weight = feather.getLUTVal(x, y);
                    ASSERT_NEAR(weight, exact, 5e-7) << kind << " at " << x << ", " << y;
                    EXPECT_EQ(weight, feather.getLUTVal(-x, -y));
                    EXPECT_LE(feather.getLUTVal(std::abs(x) + 1, y), weight);
                    EXPECT_LE(feather.getLUTVal(x, std::abs(y) + 1), weight);
                    EXPECT_EQ(weight, feather.evalLUT(static_cast<float>(x), static_cast<float>(-y)));
                    EXPECT_NEAR(
                        feather.evalLUT(static_cast<float>(std::abs(x)) + 0.25f, static_cast<float>(y)),
                        0.75f * weight + 0.25f * feather.getLUTVal(std::abs(x) + 1, y), 1e-6);
                }
        }
}

TEST(Feather, RadiiOfAnyKindAreTaken)
{
    const float nan = std::nanf("");
    for (const auto& [radius, reach] :
         {std::pair(nan, 0), {-3.0f, 0}, {0.0f, 0}, {0.2f, 1}, {2.0f, 2}, {2.1f, 3}, {1e30f, 1024}}) {
        RU_Feather feather;
        feather.radiusX = feather.radiusY = radius;
        const RU_Border border = feather.border();
        EXPECT_TRUE(border.left == reach && border.right == reach && border.top == reach &&
                    border.bottom == reach)
            << radius;
        if (reach > 3)
            continue;
        ASSERT_EQ(feather.initialize(0.0f), 1);
        feather.setLUTVal(1 << 30, 0, 1.0f);
        EXPECT_EQ(feather.evalLUT(nan, 0.0f), 0.0f);
        EXPECT_EQ(feather.evalLUT(1e30f, -1e30f), 0.0f);
    }
}

// Whatever the radius: as wide as what goes at once, with long and flat stretches, and with odd values.
TEST(Feather, WideWindowsGiveTheFormula)
{
    for (const uint64_t seed : {1u, 2u, 3u, 4u, 5u, 6u}) {
        SCOPED_TRACE(seed);
        Random random(seed);
        Feather subject("");
        subject.algorithm.radiusX = static_cast<float>(random.between(0, 80)) / 2;
        subject.algorithm.radiusY = static_cast<float>(random.between(0, 20));
        subject.algorithm.dropoff = static_cast<RU_FeatherDropoff>(seed % 5);
        ASSERT_EQ(subject.algorithm.initialize(0.0f), 1);
        const Format format{static_cast<unsigned char>(seed % 5), seed % 2 == 0};
        Scene scene(format, subject.border(), 300, 5);
        scene.fill(random, 40);
        for (int c = 0; c < 2; ++c)
            for (int64_t i = 0; i < int64_t(scene.around.width()) * scene.around.height(); ++i)
                if (i / 100 % 3 != c)
                    format.put(scene.around.getImageData(c), i,
                               i / 170 % 2 == c ? 0.0 : format.range().white);
        scene.hold();
        ASSERT_EQ(subject.run(scene, nullptr, 1), 1);
        ASSERT_NO_FATAL_FAILURE(expectFormula(subject, scene));
    }
}
