#include <RU/pixelfunc/RU_CoshFunc.h>
#include <RU/pixelfunc/RU_PixelEngine.h>
#include <reference/Chains.h>
#include <reference/Contract.h>

using namespace reference;

namespace {

/// The engine's rules for a chain, whose exact results may be off by some `tolerance`, for values around 1.
class Engine : public Subject
{
public:
    Engine(std::string of, RU_PixelFunction* chain, std::function<Pixel(Pixel)> formula, double tolerance)
        : Subject(std::move(of)), engine_(chain), formula_(std::move(formula)), tolerance_(tolerance)
    {
    }
    explicit Engine(const KnownChain& known)
        : Engine("Engine" + known.name, known.chain->head(), known.exact, 1e-6)
    {
        chain_ = known.chain;
    }

    int run(Scene& scene, void* token, int thread) override
    {
        Picture& out = scene.out;
        bool constant[4];
        for (int c = 0; c < 4; ++c)
            constant[c] = out.tiles[c].isConstant();
        const int result = engine_.pixelAdjust(&out.list, scene.inList(), 0.0f, token, thread, nullptr);
        for (int c = 0; c < 4 && first(scene) < out.list.height(); ++c)
            EXPECT_EQ(out.tiles[c].isConstant(), writes(scene, c) ? fills(scene, c) : constant[c]);
        return result;
    }

    std::optional<Exact> expected(const Scene& scene, int c, int x, int y) const override
    {
        const Format& format = scene.out.format;
        const int after = y - first(scene);
        if (!writes(scene, c) || after < 0 || after % std::max<int>(scene.out.list.rowStep, 1) != 0)
            return {};
        // Tables have rules of their own; one evaluation takes none.
        const bool table = !perPixel() && !fills(scene, c);
        const Range read = table && format.code == PXL_FORMAT_uint8 ? Range{0, 255} : scene.points();
        Range write = read;
        if (table && format.code == PXL_FORMAT_uint16 && format.full &&
            engine_.function->isComponentDependent())
            write.white = 65355;
        Pixel pixel;
        for (int k = 0; k < 4; ++k)
            pixel[static_cast<size_t>(k)] =
                has(scene, k) ? valueOf(scene, scene.input(k, x, y, first(scene)), read) : absent;
        const auto component = static_cast<size_t>(c);
        double exact = has(scene, c) ? formula_(pixel)[component] : 0.0;
        if (table && format.isHalf() && format.full && !std::isfinite(pixel[component]))
            exact = 0.0;
        const double slack = tolerance_ == 0.0 ? 0.0 : tolerance_ * (1.0 + std::abs(exact));
        if (write.white != read.white) // clamped before it is scaled
            exact = std::clamp(exact, 0.0, 1.0);
        return Exact{exact, std::isfinite(slack) ? slack : 0.0, write, !engine_.function->isScoped(c)};
    }

private:
    static int first(const Scene& scene) { return std::max<int>(scene.out.list.firstRow, 0); }
    static bool has(const Scene& scene, int c) { return scene.inList() && scene.inList()->tiles[c]; }
    /// As the engine reads codes: in float, but for full 32 bits.
    static double valueOf(const Scene& scene, double code, Range points)
    {
        const Format& format = scene.out.format;
        if (!format.isInteger())
            return std::isnan(code) ? std::abs(code) : code;
        const double scale = points.span() == 0 ? 1.0 : 1.0 / points.span();
        const bool isDouble = format.code == PXL_FORMAT_uint32 && format.full;
        return static_cast<float>((code - points.black) * (isDouble ? scale : static_cast<float>(scale)));
    }

    bool perPixel() const { return engine_.function->areAllComponentsNeeded(); }
    /// Does one evaluation fill component c?
    bool fills(const Scene& scene, int c) const
    {
        for (int other = 0; other < 4; ++other)
            if ((perPixel() || other == c) && has(scene, other) && !scene.inputIsConstant[other])
                return false;
        return true;
    }
    bool writes(const Scene& scene, int c) const
    {
        return scene.out.list.tiles[c] && !scene.out.tiles[c].isDone() && (perPixel() || has(scene, c));
    }

    std::shared_ptr<Chain> chain_;
    RU_PixelEngine engine_;
    std::function<Pixel(Pixel)> formula_;
    double tolerance_;
};

const auto engines = [] {
    std::vector<std::unique_ptr<Registered<Engine>>> all;
    for (const KnownChain& chain : knownChains())
        all.push_back(std::make_unique<Registered<Engine>>(chain));
    return all;
}();

Bytes evaluated(RU_PixelFunction* chain, Scene& scene)
{
    RU_PixelEngine engine(chain);
    EXPECT_EQ(engine.pixelAdjust(&scene.out.list, &scene.in.list, 0.0f, nullptr, -1, nullptr), 1);
    return scene.out.bytes(0);
}

} // namespace

class EngineFormats : public ::testing::TestWithParam<Format>
{
};
INSTANTIATE_TEST_SUITE_P(, EngineFormats, ::testing::ValuesIn(formats()), nameOfParameter);

// Through tables; over ranges of which the points lie in every order.
TEST_P(EngineFormats, EveryCodeGivesTheFormula)
{
    const Format& format = GetParam();
    if (format.size() > 2)
        return;
    std::vector<Range> ranges = {format.range()};
    if (format.code == PXL_FORMAT_uint16 && !format.full)
        ranges.insert(ranges.end(), {{4096, 65535}, {0, 1}, {777, 777}, {60000, 100}});
    for (const KnownChain& chain : knownChains())
        for (const Range range : ranges) {
            SCOPED_TRACE(chain.name + " from " + std::to_string(range.black));
            Engine engine(chain);
            Scene scene(format, {}, 256, 1 << (8 * (format.size() - 1)));
            for (int i = 0; i < 4 * scene.out.list.itemCount; ++i)
                format.putBits(scene.in.data(i % 4), i / 4, static_cast<uint32_t>(i / 4));
            scene.out.list.blackPoint = scene.out.plane.blackPoint = range.black;
            scene.out.list.whitePoint = scene.out.plane.whitePoint = range.white;
            scene.hold();
            ASSERT_EQ(engine.run(scene, nullptr, -1), 1);
            ASSERT_NO_FATAL_FAILURE(expectFormula(engine, scene));
        }
}

TEST_P(EngineFormats, EveryColourFunctionIsRoundedOnce)
{
    for (const PixelFunction& function : pixelFunctions())
        for (uint64_t seed = 0; seed < 30; ++seed) {
            SCOPED_TRACE(function.name + ", seed " + std::to_string(seed));
            Random random(seed);
            Engine engine("", function.object.get(), function.exact, 2 * function.tolerance);
            Scene scene(GetParam(), {}, random.between(1, 40), 2);
            scene.fill(random, 0);
            scene.scatter(random);
            scene.hold();
            ASSERT_EQ(engine.run(scene, nullptr, -1), 1);
            ASSERT_NO_FATAL_FAILURE(expectFormula(engine, scene));
        }
}

TEST_P(EngineFormats, ChainsOfPixelsMayWriteOverAnotherComponentsInput)
{
    Random random(5);
    Scene apart(GetParam(), {}, 29, 3);
    Picture& in = apart.in;
    apart.fill(random, 0);
    Swap swap;
    evaluated(&swap, apart);
    TIL_TileList crossed = in.list;
    std::swap(crossed.tiles[0], crossed.tiles[1]);
    RU_PixelEngine engine(&swap);
    EXPECT_EQ(engine.pixelAdjust(&crossed, &in.list, 0.0f, nullptr, 0, nullptr), 1);
    EXPECT_TRUE(in.bytes(1) == apart.out.bytes(0) && in.bytes(0) == apart.out.bytes(1));
}

TEST_P(EngineFormats, WithoutAFunctionBytesAreCopied)
{
    Random random(2);
    Scene scene(GetParam(), {}, 31, 3);
    scene.fill(random, 3);
    scene.in.tiles[1].setConstantTile(true);
    EXPECT_EQ(evaluated(nullptr, scene), scene.in.bytes(0));
    EXPECT_TRUE(scene.out.tiles[1].isConstant() && !scene.out.tiles[0].isConstant());
    for (int i = 0; i < 93; ++i)
        EXPECT_EQ(GetParam().bitsAt(scene.out.data(1), i), GetParam().bitsAt(scene.in.data(1), 0));
}

// Whatever the chain makes of it.
TEST_P(EngineFormats, EqualPointsGiveTheirCode)
{
    const Format& format = GetParam();
    if (format.full || !format.isInteger())
        return;
    RU_CoshFunc infinite(1e30f);
    RU_MultFunc none(NAN);
    RU_AddFunc more(3.0f);
    Swap perPixel;
    for (RU_PixelFunction* function :
         std::initializer_list<RU_PixelFunction*>{&infinite, &none, &more, &perPixel})
        for (const bool constant : {false, true})
            for (const unsigned int black : {0u, 100u, format.white()}) {
                if (format.code == PXL_FORMAT_uint8 && !constant && function != &perPixel)
                    continue; // the table is over the full range
                Random random(3);
                Scene scene(format, {}, 33, 2);
                scene.fill(random, 0);
                scene.in.tiles[0].setConstantTile(constant);
                scene.out.list.blackPoint = scene.out.list.whitePoint = black;
                evaluated(function, scene);
                for (int i = 0; i < 66; ++i)
                    ASSERT_EQ(format.codeAt(scene.out.data(0), i), black) << i;
            }
}

/// Tells how often it is asked.
struct Counter : RU_PixelFunction
{
    RU_ScalarForm getPixelFunction() const override
    {
        return [](RU_PixelFunction* function, float value, int) {
            ++static_cast<Counter*>(function)->calls;
            return value;
        };
    }
    int calls = 0;
};

TEST(EngineConstants, AreEvaluatedDirectly)
{
    const auto constant = [](Format format, Range points, RU_PixelFunction& chain, double code) {
        Scene scene(format, {}, 5, 3);
        scene.out.list.blackPoint = points.black;
        scene.out.list.whitePoint = points.white;
        format.put(scene.in.data(0), 0, code);
        scene.in.tiles[0].setConstantTile(true);
        std::fill_n(scene.in.list.tiles + 1, 3, nullptr);
        evaluated(&chain, scene);
        EXPECT_TRUE(scene.out.tiles[0].isConstant());
        return scene.out.at(0, 4, 2);
    };
    RU_AddFunc add(0.1f), zero(0.0f);
    EXPECT_EQ(constant({PXL_FORMAT_uint8, false}, {16, 235}, add, 128), 150);
    EXPECT_EQ(constant({PXL_FORMAT_half, true}, {}, zero, HUGE_VAL), HUGE_VAL);
    Counter counter;
    EXPECT_EQ(constant({PXL_FORMAT_uint16, true}, {0, 65535}, counter, 77), 77);
    EXPECT_EQ(counter.calls, 1) << "no table";
    const bool redOnly[] = {true, false, false, false};
    zero.setScope(redOnly); // so that components differ
    EXPECT_EQ(constant({PXL_FORMAT_uint16, true}, {0, 65535}, zero, 65535), 65535);
}
