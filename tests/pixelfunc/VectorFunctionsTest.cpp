#include <RU/pixelfunc/RU_ColorCurve.h>
#include <RU/pixelfunc/RU_HSVConvertFunc.h>
#include <RU/pixelfunc/RU_HueCurveFunc.h>
#include <RU/pixelfunc/RU_HueFunc.h>
#include <RU/pixelfunc/RU_MaxFunc.h>
#include <RU/pixelfunc/RU_MinFunc.h>
#include <RU/pixelfunc/ru_VectorExpressions.h>
#include <reference/Formats.h>
#include <reference/Random.h>
#include <reference/VectorFunctions.h>

#include <set>
#include <typeindex>

using namespace reference;

namespace {

using Floats = std::array<float, 4>;
using Flags = std::array<bool, 4>;

constexpr uint64_t seed = 20;

Flags flags(int mask)
{
    return {(mask & 1) != 0, (mask & 2) != 0, (mask & 4) != 0, (mask & 8) != 0};
}

/// Greys, primaries and every other tie, colours around the range, and hues of many turns.
std::vector<Floats> colours()
{
    Random random(seed);
    std::vector<Floats> all;
    const float steps[] = {-0.5f, -0.0f, 1e-30f, 1e-6f, 0.25f, 0.5f, 1.0f, 2.0f};
    for (const float r : steps)
        for (const float g : steps)
            for (const float b : steps)
                all.push_back({r, g, b, steps[random.between(0, 7)]});
    for (int i = 0; i < 500; ++i) {
        const double low = random.oneIn(2) ? 0.0 : -1.0, high = random.oneIn(2) ? 1.0 : 3.0;
        all.push_back({});
        for (float& v : all.back())
            v = static_cast<float>(random.between(low, high));
    }
    std::vector<float> hues = {1.0000002f, 1e5f, -1e5f, 1e30f, -3e20f, -1e-9f, 0.99999994f};
    for (int sixth = -13; sixth <= 13; ++sixth)
        for (const float at : {static_cast<float>(sixth) / 6, static_cast<float>(sixth) * 0.1666667f})
            hues.insert(hues.end(), {at, std::nextafter(at, 9.0f), std::nextafter(at, -9.0f)});
    for (const float h : hues)
        for (const float s : {-0.5f, 0.0f, 0.3f, 1.0f, 1.5f})
            all.push_back({h, s, 0.7f, 1.0f});
    return all;
}

/// The vector form on a pixel of which some components are there.
Floats vectorForm(RU_PixelFunction& function, Floats pixel, const Flags& present, const Flags& scope)
{
    float* components[4];
    for (size_t c = 0; c < 4; ++c)
        components[c] = present[c] ? &pixel[c] : nullptr;
    function.getVectorFunction()(&function, components, scope.data());
    return pixel;
}

} // namespace

class Vectors : public ::testing::TestWithParam<VectorFunction>
{
};
INSTANTIATE_TEST_SUITE_P(, Vectors, ::testing::ValuesIn(vectorFunctions()),
                         [](const auto& entry) { return entry.param.name; });

TEST_P(Vectors, GiveTheResultOfTheirFormula)
{
    const VectorFunction& function = GetParam();
    EXPECT_TRUE(function.object->needAllComponents());
    EXPECT_FALSE(function.object->eachComponentDifferent());
    for (const Floats& colour : colours()) {
        const auto [low, high] = std::ranges::minmax(colour);
        const double size = 1.0 + std::max(high, -low);
        for (int mask = 0; mask < 16; ++mask)
            for (const int scopeMask : {15, 0, 1, 6, 13}) {
                const Flags present = flags(mask), scope = flags(scopeMask);
                Pixel in;
                for (size_t c = 0; c < 4; ++c)
                    in[c] = present[c] ? colour[c] : NAN;
                const Pixel exact = function.exact(in);
                const Floats got = vectorForm(*function.object, colour, present, scope);
                for (size_t c = 0; c < 4; ++c) {
                    const bool written = present[c] && scope[c];
                    const float wanted = written ? static_cast<float>(exact[c]) : colour[c];
                    const double allowed = written ? function.tolerance * size : 0.0;
                    ASSERT_TRUE(got[c] == wanted || std::abs(got[c] - wanted) <= allowed)
                        << "component " << c << " of " << ::testing::PrintToString(colour) << ", present "
                        << mask << ", scope " << scopeMask << ": " << got[c] << ", exact " << wanted
                        << ", seed " << seed;
                }
            }
    }
}

// ctest runs this with each instruction set.
TEST_P(Vectors, RowsAreThePixelFormAtEveryLength)
{
    RU_PixelFunction& function = *GetParam().object;
    function.buildVectorEngine();
    std::vector<Floats> pixels = colours();
    const std::vector<float> special = specialFloats();
    Random random(seed);
    for (size_t i = 0; i < pixels.size(); i += random.oneIn(2) ? 1 : 7)
        for (float& v : pixels[i])
            v = random.oneIn(2) ? special[random.bits() % special.size()] : v;
    std::shuffle(pixels.begin(), pixels.end(), std::mt19937_64(seed));
    std::vector<size_t> counts = {511, 512, 513, 1027};
    for (size_t count = 0; count <= 70; ++count)
        counts.push_back(count);
    for (const size_t count : counts)
        for (int time = 0; time < 24; ++time) {
            const Flags present = flags(time | (time & 16 ? 15 : 0));
            const Flags scope = flags(random.oneIn(2) ? 15 : random.between(0, 15));
            const size_t first = random.bits() % (pixels.size() - count);
            std::vector<float> wanted[4], rows[4], chain[4];
            float *rowPointers[4], *chainPointers[4];
            for (size_t c = 0; c < 4; ++c) {
                for (size_t i = first; i < first + count; ++i) {
                    rows[c].push_back(pixels[i][c]);
                    wanted[c].push_back(vectorForm(function, pixels[i], present, scope)[c]);
                }
                for (auto* row : {&rows[c], &wanted[c]})
                    row->insert(row->end(), 32, -7.0f); // nobody writes there
                chain[c].assign(rows[c].size(), -7.0f);
                rowPointers[c] = present[c] ? rows[c].data() : nullptr;
                chainPointers[c] = present[c] ? chain[c].data() : nullptr;
                if (!present[c])
                    chain[c] = rows[c];
            }
            // From rows to others, then in place.
            function.setScope(scope.data());
            function.processRows(rowPointers, chainPointers, static_cast<int64_t>(count));
            function.getVectorRowFunction()(&function, rowPointers, rowPointers, static_cast<int64_t>(count),
                                            scope.data());
            for (size_t c = 0; c < 4; ++c)
                ASSERT_TRUE(std::ranges::equal(rows[c], wanted[c], sameFloat) &&
                            std::ranges::equal(chain[c], wanted[c], sameFloat))
                    << "component " << c << ", " << count << " pixels from " << first << ", time " << time
                    << ", seed " << seed;
        }
    function.setScope(flags(15).data());
}

TEST(VectorList, HoldsEveryClass)
{
    std::set<std::type_index> classes;
    for (const VectorFunction& function : vectorFunctions()) {
        const RU_PixelFunction& object = *function.object;
        classes.insert(typeid(object));
    }
    EXPECT_EQ(classes.size(), 14u);
    EXPECT_EQ(vectorFunctions().size(), 33u);
}

TEST(VectorCases, HueOfPureRedsIsOneTurn)
{
    RU_HueFunc hue;
    for (const Floats& red : {Floats{1, 0, 0, 1}, {0.25f, 0.125f, 0.125f, 1}, {2, -1, -1, 1}})
        EXPECT_EQ(vectorForm(hue, red, flags(15), flags(15))[0], 1.0000002f);
    EXPECT_EQ(vectorForm(hue, {0, 1, 0, 1}, flags(15), flags(15))[1], 2 * 0.1666667f);
    EXPECT_EQ(vectorForm(hue, {0.5f, 0.5f, 0.5f, 1}, flags(15), flags(15))[2], 0.0f);
}

TEST(VectorCases, ColoursComeBackFromHSV)
{
    RU_HSVConvertFunc there(RU_RGB_TO_HSV, 0, nullptr, nullptr, false);
    RU_HSVConvertFunc back(RU_HSV_TO_RGB, 0, nullptr, nullptr, false);
    for (int i = 0; i < 24 * 24 * 24; ++i) {
        const Floats in = {float(i % 24) / 23, float(i / 24 % 24) / 23, float(i / 576) / 23, 0.5f};
        const Floats hsv = vectorForm(there, in, flags(15), flags(15));
        const Floats out = vectorForm(back, hsv, flags(15), flags(15));
        for (size_t c = 0; c < 4; ++c)
            ASSERT_NEAR(out[c], in[c], 16 * 0x1p-23) << c << " of " << ::testing::PrintToString(in);
    }
}

TEST(VectorCases, LaterComponentsWinOnlyWhereStrictlyBeyond)
{
    RU_MaxFunc max;
    RU_MinFunc min;
    for (const auto& [first, second] : {std::pair(0.0f, -0.0f), {-0.0f, 0.0f}, {NAN, 1.0f}, {1.0f, NAN}})
        for (RU_PixelFunction* function : std::initializer_list<RU_PixelFunction*>{&max, &min}) {
            const Floats got = vectorForm(*function, {first, second, second, second}, flags(15), flags(15));
            EXPECT_TRUE(sameFloat(got[0], first) && sameFloat(got[1], first)) << first << ", " << second;
        }
}

// Those whose formula leaves some tolerance.
TEST(VectorCases, EveryInstructionSetGivesTheSameBits)
{
    Random random(seed);
    std::vector<Floats> pixels = colours();
    const std::vector<float> special = specialFloats();
    for (size_t i = 0; i < 20 * special.size(); ++i)
        pixels[i][i % 3] = special[i / 20];
    std::vector<float> tables[3];
    for (int i = 0; i <= 3 * ru_HueCurve::steps + 2; ++i)
        tables[i % 3].push_back(static_cast<float>(random.between(-0.5, 1.5)));
    const auto expectSame = [&]<class Expression>(const Expression& expression) {
        std::vector<float> wanted[4];
        for (const PXL_InstructionSet set : runnableSets()) {
            std::vector<float> rows[4];
            float* pointers[4];
            for (size_t c = 0; c < 4; ++c) {
                for (const Floats& pixel : pixels)
                    rows[c].push_back(pixel[c]);
                pointers[c] = rows[c].data();
            }
            const ru_PixelKernel<Expression>& kernel = ru_vectorRows(set);
            kernel.run(expression, pointers, pointers, std::ssize(pixels));
            for (size_t c = 0; c < 4; ++c) {
                if (set == PXL_InstructionSet::baseline)
                    wanted[c] = rows[c];
                EXPECT_TRUE(std::ranges::equal(rows[c], wanted[c], sameFloat))
                    << PXLinstructionSetName(set) << ", component " << c;
            }
        }
    };
    expectSame(ru_HueCurve{{}, tables[0].data(), tables[1].data(), tables[2].data()});
    expectSame(ru_Replace{{}, 0.3f, 0.6f, 0.7f, 0.1f, 0.9f, 1.25f, 0.8f, 0.9f, 1.3f, -0.1f, 0.7f, 0.2f});
}

TEST(VectorCases, HueCurvesKeepWhatTheyShould)
{
    RU_ColorCurve flat, red;
    for (const float x : {0.1f, 0.6f})
        flat.addPoint(x, 0.5f, 0);
    RU_HueCurveFunc none(&flat, &flat, &flat);
    for (const Floats& colour : colours())
        for (const float size : {1.0f, -1.0f, 1e37f, 1e-37f}) {
            Floats in = colour;
            for (float& v : in)
                v *= std::abs(v) < 9.0f ? size : 1.0f;
            const Floats out = vectorForm(none, in, flags(15), flags(15));
            ASSERT_TRUE(std::ranges::equal(out, in, sameFloat)) << ::testing::PrintToString(in);
        }

    red.addPoint(0, 1, 0); // doubles the value of reds, of greyish ones less and less
    red.addPoint(0.5f, 0.5f, 0);
    RU_HueCurveFunc brighter(nullptr, nullptr, &red);
    EXPECT_EQ(vectorForm(brighter, {0.5f, 0, 0, 1}, flags(15), flags(15))[0], 1.0f);
    EXPECT_EQ(vectorForm(brighter, {0.5f, 0.5f, 0.5f, 1}, flags(15), flags(15))[0], 0.5f);
    for (const float c : vectorForm(brighter, {0.5001f, 0.5f, 0.5f, 0.5f}, flags(15), flags(15)))
        EXPECT_NEAR(c, 0.5f, 3e-4f);
}
