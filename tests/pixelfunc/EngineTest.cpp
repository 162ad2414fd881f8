#include <RU/pixelfunc/RU_PixelEngine.h>
#include <reference/Chains.h>
#include <reference/Picture.h>

using namespace reference;

namespace {

/// Random pixels in tiles of every state, and rows to process.
template <class V>
void scatter(Random& random, Picture<V>& in, Picture<V>& out)
{
    in.randomize(random);
    out.randomize(random);
    for (int c = 0; c < 4; ++c) {
        if (random.oneIn(5))
            in.list.tiles[c] = nullptr;
        if (random.oneIn(5))
            out.list.tiles[c] = nullptr;
        in.tiles[c].setConstantTile(random.oneIn(3));
        out.tiles[c].setConstantTile(random.oneIn(4));
        out.tiles[c].setDone(random.oneIn(5));
    }
    if (random.oneIn(4)) // seldom happens by itself
        for (TIL_Tile& tile : in.tiles)
            tile.setConstantTile(true);
    out.list.firstRow = static_cast<signed char>(random.oneIn(2) ? 0 : random.between(-1, 3));
    out.list.rowStep = static_cast<signed char>(random.oneIn(2) ? 1 : random.between(-1, 3));
}

/// The engine's rules for one format and one chain, in double.
template <class V>
class Expectation
{
public:
    using T = typename V::Type;

    Expectation(const KnownChain& chain, Picture<V>& in, Picture<V>& out)
        : chain_(chain), in_(in), first_(std::max<int>(out.list.firstRow, 0)),
          step_(std::max<int>(out.list.rowStep, 1))
    {
        const bool table8 = sizeof(T) == 1 && !chain.perPixel();
        read_ = write_ = table8 ? fullRange<T> : rangeOf<V>;
        if (std::is_same_v<T, unsigned short> && V::full && chain.dependent() && !chain.perPixel())
            write_.white = 65355;
    }

    bool processes(int y) const { return y >= first_ && (y - first_) % step_ == 0; }

    /// Does one evaluation fill component c?
    bool fills(int c) const
    {
        for (int other = 0; other < 4; ++other)
            if ((chain_.perPixel() || other == c) && in_.list.tiles[other] && !in_.tiles[other].isConstant())
                return false;
        return true;
    }

    bool writes(const Picture<V>& out, int c) const
    {
        return out.list.tiles[c] && !out.tiles[c].isDone() && (chain_.perPixel() || in_.list.tiles[c]);
    }

    ::testing::AssertionResult accepts(T stored, int c, int x, int y) const
    {
        Pixel pixel;
        for (int k = 0; k < 4; ++k) {
            const bool once = in_.tiles[k].isConstant();
            pixel[static_cast<size_t>(k)] =
                in_.list.tiles[k] ? valueOf(once ? in_.at(k, 0, first_) : in_.at(k, x, y), read_) : NAN;
        }
        double exact = in_.list.tiles[c] ? chain_.exact(pixel)[static_cast<size_t>(c)] : 0.0;
        if (isInteger<T> && write_.black == 0)
            exact = std::clamp(exact, 0.0, 1.0);
        return isStored(stored, exact, write_, 1e-6 * (1.0 + std::abs(exact)));
    }

private:
    const KnownChain& chain_;
    Picture<V>& in_;
    int first_;
    int step_;
    Range read_, write_;
};

template <class T>
::testing::AssertionResult isKept(const T& now, const T& before)
{
    if (std::memcmp(&now, &before, sizeof(T)) == 0)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "changed from " << double(before) << " to " << double(now);
}

} // namespace

template <class V>
class Engine : public ::testing::Test
{
public:
    static int adjust(RU_PixelFunction* chain, Picture<V>& out, const Picture<V>& in, void* data = nullptr)
    {
        RU_PixelEngine engine(chain);
        return engine.pixelAdjust(&out.list, &in.list, 0.0f, data, 2, nullptr);
    }
};
TYPED_TEST_SUITE(Engine, Variants, VariantNames);

TYPED_TEST(Engine, EveryChainGivesTheExactResultInEveryLayout)
{
    int filled = 0, varied = 0;
    for (const KnownChain& chain : knownChains()) {
        for (uint64_t seed = 0; seed < 150; ++seed) {
            SCOPED_TRACE(chain.name + ", seed " + std::to_string(seed));
            Random random(seed);
            const int width = random.between(1, 40), height = random.between(1, 12);
            Picture<TypeParam> in(width, height), out(width, height);
            scatter(random, in, out);
            const Expectation expectation(chain, in, out);
            std::vector<std::vector<typename TypeParam::Type>> before;
            std::vector<bool> constant;
            for (int c = 0; c < 4; ++c) {
                before.push_back(out.pixels(c));
                constant.push_back(out.tiles[c].isConstant());
            }
            ASSERT_EQ(this->adjust(chain.chain->head(), out, in), 1);
            ASSERT_TRUE(in.guardsIntact() && out.guardsIntact());
            for (int c = 0; c < 4; ++c) {
                const bool writes = expectation.writes(out, c);
                const bool rows = height > std::max<int>(out.list.firstRow, 0);
                if (rows || !writes) {
                    ASSERT_EQ(out.tiles[c].isConstant(),
                              writes ? expectation.fills(c) : constant[static_cast<size_t>(c)])
                        << c;
                }
                (expectation.fills(c) ? filled : varied) += writes ? 1 : 0;
                for (int y = 0; y < height; ++y)
                    for (int x = 0; x < width; ++x) {
                        const auto& stored = out.at(c, x, y);
                        const auto& kept = before[static_cast<size_t>(c)][static_cast<size_t>(y * width + x)];
                        ASSERT_TRUE(writes && expectation.processes(y) ? expectation.accepts(stored, c, x, y)
                                                                       : isKept(stored, kept))
                            << c << " at " << x << ", " << y;
                    }
            }
        }
    }
    EXPECT_GT(filled, 300);
    EXPECT_GT(varied, 300);
}

// Constant tiles show no seam next to varying ones, and a list may be adjusted in place.
TYPED_TEST(Engine, ConstantTilesAndSharedListsGiveTheSameBytes)
{
    for (const KnownChain& chain : knownChains()) {
        for (const bool constant : {false, true}) {
            SCOPED_TRACE(chain.name);
            Random random(3);
            Picture<TypeParam> varying(37, 5), shared(37, 5), out(37, 5);
            varying.randomize(random);
            for (int c = 0; c < 4; ++c) {
                if (constant)
                    std::fill_n(varying.data(c), varying.list.itemCount, *varying.data(c));
                std::copy_n(varying.data(c), varying.list.itemCount, shared.data(c));
                shared.tiles[c].setConstantTile(constant);
            }
            EXPECT_EQ(this->adjust(chain.chain->head(), out, varying), 1);
            EXPECT_EQ(this->adjust(chain.chain->head(), shared, shared), 1);
            for (int c = 0; c < 4; ++c) {
                EXPECT_TRUE(sameBytes(shared.pixels(c), out.pixels(c)));
                EXPECT_EQ(shared.tiles[c].isConstant(), constant);
                EXPECT_FALSE(out.tiles[c].isConstant());
            }
        }
    }
}

TYPED_TEST(Engine, ValuesBeyondTheRangeAndNotNumbersAreStoredByTheFormatsRule)
{
    using T = typename TypeParam::Type;
    Picture<TypeParam> in(4, 1), out(4, 1);
    if constexpr (!isInteger<T>) {
        for (const bool perPixel : {false, true}) {
            const T values[] = {T(-3.0f), T(40.0f), T(HUGE_VALF), T(std::nanf(""))};
            std::copy_n(values, 4, in.data(2));
            Swap swap;
            RU_PixelFunction identity;
            EXPECT_EQ(this->adjust(perPixel ? &swap : &identity, out, in), 1);
            const T* got = out.data(2);
            EXPECT_EQ(got[0], -3.0f);
            EXPECT_EQ(got[1], 40.0f);
            const bool zeroed = std::is_same_v<T, fpreal16> && TypeParam::full && !perPixel;
            EXPECT_EQ(got[2], zeroed ? 0.0f : HUGE_VALF);
            EXPECT_TRUE(zeroed ? got[3] == 0.0f : std::isnan(static_cast<float>(got[3])));
        }
    } else {
        RU_MultFunc notANumber(std::nanf(""));
        Random random(1);
        out.randomize(random);
        EXPECT_EQ(this->adjust(&notANumber, out, in), 1);
        EXPECT_TRUE(sameBytes(out.pixels(0), std::vector<T>(4, 0)));
    }
}

TYPED_TEST(Engine, StopsAtTheRowWhereTheHostSaysSo)
{
    for (const KnownChain& chain : knownChains()) {
        Random random(9);
        Picture<TypeParam> in(11, 20), out(11, 20);
        in.randomize(random);
        out.randomize(random);
        const auto before = out.pixels(0), untouched = out.pixels(1);
        StopAfter host(3);
        EXPECT_EQ(this->adjust(chain.chain->head(), out, in, &host.token), 1);
        EXPECT_EQ(host.furtherQuestions(), 0);
        const auto after = out.pixels(0);
        EXPECT_FALSE(std::memcmp(&after[11 * 2], &before[11 * 2], 11 * sizeof(after[0])) == 0);
        EXPECT_EQ(std::memcmp(&after[11 * 3], &before[11 * 3], 11 * 17 * sizeof(after[0])), 0);
        EXPECT_TRUE(chain.perPixel() || sameBytes(out.pixels(1), untouched));
    }
}

TYPED_TEST(Engine, WithoutChainDoesNothing)
{
    Picture<TypeParam> in(3, 2), out(3, 2);
    Random random(1);
    out.randomize(random);
    const auto before = out.pixels(0);
    EXPECT_EQ(this->adjust(nullptr, out, in), 0);
    EXPECT_TRUE(sameBytes(out.pixels(0), before));
}
