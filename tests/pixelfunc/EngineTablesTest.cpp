#include <RU/pixelfunc/RU_CoshFunc.h>
#include <RU/pixelfunc/RU_PixelEngine.h>
#include <reference/Chains.h>
#include <reference/Formats.h>

#include <set>
#include <thread>

using namespace reference;

namespace {

/// Each entry against the exact result; halves that are no finite numbers give 0.
template <class Tables>
void expectTables(const Tables& tables, const KnownChain& chain, Format format, Range range, Range stored)
{
    const std::set<const void*> distinct(std::begin(tables.table), std::end(tables.table));
    EXPECT_EQ(distinct.size(), chain.dependent() ? 4u : 1u);
    const bool clamps = format.isInteger() && range.black == 0 && range.white == format.white();
    int zeroed = 0;
    for (int c = 0; c < 4; ++c)
        for (int i = 0; i < 1 << (8 * format.size()); ++i) {
            const double x = format.isHalf() ? halfValue(static_cast<uint16_t>(i)) : format.valueOf(i, range);
            const double result = chain.component(x, c);
            const double exact = !std::isfinite(x) ? 0.0 : clamps ? std::clamp(result, 0.0, 1.0) : result;
            const double slack = std::isfinite(x) ? 1e-6 * (1.0 + std::abs(x) + std::abs(exact)) : 0.0;
            ASSERT_TRUE(format.holds(format.codeAt(tables.table[c], i), exact, stored, slack))
                << c << ", " << i;
            zeroed += std::isfinite(x) ? 0 : 1;
        }
    EXPECT_EQ(zeroed, format.isHalf() ? 4 * 2048 : 0);
}

} // namespace

TEST(EngineTables, HoldTheResultOfEveryCode)
{
    int tables = 0;
    for (const KnownChain& chain : knownChains()) {
        if (chain.perPixel())
            continue;
        SCOPED_TRACE(chain.name);
        RU_PixelEngine engine(chain.chain->head());
        constexpr Range full8{0, 255}, full16{0, 65535};
        for (const Range range : {full8, {10, 200}, {9, 9}, {200, 10}}) // over the full range in any case
            expectTables(*engine.buildLUT8(range.black, range.white), chain, {0, true}, full8, full8);
        for (const Range range : {Range{4096, 60160}, {4096, 65535}, {0, 1}, {777, 777}, {60000, 100}})
            expectTables(*engine.buildLUT16(range.black, range.white), chain, {1, false}, range, range);
        // A full table that treats components differently ends at a code of its own.
        expectTables(*engine.buildLUT16(0, 65535), chain, {1, true}, full16,
                     {0, chain.dependent() ? 65355u : 65535u});
        expectTables(*engine.buildLUT16FP(), chain, {4, true}, {}, {});
        ++tables;
    }
    EXPECT_EQ(tables, 3);
}

TEST(EngineTables, AreBuiltOncePerPairOfPoints)
{
    RU_PixelFunction identity;
    RU_PixelEngine engine(&identity);
    std::set<const void*> records;
    for (int time = 0; time < 2; ++time) {
        for (const auto& [black, white] : {std::pair(0u, 255u), {10u, 200u}, {200u, 10u}}) {
            const ru_lut8* eight = engine.buildLUT8(black, white);
            const ru_lut16* sixteen = engine.buildLUT16(black, white);
            EXPECT_TRUE(eight->black == black && eight->white == white);
            EXPECT_TRUE(sixteen->black == black && sixteen->white == white);
            records.insert({eight, sixteen});
        }
        records.insert(engine.buildLUT16FP());
        EXPECT_TRUE(engine.buildLUT16FP()->ready);
    }
    EXPECT_EQ(records.size(), 7u);
}

TEST(EngineTables, ThreadsThatBuildAtOnceShareThem)
{
    for (const KnownChain& chain : knownChains()) {
        RU_PixelEngine engine(chain.chain->head());
        std::array<std::vector<const void*>, 8> seen;
        {
            std::vector<std::jthread> threads;
            for (auto& tables : seen)
                threads.emplace_back([&] {
                    const ru_lut16fp* halves = engine.buildLUT16FP();
                    const ru_lut8 *eight = engine.buildLUT8(0, 255), *between = engine.buildLUT8(10, 200);
                    const ru_lut16* sixteen = engine.buildLUT16(0, 65535);
                    tables = {halves, eight, between, sixteen};
                    EXPECT_TRUE(halves->ready);
                    EXPECT_EQ(halves->table[0][0x7C00].bits(), 0);
                    EXPECT_TRUE(std::equal(eight->table[1], eight->table[1] + 256, between->table[1]));
                });
        }
        for (const auto& tables : seen)
            EXPECT_EQ(tables, seen[0]) << chain.name;
    }
}

// Without a function they are those of the identity.
TEST(EngineTables, AreThereWithoutAFunctionAndBetweenEqualPoints)
{
    RU_PixelEngine none;
    for (int i = 0; i < 65536; ++i) {
        const auto code = static_cast<uint16_t>(i);
        ASSERT_EQ(none.buildLUT16(0, 65535)->table[3][i], i);
        ASSERT_EQ(none.buildLUT16(4096, 60160)->table[1][i], i);
        ASSERT_EQ(none.buildLUT16FP()->table[2][i].bits(), (code & 0x7C00) == 0x7C00 ? 0 : i);
        ASSERT_EQ(none.buildLUT8(10, 200)->table[0][i & 255], i & 255);
    }
    RU_CoshFunc cosh(1);
    RU_PixelEngine engine(&cosh);
    const unsigned short* table = engine.buildLUT16(500, 500)->table[0];
    EXPECT_EQ(std::count(table, table + 65536, 500), 65536);
}
