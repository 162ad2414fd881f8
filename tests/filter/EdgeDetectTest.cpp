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

template <class T>
T* dataOf(TIL_Region& region, int c)
{
    return static_cast<T*>(region.getImageData(c));
}

/// Any pixels, or with `faint` such that integer results do not all saturate.
template <class V>
void randomize(TIL_Region& region, Random& random, bool faint)
{
    using T = typename V::Type;
    for (int c = 0; c < region.plane->componentCount; ++c)
        std::generate_n(dataOf<T>(region, c), region.width() * region.height(), [&] {
            const double value = random.between(0.46, 0.54);
            if constexpr (isInteger<T>)
                return faint ? static_cast<T>(rangeOf<V>.black + rangeOf<V>.span() * value)
                             : random.pixel<T>();
            else
                return faint ? static_cast<T>(static_cast<float>(value)) : random.pixel<T>();
        });
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

template <class V>
void expectStrengths(Picture<V>& out, TIL_Region& in, int c, const Setting& setting)
{
    using T = typename V::Type;
    const T* data = dataOf<T>(in, c);
    for (int y = 0; y < out.list.height(); ++y)
        for (int x = 0; x < out.list.width(); ++x) {
            double neighbours[3][3];
            for (int j = 0; j < 3; ++j)
                for (int i = 0; i < 3; ++i)
                    neighbours[j][i] = valueOf(data[(y + j) * in.width() + x + i], rangeOf<V>);
            const Strength exact = strengthOf(neighbours, setting);
            ASSERT_TRUE(isStored(out.at(c, x, y), exact.value, rangeOf<V>, exact.terms * 8 * roundOff<T>))
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
        ASSERT_TRUE(sameBytes(all(set), all(PXL_InstructionSet::baseline))) << count;
    }
}

} // namespace

template <class V>
class EdgeDetect : public ::testing::Test
{
};
TYPED_TEST_SUITE(EdgeDetect, Variants, VariantNames);

TYPED_TEST(EdgeDetect, GivesTheExactStrengthAtEverySize)
{
    using T = typename TypeParam::Type;
    int pictures = 0;
    for (int width = 1; width <= 40; ++width)
        for (const int height : {1, 2, 5}) {
            const auto seed = static_cast<uint64_t>(width * 10 + height);
            SCOPED_TRACE("seed " + std::to_string(seed));
            Random random(seed);
            Setting setting = settings[static_cast<size_t>(pictures) % std::size(settings)];
            Picture<TypeParam> out(width, height, random.between(-9, 9), random.between(-9, 9));
            TIL_Plane inPlane(PXL_FormatOf<T>::code, 4);
            inPlane.componentCount = static_cast<unsigned char>(random.between(1, 4));
            TIL_Region in = regionAround(inPlane, out.list);
            randomize<TypeParam>(in, random, !random.oneIn(4));
            out.randomize(random);
            for (int c = 0; c < 4; ++c) {
                if (random.oneIn(6))
                    out.list.tiles[c] = nullptr;
                out.tiles[c].setConstantTile(random.oneIn(6));
                out.tiles[c].setDone(random.oneIn(6));
            }
            out.list.firstRow = 1; // for generators; filters write every row
            out.list.rowStep = 2;
            std::vector<std::vector<T>> before;
            for (int c = 0; c < 4; ++c)
                before.push_back(out.pixels(c));
            RU_EdgeDetect edge = algorithmOf(setting);
            ASSERT_EQ(run(edge, out.list, in), 1);
            for (int c = 0; c < 4; ++c) {
                const TIL_Tile& tile = out.tiles[c];
                const bool writes =
                    out.list.tiles[c] && !tile.isConstant() && !tile.isDone() && in.getImageData(c);
                if (writes)
                    expectStrengths(out, in, c, setting);
                else
                    ASSERT_TRUE(sameBytes(out.pixels(c), before[static_cast<size_t>(c)]));
            }
            ASSERT_TRUE(out.guardsIntact());
            ++pictures;
        }
    EXPECT_EQ(pictures, 120);
}

TYPED_TEST(EdgeDetect, FlatInputGivesBlack)
{
    using T = typename TypeParam::Type;
    const Range range = rangeOf<TypeParam>;
    const T black = isInteger<T> ? static_cast<T>(range.black) : T(0);
    const T white = isInteger<T> ? static_cast<T>(range.white) : T(1);
    for (const Setting& setting : settings) {
        Picture<TypeParam> out(20, 3);
        TIL_Region in = regionAround(out.plane, out.list);
        RU_EdgeDetect edge = algorithmOf(setting);
        std::fill_n(dataOf<T>(in, 0), 22 * 5, white);
        ASSERT_EQ(run(edge, out.list, in), 1);
        EXPECT_TRUE(sameBytes(out.pixels(0), std::vector<T>(60, black)));
    }
}

TYPED_TEST(EdgeDetect, EverySplitIntoTilesGivesTheSameBytes)
{
    using T = typename TypeParam::Type;
    Random random(6);
    Picture<TypeParam> whole(37, 23);
    TIL_Region in = regionAround(whole.plane, whole.list);
    randomize<TypeParam>(in, random, true);
    RU_EdgeDetect edge = algorithmOf({1, 0.13f, 0.7f});
    ASSERT_EQ(run(edge, whole.list, in), 1);
    for (const auto& [w, h] : {std::pair(1, 1), {7, 5}, {16, 16}, {37, 1}, {36, 22}})
        for (int y1 = 0; y1 < 23; y1 += h)
            for (int x1 = 0; x1 < 37; x1 += w) {
                Picture<TypeParam> tile(std::min(w, 37 - x1), std::min(h, 23 - y1), x1, y1);
                TIL_Region part = regionAround(tile.plane, tile.list);
                for (int y = 0; y < part.height(); ++y)
                    std::copy_n(dataOf<T>(in, 0) + (y1 + y) * in.width() + x1, part.width(),
                                dataOf<T>(part, 0) + y * part.width());
                ASSERT_EQ(run(edge, tile.list, part), 1);
                for (int y = 0; y < tile.list.height(); ++y)
                    ASSERT_EQ(std::memcmp(&tile.at(0, 0, y), &whole.at(0, x1, y1 + y),
                                          sizeof(T) * static_cast<size_t>(tile.list.width())),
                              0);
            }
}

TYPED_TEST(EdgeDetect, StopsWhenToldAndLeavesRegionsAlone)
{
    using T = typename TypeParam::Type;
    Random random(8);
    Picture<TypeParam> out(9, 20);
    out.randomize(random);
    TIL_Region in = regionAround(out.plane, out.list), outRegion = regionAround(out.plane, out.list);
    RU_EdgeDetect edge;
    EXPECT_EQ(edge.filter(&outRegion, &in, 0.0f, nullptr, 1, nullptr), 0);

    const auto before = out.pixels(0), untouched = out.pixels(1);
    StopAfter host(3);
    EXPECT_EQ(run(edge, out.list, in, &host.token), 1);
    EXPECT_LE(host.furtherQuestions(), 3) << "one for each of the other components";
    EXPECT_EQ(std::memcmp(&out.at(0, 0, 3), &before[9 * 3], 9 * 17 * sizeof(T)), 0);
    EXPECT_NE(std::memcmp(&out.at(0, 0, 2), &before[9 * 2], 9 * sizeof(T)), 0);
    EXPECT_TRUE(sameBytes(out.pixels(1), untouched));
}

TEST(EdgeDetectRows, EveryInstructionSetGivesTheSameBytesAtEveryLength)
{
    for (const PXL_InstructionSet set : runnableSets()) {
        SCOPED_TRACE(PXLinstructionSetName(set));
        expectSameRows<float>(set);
        expectSameRows<double>(set);
    }
}

TEST(EdgeDetectSettings, AreSobelByDefaultAndCopied)
{
    RU_EdgeDetect edge;
    EXPECT_TRUE(edge.sobelWeights == 1 && edge.edgeGain == 1.0f && edge.cornerWeight == 1.0f);
    edge = algorithmOf({5, 2.0f, 3.0f});
    const RU_EdgeDetect copy = edge;
    EXPECT_TRUE(copy.sobelWeights == 5 && copy.edgeGain == 2.0f && copy.cornerWeight == 3.0f);
}
