#include <RU/pixelfunc/RU_GammaFunc.h>
#include <RU/pixelfunc/RU_LogFunc.h>
#include <RU/pixelfunc/RU_PowerFunc.h>
#include <RU/pixelfunc/ru_Expressions.h>
#include <reference/Formats.h>
#include <reference/Functions.h>
#include <reference/Random.h>

#include <set>

using namespace reference;

namespace {

/// Special numbers, magnitudes of all sizes, and a dense stretch around [0, 1].
std::vector<float> grid()
{
    std::vector<float> values = specialFloats();
    for (int i = -148; i < 128; ++i)
        for (const float m : {1.0f, 1.3f, 1.9f})
            values.insert(values.end(), {std::ldexp(m, i), -std::ldexp(m, i)});
    for (int i = -3000; i <= 6000; ++i)
        values.push_back(static_cast<float>(i) / 2000.0f);
    return values;
}

} // namespace

class Catalogue : public ::testing::TestWithParam<Function>
{
};
INSTANTIATE_TEST_SUITE_P(, Catalogue, ::testing::ValuesIn(functions()), [](const auto& entry) {
    return entry.param.kernel.substr(3) + std::to_string(entry.index);
});

TEST_P(Catalogue, GivesTheResultOfItsFormula)
{
    const Function& function = GetParam();
    const RU_ScalarForm scalar = function.object->getPixelFunction();
    for (int c = 0; c < 4; ++c)
        for (const float v : grid()) {
            const float got = scalar(function.object.get(), v, c);
            const double exact = function.exact(v, c);
            const bool right = function.ulp == 0.0 ? sameFloat(got, static_cast<float>(exact))
                                                   : ulpError(got, exact, function.least) <= function.ulp;
            ASSERT_TRUE(right) << v << " gives " << got << ", exact " << exact << ", off by "
                               << ulpError(got, exact) << " ulp";
        }
    EXPECT_FALSE(function.object->needAllComponents());
    EXPECT_EQ(function.object->eachComponentDifferent(), function.perComponent);
}

TEST_P(Catalogue, AllFormsAndInstructionSetsGiveTheSameBits)
{
    const Function& function = GetParam();
    RU_PixelFunction& object = *function.object;
    object.buildPixelEngine();
    object.buildVectorEngine();
    const std::vector<float> values = grid();
    const auto count = std::ssize(values);
    for (int c = 0; c < 4; ++c) {
        const auto expectScalars = [&](const std::vector<float>& got, const std::string& form) {
            for (size_t i = 0; i < values.size(); ++i)
                ASSERT_TRUE(sameFloat(got[i], object.getPixelFunction()(&object, values[i], c)))
                    << form << " of " << values[i];
        };
        std::vector<float> row = values, chain = values, pixels = values, single = values;
        object.getRowFunction()(&object, row.data(), count, c);
        object.processRow(chain.data(), count, c);
        for (float& v : single)
            v = object.processValue(v, c);
        for (float& v : pixels) {
            float* components[4] = {};
            components[c] = &v;
            object.processValues(components);
        }
        expectScalars(row, "row");
        expectScalars(chain, "processRow");
        expectScalars(single, "processValue");
        expectScalars(pixels, "processValues");
        for (const PXL_InstructionSet set : runnableSets()) {
            std::vector<float> kernel = values;
            function.run(object, set, kernel.data(), count, c);
            expectScalars(kernel, PXLinstructionSetName(set));
        }
    }
}

TEST_P(Catalogue, KernelsStayWithinRowsOfAnyLength)
{
    const std::vector<float> values(70, 0.3f);
    const float expected = GetParam().object->getPixelFunction()(GetParam().object.get(), 0.3f, 3);
    for (const PXL_InstructionSet set : runnableSets())
        for (int64_t count = 0; count < 70; ++count) {
            std::vector<float> row = values;
            GetParam().run(*GetParam().object, set, row.data(), count, 3);
            for (int64_t i = 0; i < 70; ++i)
                ASSERT_TRUE(sameFloat(row[static_cast<size_t>(i)], i < count ? expected : 0.3f)) << i;
        }
}

TEST(CatalogueList, HoldsEveryClass)
{
    std::set<std::string> kernels, listed;
    for (const Function& function : functions())
        kernels.insert(function.kernel);
#define INSERT(EXPRESSION) listed.insert(#EXPRESSION);
    RU_FOR_EACH_EXPRESSION(INSERT)
#undef INSERT
    EXPECT_EQ(kernels.size(), 27u);
    EXPECT_EQ(kernels, listed);
}

// Where the catalogue's allowance in ulp would let a fault through.
TEST(CatalogueCases, MeetTheirExactResults)
{
    RU_LogFunc log(10, false, 0);
    EXPECT_EQ(log.getPixelFunction()(&log, 100.0f, 0), 2.0f);
    RU_PowerFunc square(2);
    EXPECT_EQ(square.getPixelFunction()(&square, -3.0f, 0), -9.0f);
    EXPECT_EQ(RU_GammaFunc::gamma(-0.25f, 0.5f), -0.5f);
}
