#include <RU/pixelfunc/RU_PixelEngine.h>
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
