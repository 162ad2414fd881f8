#include <RU/pixelfunc/RU_PixelEngine.h>
#include <reference/Chains.h>
#include <reference/Picture.h>

using namespace reference;

namespace {

/// Random pixels in tiles of every state, and rows to process.
void scatter(Random& random, Picture& in, Picture& out)
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
class Expectation
{
public:
    Expectation(const KnownChain& chain, Picture& in, Picture& out)
        : first(std::max<int>(out.list.firstRow, 0)), chain_(chain), in_(in), format_(in.format),
          step_(std::max<int>(out.list.rowStep, 1)), read_(format_.range())
    {
        if (format_.code == PXL_FORMAT_uint8 && !chain.perPixel())
            read_ = {0, 255};
        write_ = read_;
        if (format_.code == PXL_FORMAT_uint16 && format_.full && chain.dependent() && !chain.perPixel())
            write_.white = 65355;
    }

    bool processes(int y) const { return y >= first && (y - first) % step_ == 0; }

    /// Does one evaluation fill component c?
    bool fills(int c) const
    {
        for (int other = 0; other < 4; ++other)
            if ((chain_.perPixel() || other == c) && in_.list.tiles[other] && !in_.tiles[other].isConstant())
                return false;
        return true;
    }

    bool writes(const Picture& out, int c) const
    {
        return out.list.tiles[c] && !out.tiles[c].isDone() && (chain_.perPixel() || in_.list.tiles[c]);
    }

    ::testing::AssertionResult accepts(double stored, int c, int x, int y) const
    {
        const Range read = fills(c) ? format_.range() : read_; // one evaluation takes no table
        const Range write = fills(c) ? format_.range() : write_;
        Pixel pixel;
        for (int k = 0; k < 4; ++k) {
            const double code = in_.tiles[k].isConstant() ? in_.at(k, 0, first) : in_.at(k, x, y);
            pixel[static_cast<size_t>(k)] = in_.list.tiles[k] ? format_.valueOf(code, read) : NAN;
        }
        const auto component = static_cast<size_t>(c);
        double exact = in_.list.tiles[c] ? chain_.exact(pixel)[component] : 0.0;
        const double error = 1e-6 * (1.0 + std::abs(exact));
        if (format_.isInteger() && write.black == 0)
            exact = std::clamp(exact, 0.0, 1.0);
        return format_.holds(stored, exact, write, error);
    }

    const int first;

private:
    const KnownChain& chain_;
    Picture& in_;
    Format format_;
    int step_;
    Range read_, write_;
};

int adjust(RU_PixelFunction* chain, Picture& out, const Picture& in, void* data = nullptr)
{
    RU_PixelEngine engine(chain);
    return engine.pixelAdjust(&out.list, &in.list, 0.0f, data, 2, nullptr);
}

} // namespace

class Engine : public ::testing::TestWithParam<Format>
{
};
INSTANTIATE_TEST_SUITE_P(, Engine, ::testing::ValuesIn(formats()), nameOfParameter);

TEST_P(Engine, EveryChainGivesTheExactResultInEveryLayout)
{
    int filled = 0, varied = 0;
    for (const KnownChain& chain : knownChains())
        for (uint64_t seed = 0; seed < 150; ++seed) {
            SCOPED_TRACE(chain.name + ", seed " + std::to_string(seed));
            Random random(seed);
            const int width = random.between(1, 40), height = random.between(1, 12);
            Picture in(GetParam(), width, height), out(GetParam(), width, height);
            scatter(random, in, out);
            const Expectation expectation(chain, in, out);
            Bytes before[4];
            bool constant[4];
            for (int c = 0; c < 4; ++c) {
                before[c] = out.bytes(c);
                constant[c] = out.tiles[c].isConstant();
            }
            ASSERT_EQ(adjust(chain.chain->head(), out, in), 1);
            ASSERT_TRUE(in.guardsIntact() && out.guardsIntact());
            for (int c = 0; c < 4; ++c) {
                const bool writes = expectation.writes(out, c), fills = expectation.fills(c);
                if (height > expectation.first || !writes) {
                    ASSERT_EQ(out.tiles[c].isConstant(), writes ? fills : constant[c]) << c;
                }
                (fills ? filled : varied) += writes ? 1 : 0;
                for (int y = 0; y < height; ++y) {
                    if (!writes || !expectation.processes(y)) {
                        const auto from = before[c].begin() + y * width * GetParam().size();
                        ASSERT_EQ(out.rows(c, y, y + 1), Bytes(from, from + width * GetParam().size()));
                        continue;
                    }
                    for (int x = 0; x < width; ++x)
                        ASSERT_TRUE(expectation.accepts(out.at(c, x, y), c, x, y))
                            << c << " at " << x << ", " << y;
                }
            }
        }
    EXPECT_GT(filled, 300);
    EXPECT_GT(varied, 300);
}

// With codes read as the engine reads them, its result is stored as well as it can be.
TEST_P(Engine, EveryColourFunctionIsRoundedOnce)
{
    const Format& format = GetParam();
    const Range range = format.range();
    const double span = range.span();
    const double scale = format.code == 2 && format.full ? 1 / span : static_cast<float>(1 / span);
    for (const PixelFunction& function : pixelFunctions())
        for (uint64_t seed = 0; seed < 30; ++seed) {
            SCOPED_TRACE(function.name + ", seed " + std::to_string(seed));
            Random random(seed);
            Picture in(format, random.between(1, 40), 2), out(format, in.list.width(), 2);
            in.randomize(random);
            bool scope[4];
            for (int c = 0; c < 4; ++c) {
                scope[c] = !random.oneIn(5);
                if (random.oneIn(5))
                    in.list.tiles[c] = nullptr;
            }
            function.object->setScope(scope);
            ASSERT_EQ(adjust(function.object.get(), out, in), 1);
            for (int i = 0; i < in.list.itemCount; ++i) {
                Pixel pixel;
                for (int c = 0; c < 4; ++c) {
                    const double code = format.codeAt(in.data(c), i);
                    const double value = format.isInteger() ? (code - range.black) * scale : code;
                    pixel[static_cast<size_t>(c)] = in.list.tiles[c] ? static_cast<float>(value) : NAN;
                }
                const Pixel exact = function.exact(pixel);
                for (size_t c = 0; c < 4; ++c) {
                    const double value = pixel[c] != pixel[c] ? 0 : scope[c] ? exact[c] : pixel[c];
                    ASSERT_TRUE(format.holds(format.codeAt(out.data(static_cast<int>(c)), i), value, range,
                                             2 * function.tolerance))
                        << c << " at " << i << " of " << ::testing::PrintToString(pixel);
                }
            }
            function.object->setScope(RU_PixelFunction().getScope());
        }
}

// Constant tiles show no seam next to varying ones but where a table departs from the common rules, and a list
// may be adjusted in place.
TEST_P(Engine, ConstantTilesAndSharedListsGiveTheSameBytes)
{
    for (const KnownChain& chain : knownChains())
        for (const bool constant : {false, true}) {
            SCOPED_TRACE(chain.name);
            const bool departs = GetParam().code == PXL_FORMAT_uint8    ? !GetParam().full
                                 : GetParam().code == PXL_FORMAT_uint16 ? GetParam().full && chain.dependent()
                                                                        : false;
            if (constant && departs && !chain.perPixel())
                continue;
            Random random(3);
            Picture varying(GetParam(), 37, 5), shared(GetParam(), 37, 5), out(GetParam(), 37, 5);
            varying.randomize(random);
            for (int c = 0; c < 4; ++c) {
                for (int i = 0; i < 37 * 5; ++i)
                    GetParam().put(shared.data(c), i, GetParam().codeAt(varying.data(c), constant ? 0 : i));
                std::memcpy(varying.data(c), shared.data(c), shared.bytes(c).size());
                shared.tiles[c].setConstantTile(constant);
            }
            EXPECT_EQ(adjust(chain.chain->head(), out, varying), 1);
            EXPECT_EQ(adjust(chain.chain->head(), shared, shared), 1);
            for (int c = 0; c < 4; ++c) {
                EXPECT_EQ(shared.bytes(c), out.bytes(c));
                EXPECT_EQ(shared.tiles[c].isConstant(), constant);
                EXPECT_FALSE(out.tiles[c].isConstant());
            }
        }
}

TEST_P(Engine, ChainsOfPixelsMayWriteOverAnotherComponentsInput)
{
    Random random(5);
    Picture in(GetParam(), 29, 3), apart(GetParam(), 29, 3);
    in.randomize(random);
    Swap swap;
    EXPECT_EQ(adjust(&swap, apart, in), 1);
    TIL_TileList crossed = in.list;
    std::swap(crossed.tiles[0], crossed.tiles[1]);
    RU_PixelEngine engine(&swap);
    EXPECT_EQ(engine.pixelAdjust(&crossed, &in.list, 0.0f, nullptr, 0, nullptr), 1);
    EXPECT_TRUE(in.bytes(1) == apart.bytes(0) && in.bytes(0) == apart.bytes(1));
}

TEST_P(Engine, ValuesBeyondTheRangeAndNotNumbersAreStoredByTheFormatsRule)
{
    const Format& format = GetParam();
    Picture in(format, 4, 1), out(format, 4, 1);
    if (format.isInteger()) {
        RU_MultFunc notANumber(std::nanf(""));
        Random random(1);
        out.randomize(random);
        EXPECT_EQ(adjust(&notANumber, out, in), 1);
        EXPECT_EQ(out.bytes(0), in.bytes(0)) << "black";
        return;
    }
    for (const bool perPixel : {false, true}) {
        Swap swap;
        RU_PixelFunction identity;
        const double values[] = {-3.0, 40.0, HUGE_VAL, NAN};
        for (int i = 0; i < 4; ++i)
            format.put(in.data(2), i, values[i]);
        EXPECT_EQ(adjust(perPixel ? &swap : &identity, out, in), 1);
        const bool zeroed = format.isHalf() && format.full && !perPixel;
        for (int i = 0; i < 4; ++i)
            EXPECT_TRUE(format.holds(out.at(2, i, 0), zeroed && i > 1 ? 0.0 : values[i], {})) << i;
    }
}

TEST_P(Engine, StopsAtTheRowWhereTheHostSaysSoAndCopiesWithoutChain)
{
    for (const KnownChain& chain : knownChains()) {
        Random random(9);
        Picture in(GetParam(), 11, 20), out(GetParam(), 11, 20);
        in.randomize(random);
        out.randomize(random);
        const Bytes third = out.rows(0, 2, 3), rest = out.rows(0, 3, 20), untouched = out.bytes(1);
        StopAfter host(3);
        EXPECT_EQ(adjust(chain.chain->head(), out, in, &host.token), 1);
        EXPECT_EQ(host.furtherQuestions(), 0);
        EXPECT_NE(out.rows(0, 2, 3), third);
        EXPECT_EQ(out.rows(0, 3, 20), rest);
        EXPECT_TRUE(chain.perPixel() || out.bytes(1) == untouched);
        EXPECT_EQ(adjust(nullptr, out, in), 1);
        EXPECT_EQ(out.bytes(1), in.bytes(1));
    }
}
