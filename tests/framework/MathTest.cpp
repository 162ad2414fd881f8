#include <RU/framework/ru_Math.h>
#include <reference/Formats.h>
#include <reference/Random.h>

using namespace reference;

namespace {

/// On a stride through all floats; it is odd, so all exponents and many mantissas occur.
template <class Function, class Exact>
double worstError(Function function, Exact exact)
{
    double worst = 0.0;
    for (uint64_t i = 0; i < uint64_t(1) << 32; i += 509) {
        const auto v = std::bit_cast<float>(static_cast<uint32_t>(i));
        worst = std::max(worst, ulpError(function(v), exact(static_cast<long double>(v))));
    }
    return worst;
}

} // namespace

TEST(Math, LogIsWithinItsBound)
{
    EXPECT_LE(worstError([](float v) { return ru_log(v); }, [](long double v) { return std::log(v); }),
              0.501);
}

TEST(Math, ExpIsWithinItsBound)
{
    EXPECT_LE(worstError([](float v) { return ru_exp(v); }, [](long double v) { return std::exp(v); }),
              ru_mathUlp);
    // Where results are neither 0 nor infinite.
    double worst = 0.0;
    for (int i = -2 * 104'000; i < 2 * 89'000; ++i) {
        const float v = static_cast<float>(i) / 2000.0f;
        worst = std::max(worst, ulpError(ru_exp(v), std::exp(static_cast<long double>(v))));
    }
    EXPECT_LE(worst, ru_mathUlp);
}

TEST(Math, PowIsWithinItsBound)
{
    constexpr uint64_t seed = 11;
    Random random(seed);
    double worst = 0.0;
    int ordinary = 0;
    for (int i = 0; i < 2'000'000; ++i) {
        // Of any magnitude, then such that results stay in range; every fourth exponent is whole.
        const float x = std::bit_cast<float>(static_cast<uint32_t>(random.bits()));
        const double reach = 150.0 / std::max(std::abs(std::log2(std::abs(x))), 1e-3f);
        const double spread = random.between(-1.0, 1.0) * reach;
        const auto y = static_cast<float>(i % 4 == 0 ? std::round(spread) : spread);
        const long double exact = std::pow(static_cast<long double>(x), static_cast<long double>(y));
        const double error = ulpError(ru_pow(x, y), exact);
        ASSERT_LE(error, ru_mathUlp) << x << " to the power of " << y << ", seed " << seed;
        worst = std::max(worst, error);
        ordinary += std::isnormal(static_cast<float>(exact)) ? 1 : 0;
    }
    EXPECT_GT(worst, 0.4999) << "the samples are too easy";
    EXPECT_GT(ordinary, 800'000);
}

TEST(Math, PowHasTheSpecialCasesOfC)
{
    std::vector<float> numbers = specialFloats();
    for (const float odd : {5.0f, 16777215.0f, 33554431.0f, 16777214.0f, 0.5f, 2.5f})
        numbers.insert(numbers.end(), {odd, -odd});
    for (const float x : numbers)
        for (const float y : numbers) {
            const long double exact = std::pow(static_cast<long double>(x), static_cast<long double>(y));
            ASSERT_LE(ulpError(ru_pow(x, y), exact), ru_mathUlp) << x << " to the power of " << y;
        }
}

TEST(Math, LogAndExpHaveTheSpecialCasesOfC)
{
    int numbers = 0;
    for (const float v : specialFloats()) {
        const auto exact = static_cast<long double>(v);
        EXPECT_LE(ulpError(ru_log(v), std::log(exact)), 0.501) << v;
        EXPECT_LE(ulpError(ru_exp(v), std::exp(exact)), ru_mathUlp) << v;
        ++numbers;
    }
    EXPECT_EQ(numbers, 46);
    EXPECT_TRUE(std::isnan(ru_log(-1e-45f)));
}
