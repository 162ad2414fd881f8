#include <CL/CL_Track.h>
#include <PXL/PXL_Lookup.h>
#include <RU/pixelfunc/RU_LookupTableFunc.h>
#include <reference/Formats.h>

using namespace reference;

namespace {

constexpr float inf = HUGE_VALF;
constexpr float noNumber = NAN;

float tableAt(const PXL_Lookup& table, float v)
{
    return table.channel(0).evaluate(v);
}

} // namespace

TEST(Lookup, TableGivesItsSamplesAtTheirPlaces)
{
    for (const auto& [first, last] : {std::pair(0.0f, 1.0f), {-0.3f, 1e6f}, {7.0f, 6.9f}})
        for (const int count : {2, 3, 10, 1024, 65536}) {
            std::vector<float> samples;
            for (int i = 0; i < count; ++i)
                samples.push_back(std::sin(static_cast<float>(i)));
            const PXL_Lookup table(first, last, 1, samples);
            ASSERT_EQ(tableAt(table, first), samples.front());
            ASSERT_EQ(tableAt(table, last), samples.back()) << first << " " << last << " " << count;
            ASSERT_EQ(tableAt(table, first < last ? inf : -inf), samples.back());
            ASSERT_EQ(tableAt(table, first < last ? -inf : inf), samples.front());
            ASSERT_EQ(tableAt(table, noNumber), samples.front());
        }
    const PXL_Lookup whole(-3.0f, 12.0f, 1,
                           {5, -inf, 7, noNumber, 9, 10, 11, 12, 13, 14, inf, 16, 17, 18, 19, 20});
    for (int i = 0; i < 16; ++i)
        EXPECT_TRUE(sameFloat(tableAt(whole, static_cast<float>(i - 3)), whole.data()[i])) << i;
}

TEST(Lookup, DegenerateTablesAreDefined)
{
    for (const float v : {-inf, -1.0f, 0.5f, 2.0f, inf, noNumber}) {
        EXPECT_EQ(tableAt(PXL_Lookup(0.5f, 0.5f, 1, {3, 4, 5}), v), 3.0f);
        EXPECT_EQ(tableAt(PXL_Lookup(noNumber, 0.5f, 1, {3, 4}), v), 3.0f);
        EXPECT_EQ(tableAt(PXL_Lookup(-inf, inf, 1, {3, 4}), v), 3.0f);
        EXPECT_EQ(tableAt(PXL_Lookup(0, 1, 1, {3}), v), 3.0f);
        EXPECT_EQ(tableAt(PXL_Lookup(0, 1, 3, {3, 4}), v), 0.0f) << "less than a sample per channel";
        EXPECT_EQ(tableAt(PXL_Lookup(0, 1, 0, {3, 4}), v), 0.0f);
        RU_LookupTableFunc none(nullptr);
        EXPECT_EQ(none.getPixelFunction()(&none, v, 2), 0.0f);
    }
    EXPECT_EQ(PXL_Lookup(0, 1, 0, {}).channels(), 1);
    EXPECT_EQ(PXL_Lookup(0, 1, 2, {1, 2, 3, 4, 5}).samplesPerChannel(), 2) << "the fifth is not used";
}

TEST(Lookup, TracksHoldTheirEndsAndAreLinearBetween)
{
    struct
    {
        CL_Track track;
        std::vector<std::pair<float, float>> values; // time, expected
    } const cases[] = {
        {CL_Track(std::vector<CL_Key>{}), {{noNumber, 0}, {1, 0}}},
        {CL_Track(1, 24, {}), {{noNumber, 0}, {1, 0}}},
        {CL_Track({{2, 7}}), {{noNumber, 7}, {-inf, 7}, {2, 7}, {inf, 7}}},
        // Out of order; times that are not finite do not count; a jump at 4.
        {CL_Track({{4, 1}, {0, 2}, {noNumber, 9}, {4, 8}, {inf, 9}, {6, -8}}),
         {{noNumber, 2}, {-1, 2}, {0, 2}, {1, 1.75f}, {3.5f, 1.125f}, {4, 8}, {5, 0}, {6, -8}, {inf, -8}}},
        {CL_Track(10, 4, {1, 3, -1}),
         {{noNumber, 1}, {9, 1}, {10, 1}, {10.125f, 2}, {10.25f, 3}, {10.5f, -1}, {99, -1}}},
        {CL_Track(10, 0, {1, 3}), {{9, 1}, {11, 1}, {noNumber, 1}}},
        {CL_Track(10, -1, {}), {{9, 0}}},
    };
    for (const auto& [track, values] : cases) {
        for (const auto& [time, expected] : values)
            EXPECT_EQ(track.evaluate(time), expected) << time;
        for (int64_t i = 0; i < track.entries(); ++i) {
            const CL_Key key = track.entry(i);
            EXPECT_TRUE(key.time == 4.0f || track.evaluate(key.time) == key.value) << i;
        }
    }
}
