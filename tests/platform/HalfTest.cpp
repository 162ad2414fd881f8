#include <reference/Formats.h>

#include <SYS/SYS_Half.h>

using namespace reference;

namespace {

void expectNearestHalf(float v)
{
    const uint16_t bits = SYShalfBits(v);
    const double expected = nearestHalf(v);
    ASSERT_EQ(halfValue(bits), expected) << v;
    ASSERT_EQ((bits & 0x8000) != 0, std::signbit(v)) << v;
    ASSERT_EQ(fpreal16(v).bits(), bits) << v;
}

} // namespace

TEST(Half, EveryPatternHasItsValueAndComesBack)
{
    int nans = 0;
    for (int i = 0; i < 65536; ++i) {
        const auto bits = static_cast<uint16_t>(i);
        const double expected = halfValue(bits);
        const float value = fpreal16::_toFloat[bits];
        ASSERT_TRUE(sameFloat(value, SYShalfValue(bits))) << i;
        ASSERT_TRUE(sameFloat(value, fpreal16::fromBits(bits))) << i;
        ASSERT_EQ(std::signbit(value), (i & 0x8000) != 0) << i;
        if (std::isnan(expected)) {
            ASSERT_TRUE(std::isnan(value)) << i;
            ASSERT_EQ(SYShalfBits(value), i | 0x0200) << "quiet, with its payload";
            ++nans;
        } else {
            ASSERT_EQ(value, expected) << i;
            ASSERT_EQ(SYShalfBits(value), i);
        }
    }
    EXPECT_EQ(nans, 2 * 1023);
}

TEST(Half, RoundsToTheNearestAndTiesToEven)
{
    for (uint16_t bits = 0; bits < 0x7C00; ++bits) {
        const double above = bits == 0x7BFF ? 65536.0 : halfValue(static_cast<uint16_t>(bits + 1));
        const auto tie = static_cast<float>((halfValue(bits) + above) / 2);
        for (const float v : {std::nextafter(tie, 0.0f), tie, std::nextafter(tie, HUGE_VALF)})
            for (const float sign : {1.0f, -1.0f})
                ASSERT_NO_FATAL_FAILURE(expectNearestHalf(v * sign));
    }
}

TEST(Half, SampledFloatsRoundToTheNearest)
{
    for (uint64_t i = 0; i < uint64_t(1) << 32; i += 4099) {
        const auto v = std::bit_cast<float>(static_cast<uint32_t>(i));
        if (std::isnan(v)) {
            const uint32_t expected = ((i >> 16) & 0x8000) | 0x7E00 | ((i >> 13) & 0x3FF);
            ASSERT_EQ(SYShalfBits(v), expected) << i;
        } else {
            ASSERT_NO_FATAL_FAILURE(expectNearestHalf(v));
        }
    }
}
