#include <RU/pixelfunc/RU_GPUPixelEngine.h>
#include <RU/pixelfunc/RU_GPUTiming.h>
#include <RU/pixelfunc/RU_PixelFunction.h>
#include <TIL/TIL_TileList.h>
#include <UT/UT_Thread.h>
#include <reference/Recorder.h>

#include <gtest/gtest.h>

#include <clocale>
#include <latch>
#include <mutex>
#include <set>
#include <thread>

using namespace reference;

namespace {

/// Writes its number and declares one thing of each kind that a chain shares.
struct Numbered : RU_PixelFunction
{
    explicit Numbered(const char* text, std::vector<bool> in = {true, true, true, true}) : text_(text)
    {
        bool scope[4];
        std::copy(in.begin(), in.end(), scope);
        setScope(scope);
    }
    void getPixelShader(UT_String& body) override
    {
        body = text_;
        if (text_ == "skipped")
            return skipFunction();
        if (text_ != "global")
            return;
        const int numbers[] = {3, 4, 5, 6};
        usesGlobal("num_comps");
        usesGlobal("width");
        addConstant("three", RE_GPU_INT32, 1, numbers, 1);
        addConstant("pairs", RE_GPU_INT32, 2, numbers, 2);
        addLocal("hue", RE_GPU_FLOAT32, 1);
        addArray("table", RE_GPU_INT32, 2, 2, 1, numbers);
        addArray("planes", RE_GPU_INT32, 4, 1, 1, numbers, nullptr, numbers + 1, numbers + 2);
        addFunction("shared", "void shared();");
        addFunction("alpha", "void alpha();");
        addFunction("shared", "another text");
    }

private:
    std::string_view text_;
};

/// Runs an engine on recorders, with 5 x 3 tiles of 8 bits.
class GPUEngine : public ::testing::Test
{
protected:
    void SetUp() override
    {
        RE_OGLComputeGPU::setMaker([this] { return std::make_unique<Recorder>(log); });
    }
    void TearDown() override { RE_OGLComputeGPU::setMaker({}); }

    int run(RU_PixelFunction* chain, const std::set<int>& inputs = {0, 1, 2, 3},
            const std::set<int>& outputs = {0, 1, 2, 3})
    {
        const TIL_Plane plane(PXL_FORMAT_uint8, 4);
        TIL_TileList in(plane, 2, 1, 6, 3), out(plane, 2, 1, 6, 3);
        std::vector<TIL_Tile> tiles;
        for (int c = 0; c < 8; ++c)
            tiles.emplace_back(PXL_FORMAT_uint8, 5, 3);
        for (size_t c = 0; c < 4; ++c) {
            in.tiles[c] = inputs.contains(static_cast<int>(c)) ? &tiles[c] : nullptr;
            out.tiles[c] = &tiles[c + 4];
            out.tiles[c]->setDone(!outputs.contains(static_cast<int>(c)));
        }
        RU_GPUPixelEngine engine(chain);
        return engine.pixelAdjust(&out, &in, 0.0f, nullptr, -1, nullptr);
    }

    Log log;
};

} // namespace

TEST_F(GPUEngine, ProgramAndCallsAreThoseOfTheChain)
{
    Numbered head("first", {true, false, true, false});
    head.setNext(new Numbered(""));
    head.next()->setNext(new Numbered("global"));
    head.next()->next()->setNext(new Numbered("skipped"));
    head.next()->next()->next()->setNext(new Numbered("last", {false, false, false, false}));
    const std::string locale = std::setlocale(LC_NUMERIC, nullptr);
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8"); // where it is installed
    for (int twice = 0; twice < 2; ++twice)
        EXPECT_EQ(run(&head, {0, 2}, {1, 3}), 1);
    std::setlocale(LC_NUMERIC, locale.c_str());

    ASSERT_EQ(log.computations.size(), 2u);
    EXPECT_EQ(log.computations[0],
              "constant three3 = 3\n"
              "constant pairs3 = 3 4 5 6\n"
              "in table 7 2 2x1\n3\n"
              "in planes3 7 4 1x1\n3\nnone\n4\n5\n"
              "constant num_comps = 2\n"
              "in red 2 1 5x3\n0\n"
              "in blue 2 1 5x3\n0\n"
              "out green 2 1 5x3\n"
              "out alpha 2 1 5x3\n"
              "RU_GPUPixelEngine\n"
              "VEC4 value;\n"
              "void shared();\nvoid alpha();\n\n"
              "\nVEC4 function1(VEC4 value )\n{\nfirst\n  return value;\n}\n"
              "\nVEC4 function3(VEC4 value , in int num_comps, in INT three3, in IVEC2 "
              "pairs3[2], out FLOAT hue3, out IVEC4 planes3)\n{\nglobal\n  return value;\n}\n"
              "\nVEC4 function5(VEC4 value , in int num_comps)\n{\nlast\n  return "
              "value;\n}\n"
              "\nvalue = VEC4( IN_red,\n\t 0.0f,\n\t IN_blue,\n\t 0.0f);\n\n"
              "FLOAT hue3;\n\n"
              "value = mix(value, "
              "function1(value),VEC4(1.000000,0.000000,1.000000,0.000000));\n"
              "value = function3( value, num_comps,three3,pairs3,hue3,planes3);\n"
              "value = function5( value, num_comps);\n"
              "OUT_green( value.r );\n"
              "OUT_alpha( value.g );\n\n"
              "compute\nresults\nend");
    EXPECT_EQ(log.computations[0], log.computations[1]);
}

TEST_F(GPUEngine, ErrorsArePrintedAndRefusalsAreNot)
{
    log.error = "no such thing";
    testing::internal::CaptureStderr();
    EXPECT_EQ(run(nullptr), 1);
    log.takesPrograms = false;
    EXPECT_EQ(run(nullptr), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "no such thing\n");
    EXPECT_TRUE(log.computations[0].ends_with("compute\nend"));
    EXPECT_TRUE(log.computations[1].ends_with("OUT_alpha( value.a );\n\nend"));
    EXPECT_EQ(run(nullptr, {0, 1, 2, 3}, {}), 1);
    EXPECT_EQ(log.computations.size(), 2u);
}

TEST_F(GPUEngine, ThreadsShareOneChain)
{
    Numbered head("global");
    head.setNext(new Numbered("last"));
    constexpr int threads = 20, rounds = 40; // more threads than watches
    std::latch everybody(threads);
    std::mutex mutex;
    std::set<int> numbers;
    const double before = RU_GPUTiming::buildShader().total();
    std::vector<std::jthread> running;
    for (int t = 0; t < threads; ++t)
        running.emplace_back([&, t] {
            {
                const std::lock_guard guard(mutex);
                numbers.insert(UT_Thread::getMySequentialThreadIndex());
            }
            everybody.arrive_and_wait();
            for (int i = 0; i < rounds; ++i)
                t % 2 == 0 ? run(&head) : run(&head, {0});
        });
    running.clear();
    EXPECT_EQ(numbers.size(), static_cast<size_t>(threads));
    EXPECT_LE(*numbers.rbegin(), threads + 1);
    EXPECT_EQ(log.computations.size(), static_cast<size_t>(threads * rounds));
    EXPECT_EQ(std::set(log.computations.begin(), log.computations.end()).size(), 2u);
    EXPECT_GT(RU_GPUTiming::buildShader().total(), before);
}
