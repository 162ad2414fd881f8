#include <all_pixel_functions.h>
#include <reference/Formats.h>
#include <reference/Functions.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <typeinfo>

using namespace reference;

namespace {

using Floats = std::array<float, 4>;
using Flags = std::array<bool, 4>;

constexpr uint64_t seed = 20;

Flags flags(int mask)
{
    return {(mask & 1) != 0, (mask & 2) != 0, (mask & 4) != 0, (mask & 8) != 0};
}

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

/// All of these in turn, with special numbers among them.
std::vector<Floats> pixelsOfAllKinds()
{
    Random random(seed);
    std::vector<Floats> pixels = colours();
    for (size_t i = 0; i < pixels.size(); i += random.oneIn(2) ? 1 : 7)
        for (float& v : pixels[i])
            v = random.oneIn(2) ? anyFloat(random) : v;
    const std::vector<float> values = grid();
    for (size_t i = 0; i + 4 <= values.size(); i += 4)
        pixels.push_back({values[i], values[i + 1], values[i + 2], values[i + 3]});
    std::shuffle(pixels.begin(), pixels.end(), std::mt19937_64(seed));
    return pixels;
}

/// The very bits, and of new NaNs only the one.
bool areRight(const std::vector<float>& got, const std::vector<float>& wanted, const std::vector<float>& in)
{
    const auto bits = [](float v) { return std::bit_cast<uint32_t>(v); };
    bool right = true;
    for (size_t i = 0; i < got.size(); ++i)
        right = right && bits(got[i]) == bits(wanted[i]) &&
                (got[i] == got[i] || bits(got[i]) == 0x7FC00000 || bits(got[i]) == bits(in[i]));
    return right;
}

const auto nameOfFunction = [](const auto& entry) { return entry.param.name + std::to_string(entry.index); };

} // namespace

class Values : public ::testing::TestWithParam<ValueFunction>
{
};
INSTANTIATE_TEST_SUITE_P(, Values, ::testing::ValuesIn(valueFunctions()), nameOfFunction);

class Pixels : public ::testing::TestWithParam<PixelFunction>
{
};
INSTANTIATE_TEST_SUITE_P(, Pixels, ::testing::ValuesIn(pixelFunctions()), nameOfFunction);

class Forms : public ::testing::TestWithParam<Function>
{
};
INSTANTIATE_TEST_SUITE_P(, Forms, ::testing::ValuesIn(allFunctions()), nameOfFunction);

TEST_P(Values, GivesTheResultOfItsFormula)
{
    const ValueFunction& function = GetParam();
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
    EXPECT_EQ(function.object->eachComponentDifferent(), function.perComponent);
}

TEST_P(Pixels, GiveTheResultOfTheirFormula)
{
    const PixelFunction& function = GetParam();
    EXPECT_TRUE(function.object->needAllComponents());
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

// From rows to others, in place, value by value where that is possible; ctest runs this with each instruction set.
TEST_P(Forms, GiveTheSameBitsAtEveryLength)
{
    static const std::vector<Floats> pixels = pixelsOfAllKinds();
    RU_PixelFunction& function = *GetParam().object;
    Random random(seed);
    std::vector<size_t> counts = {511, 512, 513, 1027};
    for (size_t count = 0; count <= 70; ++count)
        counts.push_back(count);
    for (const size_t count : counts)
        for (int time = 0; time < 24; time += function.needAllComponents() ? 1 : 6) {
            const Flags present = flags(time | (time & 16 ? 15 : 0));
            const Flags scope = flags(random.oneIn(2) ? 15 : random.between(0, 15));
            const size_t first = random.bits() % (pixels.size() - count);
            std::vector<float> in[4], wanted[4], rows[4], chain[4];
            float *rowPointers[4], *chainPointers[4];
            for (size_t c = 0; c < 4; ++c) {
                for (size_t i = first; i < first + count; ++i) {
                    in[c].push_back(pixels[i][c]);
                    wanted[c].push_back(vectorForm(function, pixels[i], present, scope)[c]);
                }
                for (auto* row : {&in[c], &wanted[c]})
                    row->insert(row->end(), 32, -7.0f); // nobody writes there
                rows[c] = in[c];
                chain[c].assign(in[c].size(), -7.0f);
                rowPointers[c] = present[c] ? rows[c].data() : nullptr;
                chainPointers[c] = present[c] ? chain[c].data() : nullptr;
                if (!present[c])
                    chain[c] = in[c];
            }
            function.setScope(scope.data());
            RU_PixelFunction head; // each scope takes a chain of its own
            head.setNext(&function);
            head.buildPixelEngine();
            head.buildVectorEngine();
            head.processRows(rowPointers, chainPointers, static_cast<int64_t>(count));
            function.getVectorRowFunction()(&function, rowPointers, rowPointers, static_cast<int64_t>(count),
                                            scope.data());
            for (size_t c = 0; c < 4; ++c) {
                ASSERT_TRUE(areRight(rows[c], wanted[c], in[c]) && areRight(chain[c], wanted[c], in[c]))
                    << "component " << c << ", " << count << " pixels from " << first << ", time " << time
                    << ", seed " << seed;
                const auto component = static_cast<int>(c);
                std::vector<float> row = in[c], single = in[c], alone = in[c];
                function.getRowFunction().run(&function, row.data(), row.data(), static_cast<int64_t>(count),
                                              component);
                for (size_t i = 0; i < count; ++i) {
                    single[i] = function.getPixelFunction()(&function, single[i], component);
                    alone[i] = head.processValue(alone[i], component);
                }
                ASSERT_TRUE(areRight(row, single, in[c]) && areRight(alone, scope[c] ? single : in[c], in[c]))
                    << c;
                ASSERT_TRUE(function.needAllComponents() || !present[c] || alone == wanted[c] ||
                            areRight(alone, wanted[c], in[c]))
                    << c;
            }
            head.setNext(nullptr);
        }
    function.setScope(flags(15).data());
}

// The classes' own headers say what there is.
TEST(FunctionList, HoldsEveryClass)
{
    std::set<std::string> listed, classes;
    for (const Function& function : allFunctions()) {
        const RU_PixelFunction& object = *function.object;
        const std::string name = typeid(object).name();
        listed.insert(name.substr(name.find("RU_")));
    }
    for (const auto& entry : std::filesystem::directory_iterator(KREILUGE_TESTS "/../RU/pixelfunc")) {
        std::ifstream file(entry.path());
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        if (text.find(" : public RU_PixelFunction\n") != text.npos)
            classes.insert(entry.path().stem());
    }
    EXPECT_EQ(listed, classes);
    EXPECT_FALSE(classes.empty());
}

// Where the catalogue's allowance in ulp would let a fault through.
TEST(FunctionCases, MeetTheirExactResults)
{
    RU_LogFunc log(10, false, 0);
    EXPECT_EQ(log.getPixelFunction()(&log, 100.0f, 0), 2.0f);
    RU_PowerFunc square(2);
    EXPECT_EQ(square.getPixelFunction()(&square, -3.0f, 0), -9.0f);
    EXPECT_EQ(RU_GammaFunc::gamma(-0.25f, 0.5f), -0.5f);
}

TEST(FunctionCases, LaterComponentsWinOnlyWhereStrictlyBeyond)
{
    RU_MaxFunc max;
    RU_MinFunc min;
    for (const auto& [first, second] : {std::pair(0.0f, -0.0f), {-0.0f, 0.0f}, {NAN, 1.0f}, {1.0f, NAN}})
        for (RU_PixelFunction* function : std::initializer_list<RU_PixelFunction*>{&max, &min}) {
            const Floats got = vectorForm(*function, {first, second, second, second}, flags(15), flags(15));
            EXPECT_TRUE(sameFloat(got[0], first) && sameFloat(got[1], first)) << first << ", " << second;
        }
}

TEST(FunctionCases, FlatHueCurvesKeepEveryBit)
{
    RU_ColorCurve flat;
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
}
