#include <RE/RE_OpenGL.h>
#include <RU/pixelfunc/RU_GPUPixelEngine.h>
#include <RU/pixelfunc/RU_PixelEngine.h>
#include <reference/Parity.h>
#include <reference/Random.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>

using namespace reference;

namespace {

/// Skipped, and why, where there is no OpenGL.
class GPUParity : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!REfindGPU().found)
            GTEST_SKIP() << REfindGPU().refused.buffer();
        RecordProperty("renderer", REfindGPU().name.buffer());
    }

    /// What the engine prints.
    template <class Engine>
    static std::string run(RU_PixelFunction* chain, Tiles& out, const Tiles& in)
    {
        testing::internal::CaptureStderr();
        Engine engine(chain);
        EXPECT_EQ(engine.pixelAdjust(&out.list, &in.list, 0.0f, nullptr, -1, nullptr), 1);
        return testing::internal::GetCapturedStderr();
    }
};

/// A chain of one function whose text is given.
struct Written : RU_PixelFunction
{
    explicit Written(const char* text) : text_(text) {}
    void getPixelShader(UT_String& body) override { body = text_; }

private:
    const char* text_;
};

/// Up to five functions on any components, perhaps only such as are exact.
std::vector<Link> randomLinks(Random& random, bool exact)
{
    std::vector<size_t> pool;
    for (size_t f = 0; f < allFunctions().size(); ++f)
        if (!exact || threshold(allFunctions()[f]) == 0.0)
            pool.push_back(f);
    std::vector<Link> links;
    for (int length = random.between(2, 5); length > 0; --length) {
        const auto place = static_cast<std::ptrdiff_t>(random.bits() % pool.size());
        Link& link = links.emplace_back(Link{pool.begin()[place]});
        pool.erase(pool.begin() + place);
        const bool isPartial = random.oneIn(2);
        for (bool& scoped : link.scope)
            scoped = !isPartial || random.oneIn(2);
    }
    return links;
}

} // namespace

TEST_F(GPUParity, CopiesKeepEveryCode)
{
    for (unsigned char format = 0; format < 5; ++format)
        for (const auto& [width, height] : {std::pair(1, 1), {3, 1}, {5, 3}, {257, 255}}) {
            Tiles in(format, width, height), out(format, width, height), exact(format, width, height);
            const auto bytes = static_cast<size_t>(PXLbytesPerElement(format));
            for (size_t c = 0; c < 4; ++c)
                for (size_t i = 0; i < in.bytes; i += bytes) {
                    uint32_t code = static_cast<uint32_t>(i / bytes + c * 13);
                    code *= bytes == 4 ? 2654435761u : 1u;
                    if (format == PXL_FORMAT_float32 && std::isnan(std::bit_cast<float>(code)))
                        code = 0x7FC00000u;
                    std::memcpy(in.data<char>(c) + i, &code, bytes);
                    const bool isNaN = format == PXL_FORMAT_half && (code & 0x7FFFu) > 0x7C00u;
                    code |= isNaN ? 0x0200u : 0u;
                    std::memcpy(exact.data<char>(c) + i, &code, bytes);
                }
            RU_PixelFunction unchanged;
            if (format == PXL_FORMAT_uint32) // as far as floats carry them
                run<RU_PixelEngine>(&unchanged, exact, in);
            EXPECT_EQ(run<RU_GPUPixelEngine>(nullptr, out, in), "");
            for (size_t c = 0; c < 4; ++c)
                EXPECT_EQ(std::memcmp(out.data<char>(c), exact.data<char>(c), in.bytes), 0)
                    << "format " << int(format) << ", " << width << " x " << height << ", component " << c;
        }
}

TEST_F(GPUParity, FunctionsAreWithinTheirThresholdsOrDepartByName)
{
    Comparison all;
    const auto check = [&](ParityChain& chain, unsigned char code, size_t components, Values values,
                           size_t seed) {
        const Comparison result = chain.compare({code, true}, components, values, seed);
        EXPECT_EQ(result.failure, "");
        all.add(result);
    };
    std::set<std::string> kinds;
    for (size_t f = 0; f < allFunctions().size(); ++f) {
        ParityChain alone({Link{f}}), second({Link{f == 0}, Link{f}});
        for (const size_t components : componentCounts(f))
            for (const Values values : {Values::unit, Values::wide, Values::large, Values::odd})
                check(alone, PXL_FORMAT_float32, components, values, f);
        if (componentCounts(f).size() == 4)
            check(second, PXL_FORMAT_float32, 3, Values::wide, f); // absent components are not 0 any more
        if (kinds.insert(kindOf(allFunctions()[f])).second)
            for (const unsigned char code :
                 {PXL_FORMAT_uint8, PXL_FORMAT_uint16, PXL_FORMAT_uint32, PXL_FORMAT_half})
                check(alone, code, (f + code) % 4 + 1, f % 2 == 0 ? Values::wide : Values::odd, f);
    }
    EXPECT_GE(kinds.size(), 47u);
    if (REfindGPU().software) {
        EXPECT_EQ(all.departures, departureNames());
    }
}

TEST_F(GPUParity, ChainsAreAsFarApartAsTheirFunctionsMakeThem)
{
    Comparison all;
    for (uint64_t seed = 1; seed <= 60; ++seed) {
        Random random(seed);
        ParityChain chain(randomLinks(random, seed % 2 == 0));
        const auto components = static_cast<size_t>(random.between(1, 4));
        const auto kind = random.oneIn(2) ? Values::wide : static_cast<Values>(random.between(0, 3));
        for (const int format : {3, static_cast<int>(seed / 2 % 3), static_cast<int>(seed / 4 % 2) + 3}) {
            const Comparison result =
                chain.compare({static_cast<unsigned char>(format), true}, components, kind, seed);
            EXPECT_EQ(result.failure, "");
            all.add(result);
        }
    }
    EXPECT_GT(all.compared, all.values * 2 / 5);
}

TEST_F(GPUParity, WhatIsOutOfScopeOrConstantIsTakenAsItIs)
{
    Written nothing("value = VEC4(0.0) / VEC4(0.0);"),
        shadows("FLOAT a = value.r; value.rgb = a; value.a = 2.0;");
    const bool red[] = {true, false, false, false};
    nothing.setScope(red);
    Tiles in(PXL_FORMAT_float32, 5, 3), out(PXL_FORMAT_float32, 5, 3);
    std::fill_n(in.data<float>(1), 15, std::numeric_limits<float>::infinity());
    in.data<float>(2)[0] = 0.5f;
    in.tiles[2].setConstantTile(true);
    out.tiles[1].setConstantTile(true);
    EXPECT_EQ(run<RU_GPUPixelEngine>(&nothing, out, in), "");
    EXPECT_TRUE(std::isnan(out.data<float>(0)[14]));
    EXPECT_EQ(out.data<float>(1)[14], std::numeric_limits<float>::infinity());
    EXPECT_EQ(out.data<float>(2)[14], 0.5f);
    EXPECT_FALSE(out.tiles[1].isConstant());
    EXPECT_EQ(run<RU_GPUPixelEngine>(&shadows, out, in), "");
    EXPECT_EQ(out.data<float>(2)[14] + out.data<float>(3)[14], 2.0f);
}

TEST_F(GPUParity, ErrorsNameTheLine)
{
    Written broken("value = nonsense;");
    Tiles in(PXL_FORMAT_uint8, 5, 3), out(PXL_FORMAT_uint8, 5, 3);
    std::fill_n(out.data<char>(0), 15, 'x');
    const std::string error = run<RU_GPUPixelEngine>(&broken, out, in);
    EXPECT_TRUE(error.starts_with("RU_GPUPixelEngine: ") && error.find("nonsense") != error.npos) << error;
    EXPECT_TRUE(!REfindGPU().software || error.find(":6(") != error.npos) << error;
    EXPECT_EQ(out.data<char>(0)[14], 'x');
}

TEST(ParityTable, NamesEveryFunctionAndDeparture)
{
    std::ifstream file(KREILUGE_TESTS "/../docs/numerics.md");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    std::set<std::string> rows = departureNames();
    for (const Function& function : allFunctions())
        rows.insert(kindOf(function));
    for (const std::string& row : rows)
        EXPECT_NE(text.find("\n| " + row + " |"), text.npos) << row;
}
