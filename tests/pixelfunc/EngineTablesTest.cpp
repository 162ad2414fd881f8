#include <RU/pixelfunc/RU_PixelEngine.h>
#include <RU/pixelfunc/ru_LookUpRows.h>
#include <reference/Chains.h>
#include <reference/Formats.h>
#include <reference/Random.h>

#include <set>
#include <thread>

using namespace reference;

namespace {

double slackOf(double x, double y)
{
    return 1e-6 * (1.0 + std::abs(x) + std::abs(y));
}

template <class Table>
void expectSharing(const Table& lut, bool dependent)
{
    const std::set<const void*> distinct(std::begin(lut.table), std::end(lut.table));
    EXPECT_EQ(distinct.size(), dependent ? 4u : 1u);
}

void expectTable8(const ru_lut8& lut, const KnownChain& chain)
{
    expectSharing(lut, chain.dependent());
    for (int c = 0; c < 4; ++c)
        for (int i = 0; i < 256; ++i) {
            const double exact = chain.component(i / 255.0, c);
            ASSERT_TRUE(isStored(lut.table[c][i], exact, fullRange<uint8_t>, slackOf(1, exact)))
                << c << ", " << i;
        }
}

void expectTable16(const ru_lut16& lut, const KnownChain& chain, Range range)
{
    expectSharing(lut, chain.dependent());
    const bool full = range.black == 0 && range.white == 65535;
    // A full table that treats components differently ends at a code of its own.
    const Range stored = full && chain.dependent() ? Range{0, 65355} : range;
    for (int c = 0; c < 4; ++c)
        for (int i = 0; i < 65536; ++i) {
            const double x = valueOf(static_cast<uint16_t>(i), range);
            const double result = chain.component(x, c);
            const double exact = full ? std::clamp(result, 0.0, 1.0) : result;
            ASSERT_TRUE(isStored(lut.table[c][i], exact, stored, slackOf(x, exact))) << c << ", " << i;
        }
}

void expectTableOfHalves(const ru_lut16fp& lut, const KnownChain& chain)
{
    expectSharing(lut, chain.dependent());
    int zeroed = 0;
    for (int c = 0; c < 4; ++c)
        for (int i = 0; i < 65536; ++i) {
            const double x = halfValue(static_cast<uint16_t>(i));
            if (!std::isfinite(x)) {
                ASSERT_EQ(lut.table[c][i].bits(), 0) << i;
                ++zeroed;
                continue;
            }
            const double exact = chain.component(x, c);
            ASSERT_TRUE(isStored(lut.table[c][i], exact, {}, slackOf(x, exact))) << c << ", " << i;
        }
    EXPECT_EQ(zeroed, 4 * 2048);
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
        for (const Range range : {Range{0, 255}, {10, 200}, {9, 9}, {200, 10}})
            expectTable8(*engine.buildLUT8(range.black, range.white), chain); // the full range in any case
        for (const Range range :
             {Range{0, 65535}, {4096, 60160}, {4096, 65535}, {0, 1}, {777, 777}, {60000, 100}})
            expectTable16(*engine.buildLUT16(range.black, range.white), chain, range);
        expectTableOfHalves(*engine.buildLUT16FP(), chain);
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

TEST(LookUpRows, EveryInstructionSetLooksUpEveryCodeAtEveryLength)
{
    Random random(5);
    std::vector<uint16_t> words(65537), codes(65536);
    std::vector<uint8_t> bytes(256);
    std::generate(words.begin(), words.end(), [&] { return random.pixel<uint16_t>(); });
    std::generate(bytes.begin(), bytes.end(), [&] { return random.pixel<uint8_t>(); });
    for (size_t i = 0; i < codes.size(); ++i)
        codes[i] = static_cast<uint16_t>(i * 40503);

    std::vector<size_t> counts = {65535};
    for (size_t count = 0; count < 140; ++count)
        counts.push_back(count);
    for (const PXL_InstructionSet set : runnableSets())
        for (const size_t count : counts) {
            std::vector<uint16_t> row(codes.end() - static_cast<int64_t>(count) - 1, codes.end()),
                out(count + 1, 7);
            std::vector<uint8_t> small(row.begin(), row.end());
            const std::vector<uint8_t> in = small;
            ru_lookUpRows(set).words(words.data(), row.data(), out.data(), static_cast<int64_t>(count));
            ru_lookUpRows(set).bytes(bytes.data(), small.data(), small.data(), static_cast<int64_t>(count));
            for (size_t i = 0; i < count; ++i) {
                ASSERT_EQ(out[i], words[row[i]]) << i << " of " << count;
                ASSERT_EQ(small[i], bytes[in[i]]) << i << " of " << count << ", in place";
            }
            ASSERT_TRUE(out[count] == 7 && small[count] == in[count]);
        }
}
