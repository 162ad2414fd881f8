#include <RU/framework/RU_ConvertRow.h>
#include <reference/Formats.h>
#include <reference/Random.h>

using namespace reference;

namespace {

TIL_Plane planeOf(const Format& format)
{
    TIL_Plane plane(format.code, 1);
    plane.blackWhitePoints = !format.full;
    plane.blackPoint = format.range().black; // of no meaning over the full range
    plane.whitePoint = format.range().white;
    return plane;
}

/// All bits of 8 and 16 bits, bits from everywhere in 32, and floats with names.
Bytes rowOf(const Format& format)
{
    const auto size = static_cast<size_t>(format.size());
    Bytes row;
    const auto append = [&](uint64_t bits) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(&bits);
        row.insert(row.end(), bytes, bytes + size);
    };
    const uint64_t count = uint64_t(1) << (8 * size);
    for (uint64_t bits = 0; bits < count; bits += size <= 2 ? 1 : 65521)
        append(bits);
    if (size == 4)
        append(0xFFFFFFFFu);
    for (const float special : specialFloats())
        if (format.code == 3)
            append(std::bit_cast<uint32_t>(special));
    return row;
}

/// How far the value that is stored may be from the exact one, before it is rounded to a code.
double slackOf(const Format& from, const Format& to, double value)
{
    if (to.isInteger() || !from.isInteger())
        return 0.0; // Format knows
    return std::abs(value) * (from.code == 2 ? 1.0 : 3.0) * 0x1p-24;
}

TEST(ConvertRow, EveryFormatToEveryOther)
{
    for (const Format& from : formats()) {
        const Bytes in = rowOf(from);
        const int64_t count = std::ssize(in) / from.size();
        for (const Format& to : formats()) {
            SCOPED_TRACE(std::to_string(from.code) + (from.full ? "" : " points") + " to " +
                         std::to_string(to.code) + (to.full ? "" : " points"));
            Bytes out(static_cast<size_t>((count + 1) * to.size()), 0xA5);
            ASSERT_EQ(RUconvertRow(planeOf(from), in.data(), planeOf(to), out.data(), count), 1);
            ASSERT_EQ(std::count(out.end() - to.size(), out.end(), 0xA5), to.size());
            const bool same = from.code == to.code && (from.full == to.full || !from.isInteger());
            ASSERT_TRUE(!same || std::equal(in.begin(), in.end(), out.begin()));
            for (int64_t i = 0; i < count; ++i) {
                const double value = from.valueOf(from.codeAt(in.data(), i), from.range());
                ASSERT_TRUE(to.holds(to.codeAt(out.data(), i), value, to.range(), slackOf(from, to, value)))
                    << i;
            }
        }
    }
}

TEST(ConvertRow, UnknownFormatsAreRefused)
{
    float value = 0.5f;
    TIL_Plane known(PXL_FORMAT_uint8, 1), unknown(9, 1);
    EXPECT_EQ(RUconvertRow(known, &value, unknown, &value, 1), 0);
    EXPECT_EQ(RUconvertRow(unknown, &value, known, &value, 1), 0);
    EXPECT_EQ(RUconvertRow(unknown, &value, unknown, &value, 1), 0);
    EXPECT_EQ(value, 0.5f);
}

} // namespace
