#include <RU/filter/RU_EdgeDetect.h>
#include <RU/filter/ru_EdgeDetectRows.h>
#include <reference/Picture.h>

using namespace reference;

namespace {

struct Setting
{
    int sobelWeights;
    float edgeGain;
    float cornerWeight;
};

constexpr Setting settings[] = {{1, 1, 1},    {0, 1, 1},    {7, 1, 1},      {1, 2, 1}, {0, 2, 1},
                                {1, 1, 0.5f}, {0, 0.3f, 2}, {1, 1, 1.001f}, {1, 0, 1}, {1, -2, 1},
                                {1, 1, 0},    {0, 3, -1},   {1, -1, -0.5f}};

RU_EdgeDetect algorithmOf(const Setting& setting)
{
    RU_EdgeDetect edge;
    edge.sobelWeights = setting.sobelWeights;
    edge.edgeGain = setting.edgeGain;
    edge.cornerWeight = setting.cornerWeight;
    return edge;
}

/// The edge strength of a neighbourhood, and a bound of what its terms add up to.
struct Strength
{
    double value;
    double terms;
};

Strength strengthOf(const double (&n)[3][3], const Setting& setting)
{
    const double w = setting.sobelWeights != 0 ? 2.0 : 1.0;
    const double a = setting.edgeGain, b = setting.cornerWeight;
    const bool plain = a == 1.0 && b == 1.0;
    const double middle = plain ? w : w + 1.0 - 2.0 * b;
    double gx = 0.0, gy = 0.0, largest = 0.0;
    for (int i = 0; i < 3; ++i) {
        const double weight = a * (i == 1 ? middle : b);
        gx += weight * (n[i][2] - n[i][0]);
        gy += weight * (n[2][i] - n[0][i]);
        for (const double v : n[i])
            largest = std::max(largest, std::abs(v));
    }
    const double norm = a > 0 && b > 0 ? 1.0 / std::pow(a * b, 0.25) : 1.0;
    const double weights = std::abs(a) * norm * (4 * std::abs(b) + 2 * (w + 1 + 2 * std::abs(b)));
    return {(std::abs(gx) + std::abs(gy)) * norm, 2 * weights * largest};
}

/// Any pixels, or with `faint` such that integer results do not all saturate.
void randomize(const Format& format, TIL_Region& region, Random& random, bool faint)
{
    const Range range = format.isInteger() ? format.range() : Range{0, 1};
    for (int c = 0; c < region.plane->componentCount; ++c)
        for (int i = 0; i < region.width() * region.height(); ++i) {
            const double code = range.black + range.span() * random.between(0.46, 0.54);
            format.put(region.getImageData(c), i, faint ? code : randomCode(format, random));
        }
}

/// The region that a tile list needs: one pixel of border on every side.
TIL_Region regionAround(const TIL_Plane& plane, const TIL_TileList& list)
{
    return TIL_Region(plane, list.x1 - 1, list.y1 - 1, list.x2 + 1, list.y2 + 1);
}

int run(RU_EdgeDetect& edge, TIL_TileList& out, const TIL_Region& in, void* data = nullptr)
{
    return edge.filter(&out, &in, 0.0f, data, 1, nullptr);
}

void expectStrengths(Picture& out, TIL_Region& in, int c, const Setting& setting)
{
    const Format& format = out.format;
    for (int y = 0; y < out.list.height(); ++y)
        for (int x = 0; x < out.list.width(); ++x) {
            double neighbours[3][3];
            for (int j = 0; j < 3; ++j)
                for (int i = 0; i < 3; ++i)
                    neighbours[j][i] = format.valueOf(
                        format.codeAt(in.getImageData(c), (y + j) * in.width() + x + i), format.range());
            const Strength exact = strengthOf(neighbours, setting);
            ASSERT_TRUE(format.holds(out.at(c, x, y), exact.value, format.range(),
                                     exact.terms * 8 * format.roundOff()))
                << c << " at " << x << ", " << y;
        }
}

template <class Work>
void expectSameRows(PXL_InstructionSet set)
{
    Random random(4);
    std::vector<Work> rows[3];
    for (auto& row : rows)
        for (int i = 0; i < 102; ++i)
            row.push_back(static_cast<Work>(random.between(-3.0, 3.0)));
    const ru_EdgeWeights<Work> weights{Work(1.7), Work(0.3), Work(2.4), Work(1.1)};
    for (size_t count = 0; count <= 100; ++count) {
        const auto all = [&](PXL_InstructionSet kernels) {
            std::vector<Work> out(3 * (count + 1), Work(-7));
            const ru_EdgeRow<Work>& row = ru_edgeDetectRows(kernels);
            const auto n = static_cast<int64_t>(count);
            row.sobel(rows[0].data(), rows[1].data(), rows[2].data(), out.data(), n);
            row.prewitt(rows[0].data(), rows[1].data(), rows[2].data(), &out[count + 1], n);
            row.general(rows[0].data(), rows[1].data(), rows[2].data(), &out[2 * (count + 1)], n, weights);
            EXPECT_TRUE(out[count] == Work(-7) && out.back() == Work(-7));
            return out;
        };
        ASSERT_EQ(all(set), all(PXL_InstructionSet::baseline)) << count;
    }
}

} // namespace

class EdgeDetect : public ::testing::TestWithParam<Format>
{
};
INSTANTIATE_TEST_SUITE_P(, EdgeDetect, ::testing::ValuesIn(formats()), nameOf);

TEST_P(EdgeDetect, GivesTheExactStrengthAtEverySize)
{
    size_t pictures = 0;
    for (int width = 1; width <= 40; ++width)
        for (const int height : {1, 2, 5}) {
            const auto seed = static_cast<uint64_t>(width * 10 + height);
            SCOPED_TRACE("seed " + std::to_string(seed));
            Random random(seed);
            const Setting& setting = settings[pictures++ % std::size(settings)];
            Picture out(GetParam(), width, height, random.between(-9, 9), random.between(-9, 9));
            TIL_Plane inPlane(GetParam().code, static_cast<unsigned char>(random.between(1, 4)));
            TIL_Region in = regionAround(inPlane, out.list);
            randomize(GetParam(), in, random, !random.oneIn(4));
            out.randomize(random);
            out.scatter(random);
            const Bytes before[] = {out.bytes(0), out.bytes(1), out.bytes(2), out.bytes(3)};
            out.list.firstRow = 1; // for generators; filters write every row
            out.list.rowStep = 2;
            RU_EdgeDetect edge; // the first setting
            if (&setting != settings)
                edge = algorithmOf(setting);
            ASSERT_EQ(run(edge, out.list, in), 1);
            for (int c = 0; c < 4; ++c) {
                if (out.mayWrite(c) && in.getImageData(c))
                    expectStrengths(out, in, c, setting);
                else
                    ASSERT_EQ(out.bytes(c), before[c]);
            }
            ASSERT_TRUE(out.guardsIntact());
        }
    EXPECT_EQ(pictures, 120u);
}

TEST_P(EdgeDetect, FlatInputGivesBlack)
{
    const Format& format = GetParam();
    for (const Setting& setting : settings) {
        Picture out(format, 20, 3);
        TIL_Region in = regionAround(out.plane, out.list);
        RU_EdgeDetect edge = algorithmOf(setting);
        for (int i = 0; i < 22 * 5; ++i)
            format.put(in.getImageData(0), i, format.range().white);
        ASSERT_EQ(run(edge, out.list, in), 1);
        for (int i = 0; i < 60; ++i)
            ASSERT_EQ(format.codeAt(out.data(0), i), format.isInteger() ? format.range().black : 0);
    }
}

TEST_P(EdgeDetect, EverySplitIntoTilesGivesTheSameBytes)
{
    const int size = GetParam().size();
    Random random(6);
    Picture whole(GetParam(), 37, 23);
    TIL_Region in = regionAround(whole.plane, whole.list);
    randomize(GetParam(), in, random, true);
    RU_EdgeDetect edge = algorithmOf({1, 0.13f, 0.7f});
    ASSERT_EQ(run(edge, whole.list, in), 1);
    const auto pixel = [&](auto* data, int width, int x, int y) {
        return static_cast<unsigned char*>(data) + (y * width + x) * size;
    };
    for (const auto& [w, h] : {std::pair(1, 1), {7, 5}, {16, 16}, {37, 1}, {36, 22}})
        for (int y1 = 0; y1 < 23; y1 += h)
            for (int x1 = 0; x1 < 37; x1 += w) {
                Picture tile(GetParam(), std::min(w, 37 - x1), std::min(h, 23 - y1), x1, y1);
                TIL_Region part = regionAround(tile.plane, tile.list);
                for (int y = 0; y < part.height(); ++y)
                    std::memcpy(pixel(part.getImageData(0), part.width(), 0, y),
                                pixel(in.getImageData(0), in.width(), x1, y1 + y),
                                static_cast<size_t>(part.width() * size));
                ASSERT_EQ(run(edge, tile.list, part), 1);
                for (int y = 0; y < tile.list.height(); ++y)
                    ASSERT_EQ(std::memcmp(pixel(tile.data(0), tile.list.width(), 0, y),
                                          pixel(whole.data(0), 37, x1, y1 + y),
                                          static_cast<size_t>(tile.list.width() * size)),
                              0);
            }
}

TEST_P(EdgeDetect, StopsWhenToldAndLeavesRegionsAlone)
{
    Picture out(GetParam(), 9, 20);
    TIL_Region in = regionAround(out.plane, out.list), outRegion = regionAround(out.plane, out.list);
    RU_EdgeDetect edge;
    EXPECT_EQ(edge.filter(&outRegion, &in, 0.0f, nullptr, 1, nullptr), 0);
    expectStop(out, [&](void* token) { return run(edge, out.list, in, token); });
}

TEST(EdgeDetectRows, EveryInstructionSetGivesTheSameBytesAtEveryLength)
{
    for (const PXL_InstructionSet set : runnableSets()) {
        SCOPED_TRACE(PXLinstructionSetName(set));
        expectSameRows<float>(set);
        expectSameRows<double>(set);
    }
}
