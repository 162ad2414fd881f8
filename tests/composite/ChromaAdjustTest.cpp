#include <RU/composite/RU_ChromaAdjust.h>
#include <reference/Picture.h>

using namespace reference;

namespace {

RU_ChromaAdjust adjusting(const std::vector<float>& matte)
{
    RU_ChromaAdjust chroma;
    chroma.matte = matte.data();
    chroma.backingRed = 0.1f;
    chroma.backingGreen = 0.9f;
    chroma.backingBlue = -0.3f;
    return chroma;
}

} // namespace

class ChromaAdjust : public ::testing::TestWithParam<Format>
{
};
INSTANTIATE_TEST_SUITE_P(, ChromaAdjust, ::testing::ValuesIn(formats()), nameOf);

TEST_P(ChromaAdjust, TakesTheBackingOutWhereTheMatteIsBetweenTheEnds)
{
    const Format& format = GetParam();
    const auto step = [&](double v) { return format.code == 2 ? v : static_cast<float>(v); };
    const float ends[] = {0, -0.0f, -0.5f, 1, 1.5f, HUGE_VALF, -HUGE_VALF, NAN, 1e-6f, 0.99999994f};
    int pictures = 0;
    for (int width = 1; width <= 40; ++width)
        for (const int height : {1, 3}) {
            Random random(static_cast<uint64_t>(++pictures));
            Picture out(format, width < 38 ? width : 1500, height), in(format, 1, 1);
            out.randomize(random);
            std::vector<float> matte;
            for (int i = 0; i < out.list.itemCount; ++i) {
                matte.push_back(random.oneIn(2) ? ends[random.between(0, 9)]
                                                : float(random.between(0.0, 1.0)));
                if (format.isHalf() && matte.back() >= 1.0f) // bits that no conversion keeps
                    out.data(0)[2 * i + 1] = 0x7D;
            }
            out.scatter(random);
            const Bytes before[] = {out.bytes(0), out.bytes(1), out.bytes(2), out.bytes(3)};
            Range range = format.range();
            if (!format.full && random.oneIn(5)) // one without width
                out.list.whitePoint = range.white = range.black;
            out.list.firstRow = 1; // for generators
            out.list.rowStep = 2;
            RU_ChromaAdjust chroma = adjusting(matte);
            const float backing[] = {chroma.backingRed, chroma.backingGreen, chroma.backingBlue};
            ASSERT_EQ(chroma.pixelAdjust(&out.list, &in.list, 0.0f, nullptr, 0, nullptr),
                      1); // in is not looked at
            ASSERT_TRUE(out.guardsIntact());
            for (int c = 0; c < 4; ++c) {
                if (c == 3 || !out.mayWrite(c)) {
                    ASSERT_EQ(out.bytes(c), before[c]);
                    continue;
                }
                const auto size = static_cast<size_t>(format.size());
                for (size_t i = 0; i < matte.size(); ++i) {
                    const void* was = &before[c][i * size];
                    const double m = matte[i], stored = format.codeAt(out.data(c), static_cast<int64_t>(i));
                    if (m >= 1) {
                        ASSERT_EQ(std::memcmp(out.data(c) + i * size, was, size), 0);
                        continue;
                    }
                    const double value = format.valueOf(format.codeAt(was, 0), range);
                    const double taken = step(step(1 - m) * backing[c]);
                    const double slack =
                        format.isInteger() ? (1 + std::abs(value)) * 6 * format.roundOff() : 0.0;
                    ASSERT_TRUE(format.holds(stored, m <= 0 ? 0 : step(value - taken), range, slack))
                        << "component " << c << ", matte " << m << ", seed " << pictures;
                }
            }
        }
    EXPECT_EQ(pictures, 80);
}

TEST_P(ChromaAdjust, DoesNothingWithoutMatteAndStopsWhenTold)
{
    Picture out(GetParam(), 9, 20);
    Random random(1);
    out.randomize(random);
    const Bytes before = out.bytes(0);
    RU_ChromaAdjust none;
    EXPECT_EQ(none.pixelAdjust(&out.list, &out.list, 0.0f, nullptr, 1, nullptr), 0);
    EXPECT_EQ(out.bytes(0), before);

    const std::vector<float> matte(9 * 20, 0.5f);
    RU_ChromaAdjust chroma = adjusting(matte);
    expectStop(
        out, [&](void* token) { return chroma.pixelAdjust(&out.list, &out.list, 0.0f, token, 1, nullptr); });
}
