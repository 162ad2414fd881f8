#include <RU/kernel/ru_Power.h>
#include <RU/kernel/ru_Trigonometry.h>
#include <reference/Formats.h>
#include <reference/Random.h>

using namespace reference;

namespace {

struct Entry
{
    const char* name;
    float (*ours)(float);
    long double (*exact)(long double);
    double bound;

    friend void PrintTo(const Entry& entry, std::ostream* out) { *out << entry.name; }
};

const Entry entries[] = {
    {"log", ru_log, std::log, 0.501},    {"exp", ru_exp, std::exp, ru_mathUlp},
    {"sin", ru_sin, std::sin, 0.501},    {"tan", ru_tan, std::tan, 0.501},
    {"asin", ru_asin, std::asin, 0.505}, {"acos", ru_acos, std::acos, 0.505},
    {"atan", ru_atan, std::atan, 0.511}, {"sinh", ru_sinh, std::sinh, 0.501},
    {"cosh", ru_cosh, std::cosh, 0.501}, {"tanh", ru_tanh, std::tanh, 0.501},
};

/// A stride through all floats, odd so that all exponents and many mantissas occur; up to where exp ends,
/// densely; and the neighbours of numbers where reductions and results change or are hard.
std::vector<float> samples()
{
    std::vector<float> values = specialFloats();
    for (uint64_t i = 0; i < uint64_t(1) << 32; i += 4093)
        values.push_back(std::bit_cast<float>(static_cast<uint32_t>(i)));
    for (int i = -104'000; i <= 104'000; ++i)
        values.push_back(static_cast<float>(i) / 1000.0f);
    std::vector<double> hard = {0.5, 1.0, std::tan(M_PI / 8), std::tan(M_PI / 8 * 3), 0x1p23, 0x1p24,
                                // The nearest that large floats come to a multiple of pi / 2.
                                16367173.0 * 0x1p72};
    for (int k = 1; k < 2000; ++k)
        hard.insert(hard.end(), {k * M_PI_4, k * 2011 * M_PI_2, k % 300 * std::log(2.0) / 2});
    for (const double v : hard)
        for (int32_t i = -40; i <= 40; ++i)
            for (const float sign : {1.0f, -1.0f}) {
                const auto bits = std::bit_cast<int32_t>(static_cast<float>(v));
                values.push_back(std::bit_cast<float>(std::max(bits + i, 0)) * sign);
            }
    return values;
}

} // namespace

class MathFunction : public ::testing::TestWithParam<Entry>
{
};
INSTANTIATE_TEST_SUITE_P(, MathFunction, ::testing::ValuesIn(entries),
                         [](const auto& entry) { return entry.param.name; });

TEST_P(MathFunction, IsWithinItsBoundAndHasTheSpecialCasesOfC)
{
    double worst = 0.0;
    for (const float v : samples()) {
        const double error = ulpError(GetParam().ours(v), GetParam().exact(static_cast<long double>(v)));
        ASSERT_LE(error, GetParam().bound) << GetParam().name << " of " << v;
        worst = std::max(worst, error);
    }
    EXPECT_GT(worst, 0.4999) << "the samples are too easy";
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

TEST(Math, PowersWithOneExponentAreWithinTheirBound)
{
    Random random(12);
    std::vector<float> exponents = {1 / 2.2f, 2.2f, 1 / 2.4f, 2.4f, 1 / 1.8f, 0x1p-20f, 3.0f, -3.0f, -1.0f};
    for (int i = 0; i < 60; ++i)
        exponents.push_back(
            static_cast<float>(std::exp2(random.between(-20.0, 1.58)) * (random.oneIn(2) ? 1 : -1)));
    double worst = 0.0;
    for (const float p : exponents) {
        const ru_Exponent exponent(p);
        ASSERT_GT(exponent.span, 80u << 23) << p << " reaches less than 80 octaves";
        for (uint32_t at = 0; at < exponent.span; at += exponent.span / 30'000 | 1) {
            const auto x = std::bit_cast<float>(exponent.lowest + at);
            const double error = ulpError(ru_powOfMagnitude(x, exponent), std::pow(double{x}, double{p}));
            ASSERT_LE(error, ru_exponentUlp) << x << " to the power of " << p;
            worst = std::max(worst, error);
        }
    }
    EXPECT_GT(worst, 0.8) << "the samples are too easy";
}

// An error below 1 ulp is none where the result is a float, but for powers of two, where the spacing changes.
TEST(Math, PowersWithOneExponentAreExactWhereTheyArePowersOfTwo)
{
    for (int i = -192; i <= 192; ++i) {
        const float p = static_cast<float>(i) / 64.0f;
        const ru_Exponent exponent(p);
        for (int k = -149; k < 128; ++k)
            if (const double e = k * double{p}; e == std::floor(e)) {
                ASSERT_EQ(ru_powOfMagnitude(std::ldexp(1.0f, k), exponent), static_cast<float>(std::exp2(e)))
                    << "2^" << k << " to the power of " << p;
            }
    }
    Random random(13);
    for (int i = 0; i < 300'000; ++i) { // the first exponent would give the float below 1
        const float p = i == 0 ? -0x1.7ad4cap+1f : static_cast<float>(random.between(-3.0, 3.0));
        ASSERT_EQ(ru_powOfMagnitude(1.0f, ru_Exponent(p)), 1.0f) << p;
    }
}
