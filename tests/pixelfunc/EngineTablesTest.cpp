#include <RU/pixelfunc/RU_PixelEngine.h>
#include <RU/pixelfunc/ru_ChainRows.h>
#include <reference/Chains.h>
#include <reference/Formats.h>

#include <latch>
#include <set>
#include <thread>

using namespace reference;

TEST(EngineTables, AreBuiltOnceByThreadsThatAskAtOnce)
{
    for (const KnownChain& chain : knownChains()) {
        RU_PixelEngine engine(chain.chain->head());
        std::array<std::set<const void*>, 8> seen;
        std::latch all(std::ssize(seen));
        {
            std::vector<std::jthread> threads;
            for (auto& records : seen)
                threads.emplace_back([&] {
                    all.arrive_and_wait();
                    for (const auto& [black, white] :
                         {std::pair(0u, 255u), {10u, 200u}, {200u, 10u}, {0u, 255u}}) {
                        const ru_lut16* sixteen = engine.buildLUT16(black, white);
                        const ru_lut8* eight = engine.buildLUT8(black, white);
                        EXPECT_TRUE(eight->black == black && eight->white == white);
                        EXPECT_TRUE(sixteen->black == black && sixteen->white == white);
                        records.insert({eight, sixteen, engine.buildLUT16FP()});
                    }
                    const ru_lut16fp* halves = engine.buildLUT16FP();
                    EXPECT_TRUE(halves->ready);
                    EXPECT_EQ(halves->table[0] == halves->table[1], !chain.dependent());
                });
        }
        EXPECT_EQ(seen[0].size(), 7u);
        for (const auto& records : seen)
            EXPECT_EQ(records, seen[0]) << chain.name;
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

TEST(EngineTables, OfLeadingFunctionsChangeNoBit)
{
    const auto expectSame = [](auto code, unsigned int black, unsigned int white) {
        using T = decltype(code);
        constexpr unsigned char format = PXL_FormatOf<T>::code;
        const Chain chain(
            {new RU_GammaFunc(2.2f, 1.7f, 0.6f, 1), new RU_AddFunc(-0.25f), new Swap, new RU_AddFunc(0.5f)});
        RU_PixelEngine engine(chain.head());
        const ru_leadingTables* tables = engine.buildLeadingTables(format, black, white);
        ASSERT_TRUE(tables != nullptr && tables == engine.buildLeadingTables(format, black, white));
        EXPECT_NE(tables, engine.buildLeadingTables(format, black, white + 1));
        const ru_FloatRows<T, false> rows(ru_engineRange<T, false>(black, white));
        for (int64_t i = 0; i < int64_t(1) << (8 * sizeof(T)); ++i) {
            if constexpr (std::is_integral_v<T>)
                code = static_cast<T>(i);
            else
                code = fpreal16::fromBits(static_cast<uint16_t>(i));
            float values[4];
            for (int c = 0; c < 4; ++c)
                rows.load(&code, values + c, 1);
            float* pointers[] = {values, values + 1, values + 2, values + 3};
            chain->processValues(pointers);
            float looked[] = {tables->table[1][i], tables->table[0][i], tables->table[2][i]};
            for (int c = 0; c < 3; ++c)
                ASSERT_TRUE(sameFloat(looked[c] + 0.5f, values[c])) << i << " of component " << c;
        }
    };
    expectSame(static_cast<unsigned char>(0), 16, 235);
    expectSame(static_cast<unsigned short>(0), 4096, 60160);
    expectSame(fpreal16(0.0f), 0, 1);
    const Chain lines({new RU_AddFunc(0.5f), new Swap, new RU_GammaFunc(2)});
    EXPECT_EQ(RU_PixelEngine(lines.head()).buildLeadingTables(PXL_FORMAT_uint8, 0, 255), nullptr);
}
